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

/// Counts the rules of the frequent item sets, depth first: the rules of a set are counted from
/// what was kept of a set with one item less (see `RuleCounter`). The tallies of pairs are known
/// beforehand, so only pairs and items of triples that may have a rule are kept.
///
/// If a rule is met, so is each rule that is left when items are removed and both sides keep an
/// item. So a rule that is met in too few histories is dropped with all that it could become. In a
/// rule of three items or more, at most one of the last two items is all of a side, so the other
/// one can be removed. So a set is looked at only if its prefix, or the set without its last item
/// but one, has a rule that is followed.
class RuleWalk {
  public:
    /// Walks over the sets of at most `maxSize` items. `single` promises that no history meets a
    /// rule at more than one moment, which holds without a window. All references must outlive the
    /// walk.
    RuleWalk(const Standings& standings, const PairTallies& tallies, const ItemSets& sets,
             std::size_t maxSize, Splits splits, bool single, RuleLedger& ledger, Work& work);

    /// Counts the rules of all sets that begin with set `first` of the first level.
    void walk(std::size_t first);

  private:
    /// A set of a class, that is of those that share all items but the last. `kept` is null if it
    /// is dead.
    struct Node {
        std::size_t set;
        Rank last;
        const RuleCounter::Kept* kept;
    };

    /// A pair of the first item: which of its rules are followed, and whether a triple needs it.
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
    RuleCounter* m_counter = nullptr;      // the one for the current first item
    std::vector<Pair> m_pairs;
    std::vector<Rank> m_later;                   // their last items
    std::vector<RuleCounter::Partner> m_needed;  // those that triples are made from
    std::deque<std::vector<Node>> m_nodes;       // by size
    // By rank: the last marking by m_markJoined of a set with this last item.
    std::vector<std::uint32_t> m_joined;
    std::uint32_t m_markings = 0;
};

}  // namespace quarvis::mining
