#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include <quarvis/rule.hpp>

/// Real histories, which are too many and too large to be part of this project. They are in the
/// folder that the environment variable QUARVIS_DATA names. Without it there are no tests of them.
namespace support {

constexpr std::size_t ALL_HISTORIES = std::numeric_limits<std::size_t>::max();

/// Whether the folder has this file.
bool hasRealFile(const std::string& file);

/// The first so many histories of a file of the folder.
quarvis::rule::TransactionSet realHistories(const std::string& file, std::size_t histories);

/// The runs whose file the folder has. A run has a member `file`.
template <class Run>
std::vector<Run> possibleRuns(std::vector<Run> runs) {
    std::erase_if(runs, [](const Run& run) { return !hasRealFile(run.file); });
    return runs;
}

}  // namespace support
