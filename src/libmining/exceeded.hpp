#pragma once

#include <vector>

#include <quarvis/mining/budget.hpp>

#include "found_sets.hpp"
#include "meter.hpp"
#include "walk_order.hpp"

/// \file
/// What a search for item sets that comes to the end of its budget tells its caller.
namespace quarvis::mining {

/// Of a search that has found all of these, of two items and more.
BudgetExceeded exceeded(const OverBudget& over, const WalkOrder& order,
                        const std::vector<const FoundSets*>& found);

}  // namespace quarvis::mining
