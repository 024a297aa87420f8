#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Intersections of bitmaps, the innermost loops of the search, in the forms that x86-64 processors
/// differ in.
namespace quarvis::rule {

struct BitKernels {
    const char* name;

    /// The number of bits common to `a` and `b`, of `words` words each.
    std::uint32_t (*countCommon)(const std::uint64_t* a, const std::uint64_t* b, std::size_t words);

    /// The same for `a` and each of the `n` bitmaps `b`, into `counts`.
    void (*countCommonEach)(const std::uint64_t* a, const std::uint64_t* const* b, std::size_t n,
                            std::size_t words, std::uint32_t* counts);
};

/// The forms that this processor runs, the best of them first, the portable one last.
std::span<const BitKernels> supportedBitKernels();

/// The best of them.
const BitKernels& bitKernels();

}  // namespace quarvis::rule
