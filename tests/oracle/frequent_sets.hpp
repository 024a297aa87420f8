#pragma once

#include <cstddef>
#include <vector>

#include "oracle/numbered.hpp"

namespace oracle {

/// An item set and the histories that hold it, ascending. Their number is the count of the set.
struct FrequentSet {
    NumberedItems items;
    std::vector<std::size_t> histories;

    std::size_t count() const { return histories.size(); }
};

/// The frequent sets of one size, in lexicographic order of their items.
using Level = std::vector<FrequentSet>;

/// The items that at least `minCount` histories hold, as sets.
Level firstLevel(const NumberedTable& table, std::size_t minCount);

/// The frequent sets with one item more than those of `level`. Two sets that differ only in their
/// last item make one. Each frequent set is made once, because all its subsets are frequent.
Level nextLevel(const Level& level, std::size_t minCount);

}  // namespace oracle
