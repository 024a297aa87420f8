#pragma once

#include <cstddef>
#include <set>

#include <quarvis/rule.hpp>

#include "config.hpp"

/// The search for frequent item sets, a level (a size of sets) at a time. A count is the number of
/// histories whose transactions together hold the set.
namespace quarvis::rule::plain {

using ItemSetSupports = ItemSetHistogram;
using ItemSets = std::set<ItemSet>;

/// Adds the items of one history to the counts of the sets of size 1, each once.
void oneSets(const Configuration& config, const History& seq, ItemSetSupports& ret);

/// The frequent sets of size 1.
ItemSetSupports oneSets(const Configuration& config, const TransactionSet& txns);

/// The frequent sets of size `n` that are unions of two sets of `src`, the frequent sets of size
/// n - 1. They are recorded in `all` too, which may be `src`.
ItemSetSupports aprioriMerge(const Configuration& config, const ItemSetSupports& src,
                             ItemSetSupports& all, const TransactionSet& txns, std::size_t n);

/// Removes the sets that are in fewer histories than `minCount`.
void filterCandidates(const Configuration& config, ItemSetSupports& ret);

/// The sets without their counts.
ItemSets toIS(const ItemSetSupports& src);

}  // namespace quarvis::rule::plain
