#pragma once

#include <cstddef>
#include <string>

#include "config.hpp"

namespace bench {

/// The bytes that one run of the mining takes, without what the process had before. A peak is that
/// of the resident memory in a phase, including all that was there when the phase began.
struct MiningMemory {
    std::size_t occurrences;
    std::size_t index;        ///< As the index reports it.
    std::size_t readingPeak;  ///< Reading and freezing.
    std::size_t itemSets;     ///< On the heap.
    std::size_t itemSetPeak;
    std::size_t rules;  ///< On the heap.
    std::size_t rulePeak;
};

/// Mines the file in a process of its own. Free memory goes back to the system between phases. That
/// costs time, so phases are timed in other runs.
MiningMemory measuredMemory(const Configuration& config, const std::string& path);

}  // namespace bench
