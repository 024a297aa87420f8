#pragma once

#include <cstdint>

namespace mining_tests {

/// Seeds of `randomCase` that every run of the tests replays: those for which the mining and the
/// brute force once disagreed, each with a remark that says what was wrong. If the generator
/// changes, a seed stands for a different case. So what a seed found should also be added to
/// mine_test.cpp as a table.
inline constexpr std::uint64_t REPLAYED_SEEDS[] = {
    0,  // Never failed.
    1,  // Never failed.
};

}  // namespace mining_tests
