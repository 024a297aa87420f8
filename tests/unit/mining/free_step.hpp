#pragma once

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

inline quarvis::mining::Baskets makeBaskets(const quarvis::mining::Shard& shard,
                                            const quarvis::mining::WalkOrder& order,
                                            unsigned threads = 1) {
    FreeStep free;
    return {shard, order, threads, free.step};
}

}  // namespace mining_tests
