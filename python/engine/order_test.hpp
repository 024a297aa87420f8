#pragma once

#include <cstdint>

#include <quarvis/mining/options.hpp>

#include "arrays.hpp"
#include "found.hpp"
#include "watch.hpp"

namespace binding {

/// Recounts the rules of a run where the times are permuted among the transactions of each history,
/// and tells by rule how far its count stands out.
///
/// The family are all rules that can be proposed of the item sets; these stay under permutation.
/// The statistic of a rule whose count is listed, that is, has the least count, is its distance
/// from the mean in standard deviations, over the data and all permutations alike; of any other
/// rule it is 0. So the data are exchangeable with their permutations where the order is chance,
/// and the maximum over the family corrects for all of it (P. Westfall, S. Young: Resampling-Based
/// Multiple Testing, 1993, single-step maxT).
///
/// The columns `p`, the share of data sets in which the rule counts as often, `p_max`, the share in
/// which any rule stands out as far, `mean` and `deviation`; and `proposed`, the size of the
/// family. Data sets are the data and all permutations. The result depends on the seed and not on
/// threads.
Columns testOrder(const Found& found, const quarvis::mining::MiningOptions& options,
                  std::uint32_t permutations, std::uint64_t seed, unsigned threads, Watch& watch);

}  // namespace binding
