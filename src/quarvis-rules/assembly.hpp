#pragma once

#include <cstddef>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "frequent_sets.hpp"
#include "history_index.hpp"
#include "rule_counting.hpp"

/// From ranks back to names: the result of a run.
namespace quarvis::rule {

/// Adds every set of `sets` to `ret`, with its count.
void populateItemSets(ItemSetHistogram& ret, const HistoryIndex& index, const FrequentSets& sets);

/// Adds the counted rules that pass the thresholds to `ret`, with their measures. `txnCount` is the
/// number of histories.
void populateRuleSet(const Configuration& config, RuleSet& ret, const HistoryIndex& index,
                     const FrequentSets& supports, const RuleHistogram& hist, std::size_t txnCount);

/// Whether a rule passes the thresholds. A NaN fails.
bool filter(const Configuration& config, const RuleSet::Stats& stats);

}  // namespace quarvis::rule
