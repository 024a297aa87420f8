#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "arena.hpp"
#include "moment_columns.hpp"
#include "pair_tallies.hpp"
#include "rule_ledger.hpp"
#include "run_control.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// The counting of rules: a walk over the frequent item sets, depth first, that keeps for each set
/// the moments at which its rules are met, and gets those of a set with one more item by
/// intersecting them with the masks of the item (see `Standings`). In how many histories the rules
/// of pairs are met is known before, so that moments are made only for pairs that a triple is made
/// from, and for items of triples that are looked at.
///
/// At any moment a set meets one rule at most: its subsequent are the items that are new, its
/// antecedent those that are recent, and no item may be neither. So a set has for each of its rules
/// the moments at which it is met, and those at which all items are new, and all recent, from which
/// rules of larger sets begin.
///
/// A rule that is met leaves every smaller rule with two sides met. So from three items on a set
/// has a rule that is met often enough only if its prefix has one, or the set without its last item
/// but one; all other sets are passed over. And a rule that is met too seldom is dropped at once,
/// as none that it is extended to is met more often.
class RuleWalk {
  public:
    /// Over the sets of at most `maxSize` items. `single` tells that no history of the standings
    /// meets a rule at more than one moment, as it is without a window.
    RuleWalk(const Standings& standings, const PairTallies& tallies, const ItemSets& sets,
             std::size_t maxSize, Splits splits, bool single, RuleLedger& ledger, Work& work);

    /// The rules of all sets that begin with the set `first` of the first level.
    void walk(std::size_t first);

  private:
    /// The moments of a set, in those words of the first item's in which it has any. Of each rule
    /// and of the two beginnings the bits of all these words stand one after the other.
    struct Moments {
        MomentWords::Selection words;
        std::uint32_t* word = nullptr;  // those of `words`
        std::uint64_t* allNew = nullptr;
        std::uint64_t* allRecent = nullptr;
        std::size_t rules = 0;
        SplitMask* splits = nullptr;
        std::uint64_t** met = nullptr;  // by rule
    };

    /// A set among those that share all items but the last, with its moments if it is alive.
    struct Node {
        std::size_t set;
        Rank last;
        const Moments* moments;
    };

    /// A pair of the first item: which of its rules are followed, and whether it or its last item
    /// is needed for a triple.
    struct Pair {
        std::size_t set;
        Rank last;
        bool forward;   // "first => last"
        bool backward;  // "last => first"
        bool isNeeded;

        bool isLive() const { return forward || backward; }
    };

    struct Marks {
        Arena<std::uint64_t>::Mark bits;
        Arena<std::uint32_t>::Mark indices;
        Arena<Moments>::Mark moments;
        Arena<std::uint64_t*>::Mark pointers;
    };

    void m_judgePairs(Rank first);
    bool m_askColumns();
    void m_visitPairs();
    const Moments* m_pairMoments(Rank item, bool forward, bool backward);
    void m_visit(std::size_t size, const std::vector<Node>& nodes);
    void m_markJoined(std::size_t size, std::size_t begin, std::size_t end);
    bool m_isNeeded(std::size_t size, std::size_t set) const;
    const Moments* m_extend(const Moments& from, std::size_t size, std::size_t set, Rank item,
                            std::size_t place);
    void m_align(const Moments& from, const MomentColumns::Column& column);
    const std::uint64_t* m_gather(const std::uint64_t* bits, std::size_t words);
    bool m_judge(const Moments& made, const SplitSet& rule, const std::uint64_t* moments,
                 std::uint32_t met);
    std::uint32_t m_counted(const Moments& made, const SplitSet& rule, const std::uint64_t* moments,
                            std::uint32_t met);
    static void s_squeeze(Moments& made);
    std::vector<Node>& m_nodesAt(std::size_t size);
    Marks m_mark() const {
        return {m_bits.mark(), m_indices.mark(), m_moments.mark(), m_pointers.mark()};
    }
    void m_release(const Marks& marks) {
        m_bits.release(marks.bits);
        m_indices.release(marks.indices);
        m_moments.release(marks.moments);
        m_pointers.release(marks.pointers);
    }

    const Standings& m_standings;
    const PairTallies& m_tallies;
    const ItemSets& m_sets;
    std::size_t m_maxSize;
    Splits m_splits;
    bool m_single;
    RuleLedger& m_ledger;
    Work& m_work;

    std::vector<Pair> m_pairs;
    MomentColumns m_columns;
    std::deque<std::vector<Node>> m_nodes;  // by size
    // By rank: the last time that m_markJoined marked a set with this last item.
    std::vector<std::uint32_t> m_joined;
    std::uint32_t m_markings = 0;
    // Of the words that a set and a column share: their places in the set, and what the column has.
    std::vector<std::uint32_t> m_shared;
    std::vector<std::uint64_t> m_fresh;
    std::vector<std::uint64_t> m_recent;
    std::vector<std::uint64_t> m_gathered;
    std::vector<Rank> m_items;
    std::vector<std::uint64_t> m_present;

    Arena<std::uint64_t> m_bits;
    Arena<std::uint32_t> m_indices;
    Arena<Moments> m_moments;
    Arena<std::uint64_t*> m_pointers;
};

}  // namespace quarvis::mining
