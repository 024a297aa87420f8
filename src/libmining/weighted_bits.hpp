#pragma once

#include <cstddef>
#include <cstdint>

namespace quarvis::mining {

/// Intersects `n` words of `bits` and `mask` into `result`, and sums the bits that are left, each
/// times the weight of its word. `tops`, unless null, has the highest bit of each field of the
/// words: then of each field one bit at most counts.
std::uint32_t intersectWeighted(const std::uint64_t* bits, const std::uint64_t* mask,
                                const std::uint64_t* tops, const std::uint32_t* weights,
                                std::size_t n, std::uint64_t* result);

}  // namespace quarvis::mining
