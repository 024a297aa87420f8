#pragma once

#include <cstdint>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Copies an index and, in each history, permutes the transactions' item lists among the times of
/// that history. All permutations are equally likely. The copy is what the table could have been if
/// order did not matter. The times of each history, all counts and all frequent item sets stay the
/// same.
HistoryIndex shuffleTimes(const HistoryIndex& index, std::uint64_t seed, std::uint64_t first = 0);

}  // namespace quarvis::mining

#pragma GCC visibility pop
