#pragma once

#include <cstddef>
#include <vector>

#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/options.hpp>
#include <quarvis/mining/rules.hpp>

#include "rule_ledger.hpp"
#include "run_control.hpp"

namespace quarvis::mining {

/// Whether a rule passes the thresholds. A NaN passes none.
bool passes(const Rule& rule, const Thresholds& thresholds);

/// Selects the counted rules that pass the thresholds. Returns them with their measures, in the
/// order of `standsBefore`. `histories` is the number of all histories. Works in `threads` threads.
Rules selectRules(const std::vector<CountedRule>& counted, const ItemSets& sets,
                  const Thresholds& thresholds, std::size_t histories, unsigned threads,
                  Step& step);

}  // namespace quarvis::mining
