#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/dictionary.hpp>

#include "arena.hpp"
#include "rule_ledger.hpp"
#include "rule_partners.hpp"
#include "run_control.hpp"
#include "splits.hpp"

namespace quarvis::mining {

/// Counts the rules of item sets for `RuleWalk`, each set from what was kept of a set with one item
/// less. The walk takes the sets of one first item at a time.
///
/// A rule is counted only if each rule "a => s", with a in its antecedent and s in its subsequent,
/// is followed. So each kept rule has two bitsets of `RulePartners`: the items that may join its
/// antecedent, and those that may join its subsequent. A kept set has two as well: the items that
/// may precede all of its items, and those that may follow all of them.
///
/// What is kept of a set lives until the counter is rewound to an earlier mark.
class RuleCounter {
  public:
    /// The rules of a set that are followed.
    struct Met {
        std::size_t rules = 0;
        SplitMask* splits = nullptr;
        std::uint64_t** bits = nullptr;         // by rule: where it is met
        std::uint64_t* toAntecedent = nullptr;  // by rule: a bitset of partners
        std::uint64_t* toSubsequent = nullptr;
    };

    /// What is kept of a set. `cost` is what extending it costs, compared with other sets.
    struct Kept {
        std::size_t cost = 0;
        Met met;
        const std::uint64_t* before = nullptr;  // the partners that may precede all items
        const std::uint64_t* after = nullptr;
    };

    /// A later item than the first one. Both are together in at most `histories` histories.
    struct Partner {
        Rank item;
        std::uint32_t histories;
    };

    /// A set to count: its size, its place in its level, the item that it adds to the kept set, and
    /// the place of that item among its items. If `isNeeded` is false, nothing is kept of the set.
    struct Extension {
        std::size_t size;
        std::size_t set;
        Rank item;
        std::size_t place;
        bool isNeeded;
    };

    struct Mark {
        ArenaMark bits;
        ArenaMark pointers;
        ArenaMark others[2];
    };

    /// All references must outlive the counter.
    RuleCounter(const RulePartners& partners, RuleLedger& ledger, Splits splits, Work& work)
        : m_partners(partners), m_ledger(ledger), m_splits(splits), m_work(work) {}
    RuleCounter(const RuleCounter&) = delete;
    RuleCounter& operator=(const RuleCounter&) = delete;
    virtual ~RuleCounter() = default;

    /// Starts with a first item. All other items of its sets are among the partners. Returns false
    /// when this counter does not suit the item.
    virtual bool begin(Rank first, std::span<const Partner> partners) = 0;

    /// Keeps the pair of the first item and a partner with those of its rules that are followed;
    /// the forward rule is "first => partner".
    virtual const Kept* pair(Rank partner, bool forward, bool backward) = 0;

    /// Counts the rules of a set and has the ledger decide about them. Returns null when no rule is
    /// followed or the set is not needed.
    virtual const Kept* extend(const Kept& from, const Extension& to) = 0;

    virtual Mark mark() const = 0;
    virtual void rewind(const Mark& mark) = 0;

  protected:
    /// A rule to try for a set, from what was kept of the smaller set.
    struct Try {
        std::size_t from;  // the place of a rule of the smaller set, or BEFORE_ALL or AFTER_ALL
        bool isNew;        // whether the item joins the subsequent
        SplitMask split;
    };

    /// The item is the antecedent; all others, which come at once, are the subsequent.
    static constexpr std::size_t BEFORE_ALL = static_cast<std::size_t>(-1);
    /// The item is the subsequent; all others are the antecedent.
    static constexpr std::size_t AFTER_ALL = static_cast<std::size_t>(-2);

    /// Lists in m_tries the rules that a set may have. Returns whether there are any.
    bool findTries(const Kept& from, const Extension& to);

    /// Takes room for `most` rules.
    Met takeMet(std::size_t most);

    void keepPair(Met& met, SplitMask split, std::uint64_t* bits, std::uint32_t antecedent,
                  std::uint32_t subsequent);

    void keepTried(Met& met, const Try& tried, std::uint64_t* bits, const Kept& from, Rank item);

    /// Keeps the items that may precede or follow all items: of a pair, and of a larger set.
    void keepAround(Kept& made, std::uint32_t first, std::uint32_t second);
    void keepAround(Kept& made, const Kept& from, Rank item);

    const RulePartners& m_partners;
    RuleLedger& m_ledger;
    Splits m_splits;
    Work& m_work;
    std::vector<Try> m_tries;
    Arena<std::uint64_t> m_bits;
    Arena<std::uint64_t*> m_pointers;

  private:
    const std::uint64_t* m_both(const std::uint64_t* a, const std::uint64_t* b);
};

}  // namespace quarvis::mining
