#pragma once

#include <cstddef>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

namespace quarvis::mining {

/// By rank: whether the item is in a frequent pair. No other item is in a rule.
inline std::vector<bool> relevantItems(const ItemSets& sets, std::size_t items) {
    std::vector<bool> relevant(items);
    const Level& pairs = sets.level(2);
    for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
        relevant[at(pairs.last[pair])] = true;
        relevant[at(sets.level(1).last[pairs.prefix[pair]])] = true;
    }
    return relevant;
}

}  // namespace quarvis::mining
