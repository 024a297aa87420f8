#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"

namespace quarvis::rule::plain {

struct Result {
    RuleSet rules;
    ItemSetHistogram itemSets;
};

/// What `quarvis::rule::mine` must do, results and messages, in the plainest form: every candidate
/// set is counted by a pass over all histories, every proposed rule is tested at every transaction.
/// It is the oracle that the mining is held against on tables too large for the brute force.
Result mine(const Configuration& config, const TransactionSet& txns);

}  // namespace quarvis::rule::plain
