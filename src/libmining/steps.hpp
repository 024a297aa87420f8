#pragma once

#include <quarvis/mining/mine.hpp>

#include "meter.hpp"

namespace quarvis::mining {

/// @{
/// The steps of a run that share one budget. See `mine.hpp`.
ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer,
                      Meter& meter);
Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer, Meter& meter);
/// @}

/// The exception for a search for rules that is over its budget.
BudgetExceeded exceeded(const OverBudget& over, const ItemSets& sets);

}  // namespace quarvis::mining
