#pragma once

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/observer.hpp>
#include <quarvis/mining/options.hpp>
#include <quarvis/mining/rules.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// What a run finds, as ranks of its index.
struct Result {
    ItemSets itemSets;  ///< All frequent item sets, in levels.
    Rules rules;        ///< The rules that have the least count and pass the thresholds.
};

/// The frequent item sets: all that `minCount` histories or more hold, at whatever times. Throws
/// `std::invalid_argument` when the index lacks items that are frequent enough, `std::length_error`
/// beyond 2^32 - 2 sets of one size, `Cancelled`, and `BudgetExceeded`.
ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer);

/// The rules of the sets, which were found in the index with the same options.
///
/// A rule "A => S" counts in a history that has a transaction with all of S and not all of A,
/// before which every item of A occurred within the window and no item of S did. Throws as
/// `findItemSets`; the budget is that of the search for rules alone.
Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer);

/// What a caller throws whose own work on the sets of a run comes to the end of the run's budget.
BudgetExceeded exceeded(BudgetExceeded::Limit limit, const ItemSets& sets);

/// Both searches, with one budget for the two.
Result mine(const HistoryIndex& index, const MiningOptions& options, Observer& observer);

}  // namespace quarvis::mining

#pragma GCC visibility pop
