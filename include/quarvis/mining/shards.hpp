#pragma once

#include <span>

#include <quarvis/mining/mine.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// What `mine` finds in an index, from shards of it: slices that together have each of its
/// histories once, in any number and cut, whether they were cut here or read from bytes.
///
/// The run goes level by level. Candidates are made from the sets of the level below, counted on
/// each shard, and pruned only after the counts of all shards are summed; with rules it is the same
/// (R. Agrawal, J. C. Shafer: Parallel Mining of Association Rules, 1996, there called count
/// distribution). Threads take a shard each. Throws as `mine` does, and `std::invalid_argument` for
/// shards whose items differ.
Result mineShards(std::span<const HistoryIndex> shards, const MiningOptions& options,
                  Observer& observer);

}  // namespace quarvis::mining

#pragma GCC visibility pop
