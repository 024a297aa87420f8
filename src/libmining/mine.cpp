#include "steps.hpp"

namespace quarvis::mining {

Result mine(const HistoryIndex& index, const MiningOptions& options, Observer& observer) {
    Meter meter(options.budget);
    Result result;
    result.itemSets = findItemSets(index, options, observer, meter);
    result.rules = findRules(index, result.itemSets, options, observer, meter);
    return result;
}

}  // namespace quarvis::mining
