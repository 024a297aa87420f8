#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "meter.hpp"
#include "splits.hpp"

namespace quarvis::mining {

/// The numbers of histories in which a rule is met and in which it counts. A rule counts where it
/// is met at a transaction that does not hold all of its antecedent.
struct Tally {
    std::uint32_t met = 0;
    std::uint32_t counted = 0;
};

/// A rule: the size and place of its item set, and the split of the set.
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

/// Decides about rules as a walk tallies them. A rule that is followed is kept, to make rules of
/// larger sets from it. A set without a rule that is followed is dead: it makes no larger set worth
/// a look.
class RuleLedger {
  public:
    RuleLedger() = default;
    RuleLedger(const RuleLedger&) = delete;
    RuleLedger& operator=(const RuleLedger&) = delete;
    virtual ~RuleLedger() = default;

    /// A rule that is met in fewer histories than this is neither followed nor counted.
    virtual std::uint32_t least() const = 0;

    /// Whether to follow a rule that is met in `met` histories of the shard.
    virtual bool follows(const SplitSet& rule, std::uint32_t met) = 0;

    /// Whether to find out in how many histories a rule counts. Called right after `follows`.
    virtual bool isCounted(const SplitSet& rule, std::uint32_t met) = 0;

    /// Takes the tally of a rule for which `isCounted` is true.
    virtual void count(const SplitSet& rule, Tally tally) = 0;
};

/// Has a ledger decide about a rule that is met in `met` histories; returns whether the rule is
/// followed. `counted` returns in how many histories the rule counts, and is called only if the
/// ledger asks.
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

/// The ledger of a run over one shard, the whole: rules that are met in too few histories are
/// dropped at once.
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

/// The ledger of one shard among several, for the rules of one size. Smaller rules are followed if
/// the sums over all shards said so. The rules of the size are all tallied.
class ShardLedger : public RuleLedger {
  public:
    /// `live` has the smaller rules that are met in enough histories of all shards together, in
    /// ascending order. It must outlive the ledger.
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
