#pragma once

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {

/// What a run must yield, in the plainest form that is fast enough for larger tables. The frequent
/// sets are found level by level, each with the list of its histories (Agrawal, Srikant: Fast
/// Algorithms for Mining Association Rules, 1994; Zaki: Scalable Algorithms for Association Mining,
/// 2000). Then every rule of every set is tested in each of these histories by itself.
Outcome mine(const Settings& settings, const Table& table);

}  // namespace oracle
