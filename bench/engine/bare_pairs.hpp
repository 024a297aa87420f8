#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/stopwatch.hpp"

namespace bench {

/// The least that a search by bitmaps can do: intersect the bitmaps of every two frequent items and
/// count the bits. A bitmap has a bit for each history; making the bitmaps is not measured.
struct BarePairs {
    Seconds time;
    std::size_t frequent;  ///< Pairs that reach the least count.
};

/// Runs in a process of its own.
BarePairs intersectPairs(const std::string& path, std::uint32_t minCount);

/// A line for the environment: the form of the bitmap kernels that this processor runs.
void printKernels();

}  // namespace bench
