#pragma once

#include <quarvis/mining/mine.hpp>

#include "meter.hpp"

namespace quarvis::mining {

/// @{
/// The steps of a run, which share one budget. See `mine.hpp`.
ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer,
                      Meter& meter);
Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer, Meter& meter);
/// @}

}  // namespace quarvis::mining
