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

/// Counts the rules of item sets for a walk over them (see `RuleWalk`), each set from what was kept
/// of a set with one item less. The walk takes the sets of one first item after the other.
///
/// A rule is counted only if each item of its antecedent and each of its subsequent are a pair
/// whose rule is followed. So for each rule that is kept there are the items that may join its
/// antecedent, and those that may join its subsequent; and for a set those that may precede it
/// alone, and follow it.
///
/// What is kept of a set lives until the counter is rewound to a mark from before.
class RuleCounter {
  public:
    /// The rules of a set that are followed.
    struct Met {
        std::size_t rules = 0;
        SplitMask* splits = nullptr;
        std::uint64_t** bits = nullptr;         // where the rule is met
        std::uint64_t* toAntecedent = nullptr;  // a bitset of partners a rule
        std::uint64_t* toSubsequent = nullptr;
    };

    /// What is kept of a set, with a measure of what it costs to extend it.
    struct Kept {
        std::size_t cost = 0;
        Met met;
        const std::uint64_t* before = nullptr;  // a bitset: the partners that may precede all items
        const std::uint64_t* after = nullptr;
    };

    /// An item after the first one, which both are in so many histories at most.
    struct Partner {
        Rank item;
        std::uint32_t histories;
    };

    /// A set that is to be counted, of `size` items: the set that it extends and `item`, which
    /// stands at `place` among its items. What is not needed is not kept.
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

    /// Begins with the first item of the partners; its sets hold no others than these. False when
    /// this counter does not suit it.
    virtual bool begin(Rank first, std::span<const Partner> partners) = 0;

    /// What is kept of the pair of the first item and a partner; of its rules those that are
    /// followed: "first => partner" is the forward one.
    virtual const Kept* pair(Rank partner, bool forward, bool backward) = 0;

    /// Takes the rules of a set to the ledger. Null when none of them is followed, or the set is
    /// not needed.
    virtual const Kept* extend(const Kept& from, const Extension& to) = 0;

    virtual Mark mark() const = 0;
    virtual void rewind(const Mark& mark) = 0;

  protected:
    /// A rule of a set, that one rule of a smaller set leads to.
    struct Try {
        std::size_t from;  // which rule of the smaller set, or one of the two below
        bool isNew;        // whether the item joins the subsequent
        SplitMask split;
    };

    /// The item precedes all others, which come at once.
    static constexpr std::size_t BEFORE_ALL = static_cast<std::size_t>(-1);
    /// The item follows all others.
    static constexpr std::size_t AFTER_ALL = static_cast<std::size_t>(-2);

    /// Finds the rules that a set may have, into m_tries; whether there are any.
    bool findTries(const Kept& from, const Extension& to);

    /// Room for so many rules.
    Met takeMet(std::size_t most);

    /// Keeps a rule of a pair.
    void keepPair(Met& met, SplitMask split, std::uint64_t* bits, std::uint32_t antecedent,
                  std::uint32_t subsequent);

    /// Keeps a rule that was tried.
    void keepTried(Met& met, const Try& tried, std::uint64_t* bits, const Kept& from, Rank item);

    /// Keeps what may precede and follow all items: of a pair, of a larger set.
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
