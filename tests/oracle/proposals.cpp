#include "oracle/proposals.hpp"

#include <limits>
#include <stdexcept>

namespace oracle {

namespace {

void checkSize(std::size_t items) {
    if (items >= std::numeric_limits<Split>::digits)
        throw std::invalid_argument("too many items for a split");
}

NumberedItems sideOf(Split split, const NumberedItems& items, bool ofAntecedent) {
    NumberedItems side;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (isOfAntecedent(split, i) == ofAntecedent)
            side.push_back(items[i]);
    return side;
}

}  // namespace

std::vector<Split> splitsByRuns(std::size_t items) {
    checkSize(items);
    std::vector<Split> splits;
    for (std::size_t first = 0; first < items; ++first) {
        Split run = 0;
        for (std::size_t last = first; last < items; ++last) {
            run |= Split{1} << last;
            if (last - first + 1 < items)
                splits.push_back(run);
        }
    }
    return splits;
}

std::vector<Split> allSplits(std::size_t items) {
    checkSize(items);
    std::vector<Split> splits;
    const Split whole = (Split{1} << items) - 1;
    for (Split split = 1; split < whole; ++split)
        splits.push_back(split);
    return splits;
}

NumberedItems antecedentOf(Split split, const NumberedItems& items) {
    return sideOf(split, items, true);
}

NumberedItems subsequentOf(Split split, const NumberedItems& items) {
    return sideOf(split, items, false);
}

}  // namespace oracle
