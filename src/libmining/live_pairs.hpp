#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "pair_tallies.hpp"
#include "rule_ledger.hpp"

namespace quarvis::mining {

/// The pairs of items of which a rule is followed.
///
/// A rule that is met leaves a rule of a pair met for each item of its antecedent and each of its
/// subsequent. So no rule is met often enough unless all these pairs are here.
class LivePairs {
  public:
    /// A pair with an item before this one: which of its rules are followed.
    struct Partner {
        Rank item;
        bool forward;   ///< "first => item"
        bool backward;  ///< "item => first"
    };

    /// Of the pairs of `sets`, as `ledger` decides.
    LivePairs(const PairTallies& tallies, const ItemSets& sets, std::size_t items,
              RuleLedger& ledger);

    /// The pairs of a first item, by ascending partner.
    std::span<const Partner> of(Rank first) const {
        return {m_partners.data() + m_begin[at(first)],
                m_begin[at(first) + 1] - m_begin[at(first)]};
    }

    /// Whether an item is in any pair.
    bool has(Rank item) const { return m_has[at(item)]; }

  private:
    std::vector<Partner> m_partners;
    std::vector<std::size_t> m_begin;  // by rank
    std::vector<bool> m_has;           // by rank
};

}  // namespace quarvis::mining
