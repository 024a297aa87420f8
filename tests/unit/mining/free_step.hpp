#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "baskets.hpp"
#include "standings.hpp"

namespace mining_tests {

/// A step of a run that is never ended.
struct FreeStep {
    quarvis::mining::Observer observer;
    quarvis::mining::Meter meter{quarvis::mining::Budget()};
    quarvis::mining::Step step{observer, meter};
};

inline quarvis::mining::Standings makeStandings(const quarvis::mining::Shard& shard,
                                                const std::vector<bool>& relevant,
                                                std::uint64_t window, unsigned threads = 1) {
    FreeStep free;
    return {shard, relevant, window, threads, free.step};
}

/// The entry of an item in a history, or the end of the history's entries.
inline std::size_t entryOf(const quarvis::mining::Standings& standings, std::size_t history,
                           quarvis::mining::Rank item) {
    std::size_t entry = history == 0 ? 0 : standings.endEntry(history - 1);
    while (entry < standings.endEntry(history) && standings.item(entry) != item)
        ++entry;
    return entry;
}

inline quarvis::mining::Baskets makeBaskets(const quarvis::mining::Shard& shard,
                                            const quarvis::mining::WalkOrder& order,
                                            unsigned threads = 1) {
    FreeStep free;
    return {shard, order, threads, free.step};
}

}  // namespace mining_tests
