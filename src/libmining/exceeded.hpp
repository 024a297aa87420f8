#pragma once

#include <vector>

#include <quarvis/mining/budget.hpp>

#include "found_sets.hpp"
#include "meter.hpp"
#include "walk_order.hpp"

/// \file
/// Makes the exception of a search for item sets that exceeds its budget.
namespace quarvis::mining {

/// `found` holds all sets of two items and more that the search has found.
BudgetExceeded exceeded(const OverBudget& over, const WalkOrder& order,
                        const std::vector<const FoundSets*>& found);

}  // namespace quarvis::mining
