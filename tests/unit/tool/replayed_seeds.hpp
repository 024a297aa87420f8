#pragma once

#include <cstdint>

namespace mining_tests {

/// Seeds of `randomCase` that every run of the tests goes through: those for which the mining and
/// the brute force once disagreed, each with a remark that says what was wrong. When the generator
/// changes they stand for other cases, so what a seed found is better kept as a table in
/// mine_test.cpp as well.
inline constexpr std::uint64_t REPLAYED_SEEDS[] = {
    0,  // Never failed.
    1,  // Never failed.
};

}  // namespace mining_tests
