#pragma once

#include <cstdint>

#include <quarvis/mining/options.hpp>

#include "arrays.hpp"
#include "found.hpp"
#include "watch.hpp"

namespace binding {

/// Tests the rules of a run against random order: permutes the times among the transactions of each
/// history, counts the rules again, and tells how far the original counts stand out.
///
/// A data set is the data or one of its permutations. The family is all rules that can be proposed
/// from the item sets, which are the same in every data set. The statistic of a rule that reaches
/// the least count is the distance of its count from the mean over all data sets, in standard
/// deviations; for any other rule it is 0. If the order is random, the data are exchangeable with
/// the permutations, so the maximum over the family corrects for multiple tests (P. Westfall,
/// S. Young: Resampling-Based Multiple Testing, 1993, single-step maxT).
///
/// Returns the columns `p`, the share of data sets in which the rule counts at least as often;
/// `p_max`, the share in which any rule of the family stands out at least as far; `mean` and
/// `deviation` of the count; and the number `proposed`, the size of the family. The result depends
/// on the seed but not on the number of threads.
Columns testOrder(const Found& found, const quarvis::mining::MiningOptions& options,
                  std::uint32_t permutations, std::uint64_t seed, unsigned threads, Watch& watch);

}  // namespace binding
