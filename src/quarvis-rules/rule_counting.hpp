#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "config.hpp"
#include "frequent_sets.hpp"
#include "history_index.hpp"

/// Counting of rules. From a set of k sorted items, k(k+1)/2 - 1 rules are proposed: each run of
/// neighbours, other than all items, as the antecedent, and all other items as the subsequent. A
/// rule A => S holds in a history that has a transaction with all of S, while nothing of S occurred
/// within the window before it, A is not wholly in it, and every item of A occurred within the
/// window before. A rule's count is the number of histories that it holds in.
namespace quarvis::rule {

/// A proposed rule and its count: the antecedent is the run [first, last] of the items of the set.
struct CountedRule {
    std::uint32_t set;   ///< The place of the set in its level.
    std::uint32_t size;  ///< The size of the set.
    std::uint32_t first;
    std::uint32_t last;
    std::uint32_t count;
};

/// The rules counted so far, and what the counting of the next level builds on.
///
/// A rule that holds in a history, but for the condition that its antecedent is not wholly in the
/// transaction, is met there. With a rule every rule that lacks some items of its sides is met
/// too. So a set has a rule that is met in enough histories only if its prefix has one, or if its
/// last item is alone on one side of it; then the pair of its first and its last item has one.
/// Only such sets are counted; they are called live.
struct RuleHistogram {
    std::vector<CountedRule> rules;
    std::vector<bool> livePairs;  ///< By place in level 2: the sets that are live.
    std::vector<bool> liveSets;   ///< The same of the level that was counted last.
};

/// The number of rules that are proposed from `sets` sets of `size` items.
std::size_t proposeRules(std::size_t sets, std::size_t size);

/// Counts the rules of the sets of `size` items, two or more, and adds those that hold in
/// `minCount` histories or more, and in one at least, to `counts`.
///
/// Visits the histories that hold a set until no rule of the set can reach its count any more; of
/// pairs, without a window, only those that the order of first occurrences leaves.
void mineRules(const Configuration& config, const HistoryIndex& index, const FrequentSets& sets,
               std::size_t size, RuleHistogram& counts);

}  // namespace quarvis::rule
