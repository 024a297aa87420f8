#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "order_columns.hpp"
#include "rule_counter.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// Counts rules without a window, by the order of first occurrences.
///
/// Without a window a set meets at most one rule in a history: its subsequent is what comes last,
/// all at once, and its antecedent is all else. A set keeps the latest order of its items in each
/// history and, for each rule, a bit for each history that meets it. An added item comes before the
/// latest ones and joins the antecedent, comes with them and joins the subsequent, or comes after
/// them and is the subsequent of all others. 64 histories are compared at a time.
class OrderCounter : public RuleCounter {
  public:
    /// The standings must be made without a window. All references must outlive the counter.
    OrderCounter(const Standings& standings, const ItemSets& sets, const RulePartners& partners,
                 RuleLedger& ledger, Splits splits, Work& work)
        : RuleCounter(partners, ledger, splits, work),
          m_standings(standings),
          m_sets(sets),
          m_columns(standings) {}

    bool begin(Rank first, std::span<const Partner> partners) override;
    const Kept* pair(Rank partner, bool forward, bool backward) override;
    const Kept* extend(const Kept& from, const Extension& to) override;
    Mark mark() const override {
        return {m_bits.mark(), m_pointers.mark(), {m_orders.mark(), m_kept.mark()}};
    }
    void rewind(const Mark& mark) override {
        m_bits.release(mark.bits);
        m_pointers.release(mark.pointers);
        m_orders.release(mark.others[0]);
        m_kept.release(mark.others[1]);
    }

  private:
    struct Set : Kept {
        std::uint8_t* latest = nullptr;     // by lane: the latest order of the items, or ABSENT
        std::uint64_t* together = nullptr;  // the lanes in which all items come at once
    };

    void m_compare(const std::uint8_t* item, const std::uint8_t* set);
    std::uint32_t m_intersect(const std::uint64_t* bits, const std::vector<std::uint64_t>& mask,
                              std::uint64_t* result) const;
    std::uint8_t* m_latest(const std::uint8_t* a, const std::uint8_t* b);
    std::uint32_t m_counted(const SplitSet& rule, const std::uint64_t* met,
                            const std::uint8_t* item, const std::uint8_t* set);
    bool m_isPresent(const Standings::Place& first, Rank item, std::size_t moment) const;

    const Standings& m_standings;
    const ItemSets& m_sets;
    OrderColumns m_columns;
    // By word: the lanes in which an item comes before, with and after the latest items of a set.
    std::vector<std::uint64_t> m_before;
    std::vector<std::uint64_t> m_with;
    std::vector<std::uint64_t> m_after;
    std::vector<Rank> m_items;
    Arena<std::uint8_t> m_orders;
    Arena<Set> m_kept;
};

}  // namespace quarvis::mining
