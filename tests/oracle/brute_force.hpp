#pragma once

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {

/// What a run must yield, straight from the definitions: every subset of the items is looked at,
/// and every rule is tested at every transaction by searching the transactions before it. The plain
/// miner shares nothing with it but the types of table and outcome. The cost doubles with each
/// item, so it is for a dozen of them; more than 31 throw `std::invalid_argument`.
Outcome bruteForce(const Settings& settings, const Table& table);

}  // namespace oracle
