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
      m_splits(splits),
      m_single(single),
      m_ledger(ledger),
      m_work(work),
      m_columns(standings),
      m_joined(standings.itemCount()) {}

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
    if (m_maxSize == 2 || !m_askColumns())
        return;
    m_columns.fill(item);
    m_work.add(m_columns.cost());
    const Marks marks = m_mark();
    m_visitPairs();
    m_release(marks);
    m_columns.clear();
}

/// Takes the rules of the pairs of an item to the ledger.
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
        const auto judge = [&](SplitMask split, Tally tally) {
            if (tally.met < m_ledger.least())
                return false;
            const SplitSet rule{2, static_cast<std::uint32_t>(pair.set), split};
            const bool followed = m_ledger.follows(rule, tally.met);
            if (m_ledger.isCounted(rule, tally.met))
                m_ledger.count(rule, tally);
            return followed;
        };
        pair.backward = judge(1, {met.backward, counted.backward});
        pair.forward = judge(2, {met.forward, counted.forward});
    }
}

/// Asks for columns for the items of triples that are to be looked at; whether there are any.
bool RuleWalk::m_askColumns() {
    const Level& pairs = m_sets.level(2);
    for (std::size_t i = 0; i < m_pairs.size(); ++i) {
        std::size_t other = i;
        for (std::size_t set = pairs.extensions[m_pairs[i].set];
             set < pairs.extensions[m_pairs[i].set + 1]; ++set) {
            while (m_pairs[other].last != m_sets.level(3).last[set])
                ++other;
            if (m_pairs[i].isLive() || m_pairs[other].isLive())
                m_pairs[i].isNeeded = m_pairs[other].isNeeded = true;
        }
    }
    bool any = false;
    for (const Pair& pair : m_pairs) {
        if (pair.isNeeded)
            m_columns.ask(pair.last, pairs.count[pair.set]);
        any = any || pair.isNeeded;
    }
    return any;
}

/// Makes the moments of the pairs, and goes on to larger sets.
void RuleWalk::m_visitPairs() {
    std::vector<Node>& nodes = m_nodesAt(2);
    for (const Pair& pair : m_pairs)
        nodes.push_back({pair.set, pair.last,
                         pair.isNeeded && pair.isLive()
                             ? m_pairMoments(pair.last, pair.forward, pair.backward)
                             : nullptr});
    m_visit(2, nodes);
}

/// The moments of a pair of which at least one rule is followed.
const RuleWalk::Moments* RuleWalk::m_pairMoments(Rank item, bool forward, bool backward) {
    const MomentColumns::Column& column = m_columns.of(item);
    m_work.add(5 * column.size);
    Moments* const made = m_moments.take(1);
    *made = Moments();
    made->word = m_indices.take(column.size);
    made->allNew = m_bits.take(column.size);
    made->allRecent = m_bits.take(column.size);
    made->splits = m_bits.take(2);
    made->met = m_pointers.take(2);
    std::uint64_t* const metForward = m_bits.take(column.size);
    std::uint64_t* const metBackward = m_bits.take(column.size);
    if (backward) {
        made->splits[made->rules] = 1;
        made->met[made->rules++] = metBackward;
    }
    if (forward) {
        made->splits[made->rules] = 2;
        made->met[made->rules++] = metForward;
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < column.size; ++i) {
        const std::uint32_t word =
            column.isDense() ? static_cast<std::uint32_t>(i) : column.word[i];
        const MomentColumns::Standing& first = m_columns.first().standing[word];
        const MomentColumns::Standing& last = column.standing[i];
        made->word[kept] = word;
        made->allNew[kept] = first.fresh & last.fresh;
        made->allRecent[kept] = first.recent & last.recent;
        metForward[kept] = forward ? first.recent & last.fresh : 0;
        metBackward[kept] = backward ? first.fresh & last.recent : 0;
        const bool any = (made->allNew[kept] | made->allRecent[kept] | metForward[kept] |
                          metBackward[kept]) != 0;
        kept += any ? 1 : 0;
    }
    made->words.size = kept;
    made->words.word = made->word;
    return made;
}

std::vector<RuleWalk::Node>& RuleWalk::m_nodesAt(std::size_t size) {
    while (m_nodes.size() <= size)
        m_nodes.emplace_back();
    m_nodes[size].clear();
    return m_nodes[size];
}

/// Looks at the extensions of `nodes`, which are of `size` items and share all but the last.
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
        const Marks marks = m_mark();
        std::vector<Node>& extended = m_nodesAt(size + 1);
        bool anyLive = false;
        for (std::size_t other = node; set < end; ++set) {
            const Rank item = above.last[set];
            while (nodes[other].last != item)
                ++other;
            const Moments* const prefix = nodes[node].moments;
            const Moments* const sibling = nodes[other].moments;
            const Moments* made = nullptr;
            if (prefix != nullptr &&
                (sibling == nullptr || prefix->words.size <= sibling->words.size))
                made = m_extend(*prefix, size, set, item, size);
            else if (sibling != nullptr)
                made = m_extend(*sibling, size, set, nodes[node].last, size - 1);
            extended.push_back({set, item, made});
            anyLive = anyLive || made != nullptr;
        }
        if (anyLive)
            m_visit(size + 1, extended);
        m_release(marks);
    }
}

/// Marks those of the sets [begin, end), which share all items but the last, whose last item
/// another of them is extended by.
void RuleWalk::m_markJoined(std::size_t size, std::size_t begin, std::size_t end) {
    ++m_markings;
    if (size >= m_maxSize)
        return;
    const Level& level = m_sets.level(size);
    const Level& above = m_sets.level(size + 1);
    for (std::size_t set = level.extensions[begin]; set < level.extensions[end]; ++set)
        m_joined[at(above.last[set])] = m_markings;
}

/// Whether larger sets are made from a set that m_markJoined was last called for.
bool RuleWalk::m_isNeeded(std::size_t size, std::size_t set) const {
    const Level& level = m_sets.level(size);
    return size < m_maxSize && (level.extensions[set] < level.extensions[set + 1] ||
                                m_joined[at(level.last[set])] == m_markings);
}

/// Finds the words that a set and a column share.
void RuleWalk::m_align(const Moments& from, const MomentColumns::Column& column) {
    const std::size_t words = from.words.size;
    const std::size_t most = column.isDense() ? words : std::min(words, column.size);
    m_shared.resize(most);
    m_fresh.resize(most);
    m_recent.resize(most);
    std::size_t n = 0;
    const auto share = [&](std::size_t place, const MomentColumns::Standing& standing) {
        m_shared[n] = static_cast<std::uint32_t>(place);
        m_fresh[n] = standing.fresh;
        m_recent[n] = standing.recent;
        n += (standing.fresh | standing.recent) != 0 ? 1 : 0;
    };
    if (column.isDense()) {
        for (std::size_t i = 0; i < words; ++i)
            share(i, column.standing[from.word[i]]);
    } else if (words == m_columns.words().words()) {
        // The set has all words, so each stands in its own place.
        for (std::size_t i = 0; i < column.size; ++i)
            share(column.word[i], column.standing[i]);
    } else {
        std::size_t j = 0;
        for (std::size_t i = 0; i < words && j < column.size;) {
            if (from.word[i] == column.word[j])
                share(i, column.standing[j]);
            const bool less = from.word[i] < column.word[j];
            const bool greater = column.word[j] < from.word[i];
            i += greater ? 0 : 1;
            j += less ? 0 : 1;
        }
    }
    m_shared.resize(n);
}

/// The bits of a set in the words that it shares with the column; `words` are all of the set.
const std::uint64_t* RuleWalk::m_gather(const std::uint64_t* bits, std::size_t words) {
    if (m_shared.size() == words)
        return bits;
    m_gathered.resize(m_shared.size());
    for (std::size_t i = 0; i < m_shared.size(); ++i)
        m_gathered[i] = bits[m_shared[i]];
    return m_gathered.data();
}

/// The moments of the set `set` of `size` + 1 items, from those of the set that lacks `item`, which
/// stands at `place` among its items; null when none of its rules is followed, or no larger set is
/// made from it. The rules are taken to the ledger on the way.
const RuleWalk::Moments* RuleWalk::m_extend(const Moments& from, std::size_t size, std::size_t set,
                                            Rank item, std::size_t place) {
    m_align(from, m_columns.of(item));
    const std::size_t words = m_shared.size();
    m_work.add(from.words.size + words * (2 * from.rules + 4));
    if (words == 0)
        return nullptr;
    const Marks marks = m_mark();
    Moments* const made = m_moments.take(1);
    *made = Moments();
    made->word = m_indices.take(words);
    for (std::size_t i = 0; i < words; ++i)
        made->word[i] = from.word[m_shared[i]];
    made->words.size = words;
    made->words.word = made->word;
    m_columns.words().describe(made->words, m_indices.take(words), m_bits.take(words));
    made->splits = m_bits.take(2 * from.rules + 2);
    made->met = m_pointers.take(2 * from.rules + 2);

    const auto tryRule = [&](const std::uint64_t* bits, SplitMask before, bool isNew) {
        const SplitSet rule{static_cast<std::uint32_t>(size + 1), static_cast<std::uint32_t>(set),
                            withBit(before, place, isNew)};
        if (!isProposed(rule.split, size + 1, m_splits))
            return;
        std::uint64_t* const met = m_bits.take(words);
        const std::uint32_t count = m_columns.words().intersect(
            made->words, bits, isNew ? m_fresh.data() : m_recent.data(), met, m_single);
        if (m_judge(*made, rule, met, count)) {
            made->splits[made->rules] = rule.split;
            made->met[made->rules++] = met;
        } else {
            m_bits.giveBack(words);
        }
    };
    for (std::size_t rule = 0; rule < from.rules; ++rule) {
        const std::uint64_t* const bits = m_gather(from.met[rule], from.words.size);
        tryRule(bits, from.splits[rule], true);
        tryRule(bits, from.splits[rule], false);
    }
    tryRule(m_gather(from.allNew, from.words.size), allOf(size), false);
    tryRule(m_gather(from.allRecent, from.words.size), 0, true);
    if (made->rules == 0 || !m_isNeeded(size + 1, set)) {
        m_release(marks);
        return nullptr;
    }
    made->allNew = m_bits.take(words);
    made->allRecent = m_bits.take(words);
    for (std::size_t i = 0; i < words; ++i) {
        made->allNew[i] = from.allNew[m_shared[i]] & m_fresh[i];
        made->allRecent[i] = from.allRecent[m_shared[i]] & m_recent[i];
    }
    s_squeeze(*made);
    return made;
}

/// Takes a rule to the ledger; whether it is followed.
bool RuleWalk::m_judge(const Moments& made, const SplitSet& rule, const std::uint64_t* moments,
                       std::uint32_t met) {
    if (met < m_ledger.least())
        return false;
    const bool followed = m_ledger.follows(rule, met);
    if (m_ledger.isCounted(rule, met))
        m_ledger.count(rule, {met, m_counted(made, rule, moments, met)});
    return followed;
}

/// The histories in which a rule that is met at some moments counts: at one of them at least, some
/// item of the antecedent is not present.
std::uint32_t RuleWalk::m_counted(const Moments& made, const SplitSet& rule,
                                  const std::uint64_t* moments, std::uint32_t met) {
    if (!m_standings.anyPresent())
        return met;
    const std::size_t words = made.words.size;
    m_items.resize(rule.size);
    m_sets.items(rule.size, rule.set, m_items.data());
    m_present.assign(moments, moments + words);
    for (std::size_t i = 0; i < rule.size; ++i) {
        if ((rule.split >> i & 1) != 0)
            continue;
        const MomentColumns::Column& column = i == 0 ? m_columns.first() : m_columns.of(m_items[i]);
        for (std::size_t word = 0; word < words; ++word) {
            if (m_present[word] == 0)
                continue;
            const std::size_t at = column.find(made.word[word]);
            m_present[word] &= at < column.size ? column.present[at] : 0;
        }
    }
    for (std::uint64_t& present : m_present)
        present = ~present;
    return m_columns.words().intersect(made.words, moments, m_present.data(), m_present.data(),
                                       m_single);
}

/// Drops the words in which the set has no moments. Weights and tops are those of a shorter life.
void RuleWalk::s_squeeze(Moments& made) {
    std::size_t kept = 0;
    for (std::size_t word = 0; word < made.words.size; ++word) {
        std::uint64_t any = made.allNew[word] | made.allRecent[word];
        for (std::size_t rule = 0; rule < made.rules; ++rule)
            any |= made.met[rule][word];
        if (any == 0)
            continue;
        if (kept != word) {
            made.word[kept] = made.word[word];
            made.allNew[kept] = made.allNew[word];
            made.allRecent[kept] = made.allRecent[word];
            for (std::size_t rule = 0; rule < made.rules; ++rule)
                made.met[rule][kept] = made.met[rule][word];
        }
        ++kept;
    }
    made.words.size = kept;
}

}  // namespace quarvis::mining
