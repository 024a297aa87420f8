#pragma once

#include <cstddef>

#include <quarvis/mining/history_index.hpp>

namespace quarvis::mining {

/// The histories [begin, end) of an index. Counts over all histories are sums of the counts over
/// shards that hold each history once.
struct Shard {
    const HistoryIndex* index;
    std::size_t begin;
    std::size_t end;

    static Shard whole(const HistoryIndex& index) { return {&index, 0, index.historyCount()}; }

    /// One of `parts` shards that this one is cut into, with about equally many items.
    Shard part(std::size_t part, std::size_t parts) const;
};

}  // namespace quarvis::mining
