#pragma once

#include <cstddef>
#include <vector>

#include "oracle/frequent_sets.hpp"
#include "oracle/numbered.hpp"
#include "oracle/proposals.hpp"

namespace oracle {

/// The times at which each item of a set occurs in one history, in the order of the items.
using TimesOfSet = std::vector<const Times*>;

/// Whether the rule counts in the history: at some time all of the subsequent occurs and nothing of
/// it did within the window before, all of the antecedent occurred within the window before, and
/// not all of it occurs at that time too. A window of 0 is the whole past.
bool countsIn(const TimesOfSet& times, Split split, Time window);

/// The histories that each split of the set counts in, as many counts as there are splits.
std::vector<std::size_t> ruleCounts(const NumberedTable& table, const FrequentSet& set,
                                    const std::vector<Split>& splits, Time window);

}  // namespace oracle
