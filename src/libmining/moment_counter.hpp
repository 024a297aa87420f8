#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "moment_columns.hpp"
#include "rule_counter.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// Counts rules by the moments at which they are met, with a window or without.
///
/// At any moment a set meets at most one rule: its subsequent is what is new, its antecedent what
/// is recent, and no item may be neither. A set keeps the moments at which each of its rules is
/// met. It also keeps those at which all of its items are new and those at which all are recent,
/// since an added item makes a first rule there. For a set with one item more, these are
/// intersected with the masks of the item (see `Standings`).
class MomentCounter : public RuleCounter {
  public:
    /// `single` promises that no history meets a rule at more than one moment, which holds without
    /// a window. All references must outlive the counter.
    MomentCounter(const Standings& standings, const ItemSets& sets, bool single,
                  const RulePartners& partners, RuleLedger& ledger, Splits splits, Work& work)
        : RuleCounter(partners, ledger, splits, work),
          m_standings(standings),
          m_sets(sets),
          m_single(single),
          m_columns(standings) {}

    /// Suits every first item.
    bool begin(Rank first, std::span<const Partner> partners) override;
    const Kept* pair(Rank partner, bool forward, bool backward) override;
    const Kept* extend(const Kept& from, const Extension& to) override;
    Mark mark() const override {
        return {m_bits.mark(), m_pointers.mark(), {m_indices.mark(), m_kept.mark()}};
    }
    void rewind(const Mark& mark) override {
        m_bits.release(mark.bits);
        m_pointers.release(mark.pointers);
        m_indices.release(mark.others[0]);
        m_kept.release(mark.others[1]);
    }

  private:
    /// The moments of a set, in those words of the first item in which it has any. Its bits for a
    /// rule, `allNew` and `allRecent` each have one word for each of these. The cost of extending
    /// the set is the number of these words.
    struct Moments : Kept {
        MomentWords::Selection words;
        std::uint32_t* word = nullptr;  // the words of `words`
        std::uint64_t* allNew = nullptr;
        std::uint64_t* allRecent = nullptr;
    };

    void m_align(const Moments& from, const MomentColumns::Column& column);
    const std::uint64_t* m_gather(const std::uint64_t* bits, std::size_t words);
    std::uint32_t m_counted(const Moments& made, const SplitSet& rule, const std::uint64_t* moments,
                            std::uint32_t met);
    static void s_squeeze(Moments& made);

    const Standings& m_standings;
    const ItemSets& m_sets;
    bool m_single;
    MomentColumns m_columns;
    // The words that a set and a column share: their places in the set, and the column's masks.
    std::vector<std::uint32_t> m_shared;
    std::vector<std::uint64_t> m_fresh;
    std::vector<std::uint64_t> m_recent;
    std::vector<std::uint64_t> m_gathered;
    std::vector<Rank> m_items;
    std::vector<std::uint64_t> m_present;

    Arena<std::uint32_t> m_indices;
    Arena<Moments> m_kept;
};

}  // namespace quarvis::mining
