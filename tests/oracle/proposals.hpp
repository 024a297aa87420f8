#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "oracle/numbered.hpp"

namespace oracle {

/// A split of an item set into the two sides of a rule: bit i is set when item i of the set is in
/// the antecedent. Neither side is empty.
using Split = std::uint64_t;

inline bool isOfAntecedent(Split split, std::size_t item) {
    return (split >> item & 1U) != 0;
}

/// The proposed splits of a set of `items` items: the antecedent is a contiguous run of the items,
/// but not all of them. Throws `std::invalid_argument` for more than 63 items.
std::vector<Split> splitsByRuns(std::size_t items);

/// All splits of a set of `items` items, 2^`items` - 2 of them. Throws as above.
std::vector<Split> allSplits(std::size_t items);

/// The sides of a split.
NumberedItems antecedentOf(Split split, const NumberedItems& items);
NumberedItems subsequentOf(Split split, const NumberedItems& items);

}  // namespace oracle
