#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "pair_tallies.hpp"
#include "rule_ledger.hpp"

namespace quarvis::mining {

/// The live pairs: the frequent pairs with a rule that is followed (see `RuleLedger`).
///
/// If a rule "A => S" is met, so is "a => s" for each a in A and each s in S. So a rule can be met
/// in enough histories only if all these pairs are live.
class LivePairs {
  public:
    /// A later item of a live pair, and which rules of the pair are followed.
    struct Partner {
        Rank item;
        bool forward;   ///< "first => item"
        bool backward;  ///< "item => first"
    };

    /// Takes the pairs of `sets` with a rule that `ledger` follows.
    LivePairs(const PairTallies& tallies, const ItemSets& sets, std::size_t items,
              RuleLedger& ledger);

    /// The live pairs of a first item, by ascending later item.
    std::span<const Partner> of(Rank first) const {
        return {m_partners.data() + m_begin[at(first)],
                m_begin[at(first) + 1] - m_begin[at(first)]};
    }

    /// Whether an item is in any live pair.
    bool has(Rank item) const { return m_has[at(item)]; }

  private:
    std::vector<Partner> m_partners;
    std::vector<std::size_t> m_begin;  // by rank
    std::vector<bool> m_has;           // by rank
};

}  // namespace quarvis::mining
