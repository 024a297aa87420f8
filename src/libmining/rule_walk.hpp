#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "live_pairs.hpp"
#include "moment_counter.hpp"
#include "order_counter.hpp"
#include "pair_tallies.hpp"
#include "rule_ledger.hpp"
#include "rule_partners.hpp"
#include "run_control.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// The counting of rules: a walk over the frequent item sets, depth first, in which the rules of a
/// set are counted from what was kept of a set with one item less (see `RuleCounter`). In how many
/// histories the rules of pairs are met is known before, so that something is kept only of pairs
/// that a triple is made from, and of items of triples that are looked at.
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
    /// A set among those that share all items but the last, with what is kept of it if it is alive.
    struct Node {
        std::size_t set;
        Rank last;
        const RuleCounter::Kept* kept;
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

    void m_judgePairs(Rank first);
    bool m_choosePartners();
    bool m_mayHaveRule(Rank second, Rank third) const;
    void m_visitPairs();
    void m_visit(std::size_t size, const std::vector<Node>& nodes);
    void m_markJoined(std::size_t size, std::size_t begin, std::size_t end);
    bool m_isNeeded(std::size_t size, std::size_t set) const;
    std::vector<Node>& m_nodesAt(std::size_t size);

    const Standings& m_standings;
    const PairTallies& m_tallies;
    const ItemSets& m_sets;
    std::size_t m_maxSize;
    RuleLedger& m_ledger;
    Work& m_work;

    Splits m_splits;
    LivePairs m_live;
    RulePartners m_rulePartners;
    MomentCounter m_moments;
    std::optional<OrderCounter> m_orders;  // where there is no window
    RuleCounter* m_counter = nullptr;      // the one that suits the first item at hand
    std::vector<Pair> m_pairs;
    std::vector<Rank> m_later;                   // their last items
    std::vector<RuleCounter::Partner> m_needed;  // those that triples are made from
    std::deque<std::vector<Node>> m_nodes;       // by size
    // By rank: the last time that m_markJoined marked a set with this last item.
    std::vector<std::uint32_t> m_joined;
    std::uint32_t m_markings = 0;
};

}  // namespace quarvis::mining
