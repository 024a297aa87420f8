#include "rule_walk.hpp"

#include <algorithm>
#include <cassert>
#include <limits>
#include <span>

namespace quarvis::mining {

RuleWalk::RuleWalk(const Standings& standings, const PairTallies& tallies, const ItemSets& sets,
                   std::size_t maxSize, Splits splits, bool single, RuleLedger& ledger, Work& work)
    : m_standings(standings),
      m_tallies(tallies),
      m_sets(sets),
      m_maxSize(std::min(maxSize, sets.levels())),
      m_ledger(ledger),
      m_work(work),
      m_splits(splits),
      m_live(tallies, sets, standings.itemCount(), ledger),
      m_rulePartners(m_live, standings.itemCount()),
      m_moments(standings, sets, single, m_rulePartners, ledger, splits, work),
      m_joined(standings.itemCount()) {
    if (single)
        m_orders.emplace(standings, sets, m_rulePartners, ledger, splits, work);
}

void RuleWalk::walk(std::size_t first) {
    if (m_maxSize < 2)
        return;
    const Level& items = m_sets.level(1);
    const std::size_t begin = items.extensions[first];
    const std::size_t end = items.extensions[first + 1];
    const Rank item = items.last[first];
    if (begin == end || m_standings.places(item).empty())
        return;
    m_pairs.clear();
    for (std::size_t pair = begin; pair < end; ++pair)
        m_pairs.push_back({pair, m_sets.level(2).last[pair], false, false, false});
    m_judgePairs(item);
    if (m_maxSize == 2)
        return;
    m_later.clear();
    for (const Pair& pair : m_pairs)
        m_later.push_back(pair.last);
    m_rulePartners.begin(item, m_later);
    if (!m_choosePartners())
        return;
    m_counter = m_orders && m_orders->begin(item, m_needed) ? &*m_orders : nullptr;
    if (m_counter == nullptr) {
        m_moments.begin(item, m_needed);
        m_counter = &m_moments;
    }
    const RuleCounter::Mark mark = m_counter->mark();
    m_visitPairs();
    m_counter->rewind(mark);
}

/// Has the ledger decide about the rules of a first item's pairs.
void RuleWalk::m_judgePairs(Rank first) {
    for (Pair& pair : m_pairs) {
        const PairTallies::Pair met = m_tallies.met(pair.set);
        if (std::max(met.forward, met.backward) < m_ledger.least())
            continue;
        PairTallies::Pair counted = met;
        if (m_standings.anyPresent()) {
            counted = countPair(m_standings, first, pair.last);
            m_work.add(m_standings.places(first).size() + m_standings.places(pair.last).size());
        }
        const auto follow = [&](SplitMask split, std::uint32_t histories, std::uint32_t number) {
            return judge(m_ledger, m_work.meter(), {2, static_cast<std::uint32_t>(pair.set), split},
                         histories, [number] { return number; });
        };
        pair.backward = follow(1, met.backward, counted.backward);
        pair.forward = follow(2, met.forward, counted.forward);
    }
}

/// Chooses the later items of triples that may have a rule. Returns whether there are any.
bool RuleWalk::m_choosePartners() {
    const Level& pairs = m_sets.level(2);
    for (std::size_t i = 0; i < m_pairs.size(); ++i) {
        std::size_t other = i;
        for (std::size_t set = pairs.extensions[m_pairs[i].set];
             set < pairs.extensions[m_pairs[i].set + 1]; ++set) {
            while (m_pairs[other].last != m_sets.level(3).last[set])
                ++other;
            if (m_mayHaveRule(m_pairs[i].last, m_pairs[other].last))
                m_pairs[i].isNeeded = m_pairs[other].isNeeded = true;
        }
    }
    m_needed.clear();
    for (const Pair& pair : m_pairs)
        if (pair.isNeeded)
            m_needed.push_back({pair.last, pairs.count[pair.set]});
    return !m_needed.empty();
}

/// Whether a triple of the first item and these may have a rule, judging by its pairs.
bool RuleWalk::m_mayHaveRule(Rank second, Rank third) const {
    const std::uint32_t numbers[] = {0, m_rulePartners.number(second),
                                     m_rulePartners.number(third)};
    if (numbers[1] == RulePartners::NONE || numbers[2] == RulePartners::NONE)
        return false;
    for (SplitMask split = 1; split < allOf(3); ++split) {
        bool may = isProposed(split, 3, m_splits);
        for (std::size_t a = 0; a < 3 && may; ++a)
            for (std::size_t s = 0; s < 3; ++s)
                if ((split >> a & 1) == 0 && (split >> s & 1) != 0)
                    may = may && RulePartners::has(m_rulePartners.after(numbers[a]), numbers[s]);
        if (may)
            return true;
    }
    return false;
}

/// Keeps the pairs that are needed, and visits the larger sets.
void RuleWalk::m_visitPairs() {
    std::vector<Node>& nodes = m_nodesAt(2);
    for (const Pair& pair : m_pairs)
        nodes.push_back({pair.set, pair.last,
                         pair.isNeeded && pair.isLive()
                             ? m_counter->pair(pair.last, pair.forward, pair.backward)
                             : nullptr});
    m_visit(2, nodes);
}

std::vector<RuleWalk::Node>& RuleWalk::m_nodesAt(std::size_t size) {
    while (m_nodes.size() <= size)
        m_nodes.emplace_back();
    m_nodes[size].clear();
    return m_nodes[size];
}

/// Visits the extensions of a class of sets of `size` items.
void RuleWalk::m_visit(std::size_t size, const std::vector<Node>& nodes) {
    if (size == m_maxSize)
        return;
    const Level& level = m_sets.level(size);
    const Level& above = m_sets.level(size + 1);
    for (std::size_t node = 0; node + 1 < nodes.size(); ++node) {
        const std::size_t end = level.extensions[nodes[node].set + 1];
        std::size_t set = level.extensions[nodes[node].set];
        if (set == end)
            continue;
        m_markJoined(size + 1, set, end);
        const RuleCounter::Mark mark = m_counter->mark();
        std::vector<Node>& extended = m_nodesAt(size + 1);
        bool anyLive = false;
        for (std::size_t other = node; set < end; ++set) {
            const Rank item = above.last[set];
            while (nodes[other].last != item)
                ++other;
            const RuleCounter::Kept* const prefix = nodes[node].kept;
            const RuleCounter::Kept* const sibling = nodes[other].kept;
            const RuleCounter::Kept* made = nullptr;
            const bool isNeeded = m_isNeeded(size + 1, set);
            if (prefix != nullptr && (sibling == nullptr || prefix->cost <= sibling->cost))
                made = m_counter->extend(*prefix, {size + 1, set, item, size, isNeeded});
            else if (sibling != nullptr)
                made = m_counter->extend(*sibling,
                                         {size + 1, set, nodes[node].last, size - 1, isNeeded});
            extended.push_back({set, item, made});
            anyLive = anyLive || made != nullptr;
        }
        if (anyLive)
            m_visit(size + 1, extended);
        m_counter->rewind(mark);
    }
}

/// Marks those sets of the class [begin, end) whose last item extends another set of the class.
void RuleWalk::m_markJoined(std::size_t size, std::size_t begin, std::size_t end) {
    ++m_markings;
    if (size >= m_maxSize)
        return;
    const Level& level = m_sets.level(size);
    const Level& above = m_sets.level(size + 1);
    for (std::size_t set = level.extensions[begin]; set < level.extensions[end]; ++set)
        m_joined[at(above.last[set])] = m_markings;
}

/// Whether larger sets are made from a set of the class that m_markJoined last marked.
bool RuleWalk::m_isNeeded(std::size_t size, std::size_t set) const {
    const Level& level = m_sets.level(size);
    return size < m_maxSize && (level.extensions[set] < level.extensions[set + 1] ||
                                m_joined[at(level.last[set])] == m_markings);
}

}  // namespace quarvis::mining
