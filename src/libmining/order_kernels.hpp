#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// \file
/// The innermost loop over the orders of first occurrences (see `OrderColumns`), in the forms that
/// x86-64 processors differ in. An order is a byte; 64 of them make a word of bits.
namespace quarvis::mining {

/// The order of an item that a history does not hold; greater than all others.
inline constexpr std::uint8_t ABSENT = 255;

struct OrderKernels {
    const char* name;

    /// Compares the orders of an item with those of a set: in which lanes both are present and the
    /// item comes before the set, with it, and after it. 64 lanes a word.
    void (*compare)(const std::uint8_t* item, const std::uint8_t* set, std::size_t words,
                    std::uint64_t* before, std::uint64_t* with, std::uint64_t* after);
};

/// The forms that this processor runs, the best of them first, the portable one last.
std::span<const OrderKernels> supportedOrderKernels();

/// The best of them.
const OrderKernels& orderKernels();

}  // namespace quarvis::mining
