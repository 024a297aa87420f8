#include "moment_counter.hpp"

#include <algorithm>

namespace quarvis::mining {

bool MomentCounter::begin(Rank first, std::span<const Partner> partners) {
    m_columns.fill(first, partners);
    m_work.add(m_columns.cost());
    return true;
}

const RuleCounter::Kept* MomentCounter::pair(Rank partner, bool forward, bool backward) {
    const MomentColumns::Column& column = m_columns.of(partner);
    m_work.add(5 * column.size);
    Moments* const made = m_kept.take(1);
    *made = Moments();
    made->word = m_indices.take(column.size);
    made->allNew = m_bits.take(column.size);
    made->allRecent = m_bits.take(column.size);
    made->met = takeMet(2);
    std::uint64_t* const metForward = m_bits.take(column.size);
    std::uint64_t* const metBackward = m_bits.take(column.size);
    const std::uint32_t number = m_partners.number(partner);
    if (backward)
        keepPair(made->met, 1, metBackward, number, 0);
    if (forward)
        keepPair(made->met, 2, metForward, 0, number);
    keepAround(*made, 0, number);
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
    made->cost = kept;
    return made;
}

/// Finds the words that a set and a column share.
void MomentCounter::m_align(const Moments& from, const MomentColumns::Column& column) {
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
        // The set has all words, so the place of a word is its number.
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

/// The bits of a set in the words that it shares with the column. `words` is the number of words of
/// the set.
const std::uint64_t* MomentCounter::m_gather(const std::uint64_t* bits, std::size_t words) {
    if (m_shared.size() == words)
        return bits;
    m_gathered.resize(m_shared.size());
    for (std::size_t i = 0; i < m_shared.size(); ++i)
        m_gathered[i] = bits[m_shared[i]];
    return m_gathered.data();
}

const RuleCounter::Kept* MomentCounter::extend(const Kept& kept, const Extension& to) {
    const Moments& from = static_cast<const Moments&>(kept);
    m_work.add(from.met.rules);
    if (!findTries(from, to))
        return nullptr;
    m_align(from, m_columns.of(to.item));
    const std::size_t words = m_shared.size();
    m_work.add(from.words.size + words * (m_tries.size() + 4));
    if (words == 0)
        return nullptr;
    const Mark before = mark();
    Moments* const made = m_kept.take(1);
    *made = Moments();
    made->word = m_indices.take(words);
    for (std::size_t i = 0; i < words; ++i)
        made->word[i] = from.word[m_shared[i]];
    made->words.size = words;
    made->words.word = made->word;
    m_columns.words().describe(made->words, m_indices.take(words), m_bits.take(words));
    made->met = takeMet(m_tries.size());
    for (const Try& tried : m_tries) {
        const SplitSet rule{static_cast<std::uint32_t>(to.size), static_cast<std::uint32_t>(to.set),
                            tried.split};
        const std::uint64_t* const bits = tried.from == BEFORE_ALL  ? from.allNew
                                          : tried.from == AFTER_ALL ? from.allRecent
                                                                    : from.met.bits[tried.from];
        std::uint64_t* const met = m_bits.take(words);
        const std::uint32_t histories = m_columns.words().intersect(
            made->words, m_gather(bits, from.words.size),
            tried.isNew ? m_fresh.data() : m_recent.data(), met, m_single);
        if (judge(m_ledger, m_work.meter(), rule, histories,
                  [&] { return m_counted(*made, rule, met, histories); }))
            keepTried(made->met, tried, met, from, to.item);
        else
            m_bits.giveBack(words);
    }
    if (made->met.rules == 0 || !to.isNeeded) {
        rewind(before);
        return nullptr;
    }
    made->allNew = m_bits.take(words);
    made->allRecent = m_bits.take(words);
    for (std::size_t i = 0; i < words; ++i) {
        made->allNew[i] = from.allNew[m_shared[i]] & m_fresh[i];
        made->allRecent[i] = from.allRecent[m_shared[i]] & m_recent[i];
    }
    s_squeeze(*made);
    keepAround(*made, from, to.item);
    made->cost = made->words.size;
    return made;
}

/// The number of histories in which a rule counts: at some of the `moments` at which it is met, not
/// all of the antecedent is present. `met` is the number of histories in which the rule is met.
std::uint32_t MomentCounter::m_counted(const Moments& made, const SplitSet& rule,
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

/// Drops the words in which the set has no moments. The weights and tops are not moved along, since
/// nothing is counted with them any more.
void MomentCounter::s_squeeze(Moments& made) {
    std::size_t kept = 0;
    for (std::size_t word = 0; word < made.words.size; ++word) {
        std::uint64_t any = made.allNew[word] | made.allRecent[word];
        for (std::size_t rule = 0; rule < made.met.rules; ++rule)
            any |= made.met.bits[rule][word];
        if (any == 0)
            continue;
        if (kept != word) {
            made.word[kept] = made.word[word];
            made.allNew[kept] = made.allNew[word];
            made.allRecent[kept] = made.allRecent[word];
            for (std::size_t rule = 0; rule < made.met.rules; ++rule)
                made.met.bits[rule][kept] = made.met.bits[rule][word];
        }
        ++kept;
    }
    made.words.size = kept;
}

}  // namespace quarvis::mining
