#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/history_index.hpp>

namespace mining_tests {

/// An index in slices of as many histories, give or take one. Some are empty where there are fewer
/// histories than slices.
inline std::vector<quarvis::mining::HistoryIndex> cut(const quarvis::mining::HistoryIndex& index,
                                                      std::size_t slices) {
    using quarvis::mining::HistoryId;
    std::vector<quarvis::mining::HistoryIndex> cut;
    const std::size_t all = index.historyCount();
    for (std::size_t slice = 0; slice < slices; ++slice)
        cut.push_back(
            index.slice(HistoryId{static_cast<std::uint32_t>(all * slice / slices)},
                        HistoryId{static_cast<std::uint32_t>(all * (slice + 1) / slices)}));
    return cut;
}

}  // namespace mining_tests
