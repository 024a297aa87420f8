#include <quarvis/mining/mine.hpp>

namespace quarvis::mining {

Result mine(const HistoryIndex& index, const MiningOptions& options, Observer& observer) {
    Result result;
    result.itemSets = findItemSets(index, options, observer);
    result.rules = findRules(index, result.itemSets, options, observer);
    return result;
}

}  // namespace quarvis::mining
