#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/level_run.hpp>
#include <quarvis/mining/observer.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// A copy of the shard without the items that the run does not mine, and without the transactions
/// that have no other item. Names and counts stay. Each history then has the transactions that it
/// has in an index of the whole, as `shuffleTimes` needs. Throws `std::invalid_argument` when shard
/// and run differ in the number of items.
HistoryIndex withoutRareItems(const HistoryIndex& shard, const LevelRun& run);

class [[gnu::visibility("hidden")]] ShardParts;  // not for users, so not exported

/// Counts the candidates and rules of a `LevelRun` on one shard. The first block of candidates and
/// the first block of rules each make a copy of the shard for counting: 8 bytes for each item of a
/// history for candidates, 28 to 37 for rules. Every operation throws `Cancelled` when the observer
/// cancels. Only one thread at a time may use a counter or its run.
class ShardCounter {
  public:
    /// All three must outlive the counter. Throws `std::invalid_argument` when shard and run differ
    /// in the number of items.
    ShardCounter(const HistoryIndex& shard, const LevelRun& run, const Observer& observer);
    ~ShardCounter();

    /// Adds to `sums`, for each candidate of the block in order, the number of histories that hold
    /// it. Throws `std::invalid_argument` when `sums` does not have `block.count` elements, and
    /// when the run has no such block.
    void countCandidates(const LevelBlock& block, std::span<std::uint32_t> sums);

    /// Tallies the rules of the block that are met in some history of the shard, by ascending set
    /// and split. Throws `std::invalid_argument` when the run has no such block.
    std::vector<RuleTally> tallyRules(const LevelBlock& block);

  private:
    std::unique_ptr<ShardParts> m_parts;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
