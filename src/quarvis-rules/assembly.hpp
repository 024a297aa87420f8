#pragma once

#include <cstddef>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "rule_counting.hpp"
#include "search.hpp"

namespace quarvis::rule {

/// Adds the rules of `hist` that pass the thresholds to `ret`, with their measures. `supports` must
/// hold every rule's sides and their union, or `std::out_of_range` is thrown; `txnCount` is the
/// number of histories.
void populateRuleSet(const Configuration& config, RuleSet& ret, const ItemSetSupports& supports,
                     const RuleHistogram& hist, std::size_t txnCount);

/// Whether a rule passes the thresholds. A NaN fails.
bool filter(const Configuration& config, const RuleSet::Stats& stats);

}  // namespace quarvis::rule
