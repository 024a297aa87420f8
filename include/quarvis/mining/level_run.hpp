#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <quarvis/mining/mine.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Bytes that are no state of a run, or a damaged one.
class RunFormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The candidates or the rules that begin with some first items.
struct LevelBlock {
    /// @{
    /// The first items are [begin, end), in an order that only the run knows.
    std::uint32_t begin;
    std::uint32_t end;
    /// @}

    std::uint64_t count;  ///< How many there are.
};

/// The candidates of a block that are frequent.
struct FrequentCandidates {
    std::vector<std::uint32_t> places;  ///< In the block, ascending.
    std::vector<std::uint32_t> counts;  ///< Histories that hold the candidates of these places.
};

/// A rule of a known size with its counts; see docs/mining.md.
struct RuleTally {
    std::uint64_t split;       ///< Bit i is set when item i of the set is in the subsequent.
    std::uint32_t set;         ///< The place of the set of its items in the level of that size.
    std::uint32_t met;         ///< Histories in which the rule is met.
    std::uint32_t counted;     ///< Those of them in which it counts.
    std::uint32_t unused = 0;  ///< Fills up 8 bytes.
};

/// Adds the tallies of other histories, both in ascending order of set and split.
void addTallies(std::vector<RuleTally>& sum, std::span<const RuleTally> tallies);

class [[gnu::visibility("hidden")]] LevelState;  // not for users, so not exported

/// A run over shards that are anywhere, a level at a time: what the process knows that sums up the
/// counts and decides (count distribution: R. Agrawal, J. C. Shafer: Parallel Mining of Association
/// Rules, 1996). `ShardCounter` is the other side. The caller takes the blocks of a level, has each
/// counted on every shard, sums the counts, and gives back those of the least count; with the rules
/// of a size likewise. At the end the result is what `mine` finds in the whole.
///
/// The rules of a size can be tallied as soon as the sets of that size are known, and have to be
/// before those of the next size. Ends in the same state wherever its bytes are read.
class LevelRun {
  public:
    /// `counts` are the numbers of histories that hold the items, by rank; those below
    /// `options.minCount` are not mined. Threads and budget of the options have no effect.
    LevelRun(std::vector<std::uint32_t> counts, const MiningOptions& options);

    /// What one of the `bytes` operations gave. Throws `RunFormatError` for anything else.
    static LevelRun fromBytes(std::span<const char> bytes);

    /// @{
    /// Leaves the other one without a state; it may then only be assigned to or destroyed.
    LevelRun(LevelRun&&) noexcept;
    LevelRun& operator=(LevelRun&&) noexcept;
    /// @}

    ~LevelRun();

    /// The settings that were given, as far as they decide what is found.
    const MiningOptions& options() const;

    /// The greatest size of which all sets are known, from 1 on.
    std::size_t size() const;

    /// The number of sets of a size up to that.
    std::size_t setCount(std::size_t size) const;

    /// Whether there may be larger sets.
    bool hasCandidates() const;

    /// The candidates of size `size()` + 1 in blocks; a block ends when it has `most` of them, at
    /// least 1, so it has at most about an item's more. Empty when there is none.
    std::vector<LevelBlock> candidates(std::uint64_t most) const;

    /// Ends the level with the frequent candidates of all blocks, in the order of
    /// `candidates(most)`. Throws `std::invalid_argument` for another number of blocks, and for
    /// places out of range or order.
    void addLevel(std::uint64_t most, std::span<const FrequentCandidates> blocks);

    /// The size of the rules that are tallied next; 0 when there are none, or not before larger
    /// sets are known.
    std::size_t ruleSize() const;

    /// The rules of that size in blocks; the numbers of rules are those that could be proposed.
    std::vector<LevelBlock> rules(std::uint64_t most) const;

    /// Ends that size with the rules that are met in `options.minCount` histories or more, in
    /// ascending order. Throws `std::invalid_argument` for sets or splits that are not there.
    void addRules(std::span<const RuleTally> tallies);

    /// The number of rules so far that have the least count.
    std::size_t ruleCount() const;

    /// All item sets of up to `size()` items.
    const ItemSets& itemSets() const;

    /// The sides of a rule of `size` items. Throws `std::invalid_argument` when it is not there.
    void sides(std::size_t size, const RuleTally& rule, std::vector<Rank>& antecedent,
               std::vector<Rank>& subsequent) const;

    /// The same sets, of whose rules none was tallied.
    LevelRun withoutRules() const;

    /// What was found among so many histories. The run remains. Of the rules only those from the
    /// `first` one on that were counted, and no more than `most`: parts of a result that is large.
    Result result(std::size_t histories, std::size_t first = 0,
                  std::size_t most = static_cast<std::size_t>(-1)) const;

    /// Bytes that the state takes.
    std::size_t memory() const;

    /// @{
    /// The state as bytes: all of it; what counts a block of candidates; and what tallies the rules
    /// of size `ruleSize()`.
    std::string bytes() const;
    std::string bytesForCandidates(const LevelBlock& block) const;
    std::string bytesForRules() const;
    /// @}

  private:
    friend class ShardCounter;
    friend HistoryIndex withoutRareItems(const HistoryIndex& shard, const LevelRun& run);

    explicit LevelRun(std::unique_ptr<LevelState> state);

    std::unique_ptr<LevelState> m_state;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
