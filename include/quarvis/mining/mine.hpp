#pragma once

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/observer.hpp>
#include <quarvis/mining/options.hpp>
#include <quarvis/mining/rules.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// What a run finds. Items are ranks of the index.
struct Result {
    ItemSets itemSets;  ///< All frequent item sets, in levels.
    Rules rules;        ///< The rules that have the least count and pass the thresholds.
};

/// Finds the frequent item sets: those that at least `minCount` histories hold, at whatever times.
/// Throws `std::invalid_argument` when the least count is below that of the index or there are no
/// threads, `std::length_error` beyond 2^32 - 2 sets of one size, `Cancelled`, and
/// `BudgetExceeded`.
ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer);

/// Finds the rules of `sets`, which `findItemSets` found in the same index with the same options.
///
/// A rule "A => S" counts in a history when one of its transactions holds all of S but not all of
/// A, and before that transaction, within the window, every item of A occurred and no item of S
/// did. Throws as `findItemSets` does. The budget is for the search for rules alone.
Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer);

/// Makes the exception for a caller whose own work on the sets of a run exceeds the run's budget.
BudgetExceeded exceeded(BudgetExceeded::Limit limit, const ItemSets& sets);

/// Finds the item sets and then the rules. One budget covers both searches.
Result mine(const HistoryIndex& index, const MiningOptions& options, Observer& observer);

}  // namespace quarvis::mining

#pragma GCC visibility pop
