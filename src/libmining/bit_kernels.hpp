#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// \file
/// The innermost loops over bitmaps, in a form for each kind of x86-64 processor. All bitmaps of a
/// call have `words` words, and the `n` bitmaps from `b` on are contiguous.
namespace quarvis::mining {

struct BitKernels {
    const char* name;

    /// Intersects `a` with each of the `n` bitmaps from `b` on, and keeps the intersections that
    /// have at least `least` bits. Their bitmaps go to `result`, their places among the `n` to
    /// `kept`, and their numbers of bits to `counts`; each of the three has room for `n`. Returns
    /// how many are kept.
    std::size_t (*join)(const std::uint64_t* a, const std::uint64_t* b, std::size_t n,
                        std::size_t words, std::uint32_t least, std::uint64_t* result,
                        std::uint32_t* kept, std::uint32_t* counts);

    /// Counts the bits of each of the `n` intersections into `counts`.
    void (*count)(const std::uint64_t* a, const std::uint64_t* b, std::size_t n, std::size_t words,
                  std::uint32_t* counts);
};

/// The forms that this processor supports, the fastest first and the portable one last.
std::span<const BitKernels> supportedBitKernels();

/// The fastest of them.
const BitKernels& bitKernels();

}  // namespace quarvis::mining
