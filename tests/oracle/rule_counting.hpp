#pragma once

#include <cstddef>
#include <vector>

#include "oracle/frequent_sets.hpp"
#include "oracle/numbered.hpp"
#include "oracle/proposals.hpp"

namespace oracle {

/// The times at which each item of a set occurs in one history, in the order of the items.
using TimesOfSet = std::vector<const Times*>;

/// Whether the rule counts in the history: at some time all of the subsequent occurs but not all of
/// the antecedent, and within the window before it all of the antecedent occurred and none of the
/// subsequent. A window of 0 is the whole past.
bool countsIn(const TimesOfSet& times, Split split, Time window);

/// For each split of the set, the number of histories that the rule counts in.
std::vector<std::size_t> ruleCounts(const NumberedTable& table, const FrequentSet& set,
                                    const std::vector<Split>& splits, Time window);

}  // namespace oracle
