#pragma once

#include <cstddef>
#include <cstdint>

namespace quarvis::mining {

/// Intersects `n` words of `bits` and `mask` into `result`. Returns the sum of the bits of the
/// result, each times the weight of its word. If `tops` is not null, it has the highest bit of each
/// field of the words, and a field counts at most one bit.
std::uint32_t intersectWeighted(const std::uint64_t* bits, const std::uint64_t* mask,
                                const std::uint64_t* tops, const std::uint32_t* weights,
                                std::size_t n, std::uint64_t* result);

}  // namespace quarvis::mining
