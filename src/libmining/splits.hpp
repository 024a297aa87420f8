#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

#include <quarvis/mining/options.hpp>

namespace quarvis::mining {

/// A way to cut a sorted item set in two: bit i is set when item i is in the subsequent. No set has
/// more than 64 items: a set of k has 2^k subsets that are as frequent, more than there is room
/// for.
using SplitMask = std::uint64_t;

inline constexpr std::size_t MOST_ITEMS = 63;

/// All of `size` items.
inline SplitMask allOf(std::size_t size) {
    assert(size <= MOST_ITEMS);
    return (SplitMask{1} << size) - 1;
}

/// Whether the antecedent is a run of neighbours.
inline bool isRun(SplitMask split, std::size_t size) {
    const SplitMask antecedent = ~split & allOf(size);
    const SplitMask lowest = antecedent & -antecedent;
    return ((antecedent + lowest) & antecedent) == 0;
}

/// Whether a split of a set of `size` items is one that is proposed; both of its sides have items.
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
