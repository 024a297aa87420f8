#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

#include <quarvis/mining/options.hpp>

namespace quarvis::mining {

/// A split of a sorted item set into the sides of a rule: bit i is set when item i is in the
/// subsequent. Sets have at most MOST_ITEMS items, because a frequent set of k items has 2^k - 1
/// frequent subsets, for which no machine has room.
using SplitMask = std::uint64_t;

inline constexpr std::size_t MOST_ITEMS = 63;

/// The mask of all of `size` items.
inline SplitMask allOf(std::size_t size) {
    assert(size <= MOST_ITEMS);
    return (SplitMask{1} << size) - 1;
}

/// Whether the antecedent is a contiguous run of the items.
inline bool isRun(SplitMask split, std::size_t size) {
    const SplitMask antecedent = ~split & allOf(size);
    const SplitMask lowest = antecedent & -antecedent;
    return ((antecedent + lowest) & antecedent) == 0;
}

/// Whether a split of a set of `size` items is proposed. Neither side of the split is empty.
inline bool isProposed(SplitMask split, std::size_t size, Splits splits) {
    return splits == Splits::ALL || isRun(split, size);
}

/// The mask with a bit inserted at `place`.
inline SplitMask withBit(SplitMask mask, std::size_t place, bool bit) {
    assert(place < MOST_ITEMS && mask >> (MOST_ITEMS - 1) == 0);
    const SplitMask low = mask & allOf(place);
    return low | SplitMask{bit} << place | (mask & ~low) << 1;
}

}  // namespace quarvis::mining
