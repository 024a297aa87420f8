#pragma once

#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "found_sets.hpp"
#include "meter.hpp"
#include "walk_order.hpp"

/// \file
/// What a run that comes to the end of its budget tells its caller.
namespace quarvis::mining {

/// Of a search for item sets that has found all of these, of two items and more.
BudgetExceeded exceeded(const OverBudget& over, const WalkOrder& order,
                        const std::vector<const FoundSets*>& found);

/// Of a search for rules of these sets.
BudgetExceeded exceeded(const OverBudget& over, const ItemSets& sets);

}  // namespace quarvis::mining
