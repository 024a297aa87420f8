#pragma once

#include <span>

#include <quarvis/mining/mine.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Finds in the shards of an index what `mine` finds in the whole. Together the shards hold each
/// history exactly once. Their number, their cuts and where they come from do not matter.
///
/// The run goes level by level. Candidates are made from the sets of the level below and counted on
/// every shard; infrequent ones are pruned only after the counts are summed. Rules are counted the
/// same way. This is count distribution (R. Agrawal, J. C. Shafer: Parallel Mining of Association
/// Rules, 1996). Each thread takes a shard at a time. Throws as `mine` does, and
/// `std::invalid_argument` when there are no shards or their items differ.
Result mineShards(std::span<const HistoryIndex> shards, const MiningOptions& options,
                  Observer& observer);

}  // namespace quarvis::mining

#pragma GCC visibility pop
