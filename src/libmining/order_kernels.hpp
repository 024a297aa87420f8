#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// \file
/// The innermost loop over the orders of first occurrences (see `OrderColumns`), in a form for each
/// kind of x86-64 processor. An order is a byte; comparing 64 of them gives a word of bits.
namespace quarvis::mining {

/// The order of an item that a history does not hold; greater than all others.
inline constexpr std::uint8_t ABSENT = 255;

struct OrderKernels {
    const char* name;

    /// Compares the orders of an item with those of a set, 64 lanes a word. A lane in which both
    /// are there sets its bit in `before`, `with` or `after`: where the item comes, seen from the
    /// set.
    void (*compare)(const std::uint8_t* item, const std::uint8_t* set, std::size_t words,
                    std::uint64_t* before, std::uint64_t* with, std::uint64_t* after);
};

/// The forms that this processor supports, the fastest first and the portable one last.
std::span<const OrderKernels> supportedOrderKernels();

/// The fastest of them.
const OrderKernels& orderKernels();

}  // namespace quarvis::mining
