#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// \file
/// The innermost loops over bitmaps, whole, in the forms that x86-64 processors differ in. Bitmaps
/// of one kernel call have the same number of words; `n` of them stand one after the other.
namespace quarvis::mining {

struct BitKernels {
    const char* name;

    /// Intersects `a` with each of the `n` bitmaps from `b` on. Of each intersection of `least`
    /// bits or more, the bitmap goes to `result`, one after the other, its place among the `n` to
    /// `kept` and its bits to `counts`. The number of these. `result` has room for `n` bitmaps.
    std::size_t (*join)(const std::uint64_t* a, const std::uint64_t* b, std::size_t n,
                        std::size_t words, std::uint32_t least, std::uint64_t* result,
                        std::uint32_t* kept, std::uint32_t* counts);

    /// The bits of the intersections alone: one number for each of the `n` bitmaps.
    void (*count)(const std::uint64_t* a, const std::uint64_t* b, std::size_t n, std::size_t words,
                  std::uint32_t* counts);
};

/// The forms that this processor runs, the best of them first, the portable one last.
std::span<const BitKernels> supportedBitKernels();

/// The best of them.
const BitKernels& bitKernels();

}  // namespace quarvis::mining
