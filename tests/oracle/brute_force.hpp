#pragma once

#include "config.hpp"
#include "outcome.hpp"
#include "table.hpp"

/// What a run must yield, straight from the definitions: every subset of the items is looked at,
/// and every rule is tested at every transaction by searching the transactions before it. It shares
/// no code with the mining. The cost doubles with each item, so it is for a dozen of them.
namespace brute_force {

mining_tests::Outcome mine(const Configuration& config, const mining_tests::Table& table);

}  // namespace brute_force
