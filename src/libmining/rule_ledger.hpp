#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "meter.hpp"
#include "splits.hpp"

namespace quarvis::mining {

/// In how many histories a rule is met, and in how many it counts: where it is met at a transaction
/// that does not hold all of its antecedent.
struct Tally {
    std::uint32_t met = 0;
    std::uint32_t counted = 0;
};

/// A rule by the set of its items, given by its size and place, and the split of it.
struct SplitSet {
    std::uint32_t size;
    std::uint32_t set;
    SplitMask split;

    bool operator==(const SplitSet&) const = default;
    bool operator<(const SplitSet& other) const {
        return std::tie(size, set, split) < std::tie(other.size, other.set, other.split);
    }
};

struct CountedRule {
    SplitSet rule;
    std::uint32_t count;
};

/// Decides on rules as the walk tallies them. A set all of whose rules are dropped is dead: no set
/// that it is extended to is looked at on its account.
class RuleLedger {
  public:
    RuleLedger() = default;
    RuleLedger(const RuleLedger&) = delete;
    RuleLedger& operator=(const RuleLedger&) = delete;
    virtual ~RuleLedger() = default;

    /// A rule that is met in fewer histories than this is neither followed nor counted.
    virtual std::uint32_t least() const = 0;

    /// A rule is met in so many histories of the shard. Whether it is to be followed.
    virtual bool follows(const SplitSet& rule, std::uint32_t met) = 0;

    /// Whether the histories that a rule counts in are asked for. Asked right after `follows`.
    virtual bool isCounted(const SplitSet& rule, std::uint32_t met) = 0;

    /// The answer.
    virtual void count(const SplitSet& rule, Tally tally) = 0;
};

/// Takes a rule that is met in so many histories to a ledger; whether it is followed. `counted`
/// tells in how many of them it counts, and is called only when that is asked for.
template <class Counted>
bool judge(RuleLedger& ledger, Meter& meter, const SplitSet& rule, std::uint32_t met,
           Counted counted) {
    if (met < ledger.least())
        return false;
    const bool followed = ledger.follows(rule, met);
    if (ledger.isCounted(rule, met)) {
        meter.took(Budget::RULE_BYTES);
        ledger.count(rule, {met, counted()});
    }
    return followed;
}

/// The ledger of a run whose shard is the whole: rules that are met too seldom are dropped at once.
class WholeLedger : public RuleLedger {
  public:
    explicit WholeLedger(std::uint32_t least) : m_least(least) {}

    std::uint32_t least() const override { return m_least; }
    bool follows(const SplitSet&, std::uint32_t met) override { return met >= m_least; }
    bool isCounted(const SplitSet&, std::uint32_t met) override { return met >= m_least; }
    void count(const SplitSet& rule, Tally tally) override {
        if (tally.counted >= m_least)
            rules.push_back({rule, tally.counted});
    }

    std::vector<CountedRule> rules;

  private:
    std::uint32_t m_least;
};

/// The ledger of one shard among several, for the sets of one size: rules of fewer items are
/// followed as the sum over all shards told, and all rules of that size are tallied.
class ShardLedger : public RuleLedger {
  public:
    /// `live` are the rules of fewer items that are met often enough in all shards together, in
    /// ascending order; they must outlive the ledger.
    ShardLedger(std::uint32_t size, const std::vector<SplitSet>& live)
        : m_size(size), m_live(live) {}

    std::uint32_t least() const override { return 1; }
    bool follows(const SplitSet& rule, std::uint32_t) override {
        return rule.size < m_size && std::binary_search(m_live.begin(), m_live.end(), rule);
    }
    bool isCounted(const SplitSet& rule, std::uint32_t met) override {
        return rule.size == m_size && met > 0;
    }
    void count(const SplitSet& rule, Tally tally) override { tallies.push_back({rule, tally}); }

    struct Entry {
        SplitSet rule;
        Tally tally;
    };
    std::vector<Entry> tallies;

  private:
    std::uint32_t m_size;
    const std::vector<SplitSet>& m_live;
};

}  // namespace quarvis::mining
