#include "rule_counter.hpp"

#include <algorithm>
#include <functional>

namespace quarvis::mining {

bool RuleCounter::findTries(const Kept& from, const Extension& to) {
    m_tries.clear();
    const std::uint32_t number = m_partners.number(to.item);
    if (number == RulePartners::NONE)
        return false;
    const auto propose = [&](std::size_t rule, SplitMask split, bool isNew) {
        const SplitMask made = withBit(split, to.place, isNew);
        if (isProposed(made, to.size, m_splits))
            m_tries.push_back({rule, isNew, made});
    };
    const std::size_t words = m_partners.words();
    for (std::size_t rule = 0; rule < from.met.rules; ++rule) {
        if (RulePartners::has(from.met.toSubsequent + rule * words, number))
            propose(rule, from.met.splits[rule], true);
        if (RulePartners::has(from.met.toAntecedent + rule * words, number))
            propose(rule, from.met.splits[rule], false);
    }
    if (RulePartners::has(from.before, number))
        propose(BEFORE_ALL, allOf(to.size - 1), false);
    if (RulePartners::has(from.after, number))
        propose(AFTER_ALL, 0, true);
    return !m_tries.empty();
}

RuleCounter::Met RuleCounter::takeMet(std::size_t most) {
    Met met;
    met.splits = m_bits.take(most);
    met.bits = m_pointers.take(most);
    met.toAntecedent = m_bits.take(most * m_partners.words());
    met.toSubsequent = m_bits.take(most * m_partners.words());
    return met;
}

void RuleCounter::keepPair(Met& met, SplitMask split, std::uint64_t* bits, std::uint32_t antecedent,
                           std::uint32_t subsequent) {
    const std::size_t words = m_partners.words();
    std::copy_n(m_partners.before(subsequent), words, met.toAntecedent + met.rules * words);
    std::copy_n(m_partners.after(antecedent), words, met.toSubsequent + met.rules * words);
    met.splits[met.rules] = split;
    met.bits[met.rules++] = bits;
}

void RuleCounter::keepTried(Met& met, const Try& tried, std::uint64_t* bits, const Kept& from,
                            Rank item) {
    const std::size_t words = m_partners.words();
    const std::uint32_t number = m_partners.number(item);
    const std::uint64_t* toAntecedent = from.before;
    const std::uint64_t* toSubsequent = from.after;
    if (tried.from != BEFORE_ALL && tried.from != AFTER_ALL) {
        toAntecedent = from.met.toAntecedent + tried.from * words;
        toSubsequent = from.met.toSubsequent + tried.from * words;
    }
    std::uint64_t* const madeAntecedent = met.toAntecedent + met.rules * words;
    std::uint64_t* const madeSubsequent = met.toSubsequent + met.rules * words;
    const std::uint64_t* const before = m_partners.before(number);
    const std::uint64_t* const after = m_partners.after(number);
    for (std::size_t word = 0; word < words; ++word) {
        // With AFTER_ALL or BEFORE_ALL the item is all of one side.
        madeAntecedent[word] = tried.from == AFTER_ALL ? before[word]
                               : tried.isNew           ? toAntecedent[word] & before[word]
                                                       : toAntecedent[word];
        madeSubsequent[word] = tried.from == BEFORE_ALL ? after[word]
                               : tried.isNew            ? toSubsequent[word]
                                                        : toSubsequent[word] & after[word];
    }
    met.splits[met.rules] = tried.split;
    met.bits[met.rules++] = bits;
}

void RuleCounter::keepAround(Kept& made, std::uint32_t first, std::uint32_t second) {
    made.before = m_both(m_partners.before(first), m_partners.before(second));
    made.after = m_both(m_partners.after(first), m_partners.after(second));
}

void RuleCounter::keepAround(Kept& made, const Kept& from, Rank item) {
    const std::uint32_t number = m_partners.number(item);
    made.before = m_both(from.before, m_partners.before(number));
    made.after = m_both(from.after, m_partners.after(number));
}

/// The intersection of two bitsets.
const std::uint64_t* RuleCounter::m_both(const std::uint64_t* a, const std::uint64_t* b) {
    std::uint64_t* const both = m_bits.take(m_partners.words());
    std::transform(a, a + m_partners.words(), b, both, std::bit_and<>());
    return both;
}

}  // namespace quarvis::mining
