#pragma once

#include <cstddef>

#include "config.hpp"
#include "frequent_sets.hpp"
#include "history_index.hpp"

/// The search for frequent item sets, a level (a size of sets) at a time. A count is the number of
/// histories whose transactions together hold the set; a set is frequent when it is in `minCount`
/// histories or more.
namespace quarvis::rule {

/// The sets of size 1: the items of the index, each with its count.
Level oneSets(const HistoryIndex& index);

/// Adds to `sets` the frequent sets of the next size, all of whose subsets are frequent and so are
/// there already. With a `minCount` of 0 these are all sets of that size of the items.
const Level& aprioriMerge(const Configuration& config, const HistoryIndex& index,
                          FrequentSets& sets);

}  // namespace quarvis::rule
