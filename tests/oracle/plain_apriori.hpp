#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "plain_rule_counting.hpp"

namespace quarvis::rule::plain {

/// Searches the frequent item sets level by level, proposes rules from each level of two items and
/// more, and counts them. The counts of the rules that hold anywhere; every frequent set that was
/// found goes into `all`. Reports each level on standard error.
RuleHistogram apriori(const Configuration& config, const TransactionSet& txns,
                      ItemSetHistogram& all);

}  // namespace quarvis::rule::plain
