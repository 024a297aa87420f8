#pragma once

#include <cstddef>
#include <vector>

#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/options.hpp>
#include <quarvis/mining/rules.hpp>

#include "rule_ledger.hpp"
#include "run_control.hpp"

namespace quarvis::mining {

/// Whether a rule passes. A NaN fails.
bool passes(const Rule& rule, const Thresholds& thresholds);

/// The rules among the counted ones that pass the thresholds, with their measures, in their order.
/// `histories` is the number of all histories; the work is done in `threads` threads.
Rules selectRules(const std::vector<CountedRule>& counted, const ItemSets& sets,
                  const Thresholds& thresholds, std::size_t histories, unsigned threads,
                  Step& step);

}  // namespace quarvis::mining
