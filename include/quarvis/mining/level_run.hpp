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

/// Thrown for bytes that are not the state of a run or are damaged.
class RunFormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A block of candidates or of rules: all those of some consecutive first items.
struct LevelBlock {
    /// @{
    /// The first items are [begin, end) in the run's own order of items.
    std::uint32_t begin;
    std::uint32_t end;
    /// @}

    std::uint64_t count;  ///< The number of candidates or rules.
};

/// The candidates of a block that are frequent.
struct FrequentCandidates {
    std::vector<std::uint32_t> places;  ///< Places in the block, ascending.
    std::vector<std::uint32_t> counts;  ///< For each place, the histories that hold the candidate.
};

/// The counts of a rule whose size the caller knows. docs/mining.md explains "met".
struct RuleTally {
    std::uint64_t split;       ///< Bit i is set when item i of the set is in the subsequent.
    std::uint32_t set;         ///< The place of the rule's item set in the level of that size.
    std::uint32_t met;         ///< Histories in which the rule is met.
    std::uint32_t counted;     ///< Histories in which the rule counts; at most `met`.
    std::uint32_t unused = 0;  ///< Padding.
};

/// Adds the tallies of other histories to `sum`. Both are in ascending order of set and split.
void addTallies(std::vector<RuleTally>& sum, std::span<const RuleTally> tallies);

class [[gnu::visibility("hidden")]] LevelState;  // not for users, so not exported

/// The side of a run over shards that decides; the shards may be in other processes. `ShardCounter`
/// is the side that counts. This is count distribution (R. Agrawal, J. C. Shafer: Parallel Mining
/// of Association Rules, 1996).
///
/// For each level the caller takes the candidates in blocks, has each block counted on every shard,
/// sums the counts, and returns the candidates that reach the least count; likewise with the rules
/// of each size. The result is what `mine` finds in the whole.
///
/// The rules of a size can be tallied as soon as the sets of that size are known, and must be
/// before the rules of the next size. The state can be written to bytes and read elsewhere at any
/// point without changing the result. Only one thread at a time may use a run, even its const
/// operations.
class LevelRun {
  public:
    /// `counts` has, by rank, the number of histories that hold each item. Items below
    /// `options.minCount` are not mined. The threads and the budget of the options have no effect.
    LevelRun(std::vector<std::uint32_t> counts, const MiningOptions& options);

    /// Reads what one of the `bytes` operations wrote. Throws `RunFormatError` for anything else.
    static LevelRun fromBytes(std::span<const char> bytes);

    /// @{
    /// The run that was moved from has no state and may only be assigned to or destroyed.
    LevelRun(LevelRun&&) noexcept;
    LevelRun& operator=(LevelRun&&) noexcept;
    /// @}

    ~LevelRun();

    /// The settings of the run. Only those that affect the result are kept in its bytes.
    const MiningOptions& options() const;

    /// The greatest size whose sets are all known; at least 1.
    std::size_t size() const;

    /// The number of sets of a size that is at most `size()`.
    std::size_t setCount(std::size_t size) const;

    /// Whether there are candidates of size `size()` + 1.
    bool hasCandidates() const;

    /// The candidates of size `size()` + 1 in blocks; empty if there are none. A block ends after
    /// the first item with which it has `most` candidates or more, at least 1, so it has at most
    /// one item's candidates too many.
    std::vector<LevelBlock> candidates(std::uint64_t most) const;

    /// Completes the level. `blocks` has the frequent candidates of each block of
    /// `candidates(most)`, in the same order. Throws `std::invalid_argument` when the number of
    /// blocks differs, and when places are out of range or do not ascend.
    void addLevel(std::uint64_t most, std::span<const FrequentCandidates> blocks);

    /// The size of the rules to tally next. 0 when no more rules are possible, or not before larger
    /// sets are known.
    std::size_t ruleSize() const;

    /// The rules of size `ruleSize()` in blocks, as `candidates` makes them. The count of a block
    /// is the number of rules that its sets can propose.
    std::vector<LevelBlock> rules(std::uint64_t most) const;

    /// Completes the rules of size `ruleSize()`. `tallies` has the rules that are met in at least
    /// `options.minCount` histories, by ascending set and split. Throws `std::invalid_argument` for
    /// sets or splits that do not exist, for another order, and when no rules are due.
    void addRules(std::span<const RuleTally> tallies);

    /// The number of rules so far that reach the least count.
    std::size_t ruleCount() const;

    /// All item sets of up to `size()` items. They are sorted at the first call after a level is
    /// added.
    const ItemSets& itemSets() const;

    /// Fills in the sides of a rule of `size` items, ascending. Throws `std::invalid_argument` for
    /// a set or split that does not exist.
    void sides(std::size_t size, const RuleTally& rule, std::vector<Rank>& antecedent,
               std::vector<Rank>& subsequent) const;

    /// A run with the same sets, none of whose rules was tallied.
    LevelRun withoutRules() const;

    /// The result so far among `histories` histories in all; the run stays as it is. A large result
    /// can be taken in parts: of the rules that reach the least count, at most `most` from the
    /// `first` one on are put to the thresholds.
    Result result(std::size_t histories, std::size_t first = 0,
                  std::size_t most = static_cast<std::size_t>(-1)) const;

    /// The number of bytes that the state takes.
    std::size_t memory() const;

    /// @{
    /// The state as bytes: all of it; the part that counting a block of candidates needs; and the
    /// part that tallying the rules of size `ruleSize()` needs.
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
