#pragma once

#include <cstddef>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "plain_rule_counting.hpp"
#include "plain_search.hpp"

namespace quarvis::rule::plain {

/// Adds the rules of `hist` that pass the thresholds to `ret`, with their measures. `supports` must
/// hold every rule's sides and their union, or `std::out_of_range` is thrown; `txnCount` is the
/// number of histories.
void populateRuleSet(const Configuration& config, RuleSet& ret, const ItemSetSupports& supports,
                     const RuleHistogram& hist, std::size_t txnCount);

}  // namespace quarvis::rule::plain
