#pragma once

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {

/// What a run must yield, by brute force from the definitions. Every subset of the items is looked
/// at, and every rule is tested at every transaction by searching the transactions before it. Only
/// the types of table and outcome are shared with the plain miner. The cost doubles with each item,
/// so use a dozen items at most. Throws `std::invalid_argument` for more than 31.
Outcome bruteForce(const Settings& settings, const Table& table);

}  // namespace oracle
