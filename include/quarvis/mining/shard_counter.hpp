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

/// The shard without the items that the run does not mine, and without transactions that have no
/// other item. Counts and names stay. So a history has the transactions that it has in an index of
/// the whole, as `shuffleTimes` needs. Throws `std::invalid_argument` when the shard has another
/// number of items than the run.
HistoryIndex withoutRareItems(const HistoryIndex& shard, const LevelRun& run);

class [[gnu::visibility("hidden")]] ShardParts;  // not for users, so not exported

/// Counts on one shard what a `LevelRun` asks for. What a block of candidates or of rules needs of
/// the shard is made when it is asked for the first time: 8 bytes an item of a history for
/// candidates, 20 to 28 for rules. Everything throws `Cancelled` when the observer ends it.
class ShardCounter {
  public:
    /// Shard, run and observer must outlive the counter. Throws `std::invalid_argument` when the
    /// shard has another number of items than the run.
    ShardCounter(const HistoryIndex& shard, const LevelRun& run, const Observer& observer);
    ~ShardCounter();

    /// Adds the histories that hold each candidate of the block to `sums`, which has its number of
    /// elements. Throws `std::invalid_argument` for another one, and for a block that is not there.
    void countCandidates(const LevelBlock& block, std::span<std::uint32_t> sums);

    /// The rules of the block that are met in some history, by ascending set and split.
    std::vector<RuleTally> tallyRules(const LevelBlock& block);

  private:
    std::unique_ptr<ShardParts> m_parts;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
