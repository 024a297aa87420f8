#pragma once

#include "config.hpp"
#include "frequent_sets.hpp"
#include "history_index.hpp"
#include "rule_counting.hpp"

namespace quarvis::rule {

/// Searches the frequent item sets level by level into `all`, which is empty at first, and counts
/// the rules that each level of two items and more proposes. Reports each level on standard error.
RuleHistogram apriori(const Configuration& config, const HistoryIndex& index, FrequentSets& all);

}  // namespace quarvis::rule
