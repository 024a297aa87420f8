#include "order_counter.hpp"

#include <algorithm>
#include <bit>
#include <cassert>

#include "weighted_bits.hpp"

namespace quarvis::mining {

bool OrderCounter::begin(Rank first, std::span<const Partner> partners) {
    const bool suits = m_columns.fill(first, partners);
    m_work.add(m_columns.cost());
    if (suits)
        for (std::vector<std::uint64_t>* lanes : {&m_before, &m_with, &m_after})
            lanes->resize(m_columns.words());
    return suits;
}

void OrderCounter::m_compare(const std::uint8_t* item, const std::uint8_t* set) {
    orderKernels().compare(item, set, m_columns.words(), m_before.data(), m_with.data(),
                           m_after.data());
}

std::uint32_t OrderCounter::m_intersect(const std::uint64_t* bits,
                                        const std::vector<std::uint64_t>& mask,
                                        std::uint64_t* result) const {
    return intersectWeighted(bits, mask.data(), nullptr, m_columns.weights(), m_columns.words(),
                             result);
}

/// The later one of two orders, by lane; ABSENT is later than all others.
std::uint8_t* OrderCounter::m_latest(const std::uint8_t* a, const std::uint8_t* b) {
    const std::size_t lanes = m_columns.words() * 64;
    std::uint8_t* const latest = m_orders.take(lanes);
    for (std::size_t lane = 0; lane < lanes; ++lane)
        latest[lane] = a[lane] < b[lane] ? b[lane] : a[lane];
    return latest;
}

const RuleCounter::Kept* OrderCounter::pair(Rank partner, bool forward, bool backward) {
    const std::size_t words = m_columns.words();
    m_work.add(8 * words);
    const std::uint8_t* const item = m_columns.of(partner);
    m_compare(item, m_columns.first());
    Set* const made = m_kept.take(1);
    *made = Set();
    made->latest = m_latest(item, m_columns.first());
    made->together = m_bits.take(words);
    std::copy_n(m_with.data(), words, made->together);
    made->met = takeMet(2);
    const auto copied = [&](const std::vector<std::uint64_t>& met) {
        std::uint64_t* const bits = m_bits.take(words);
        std::copy_n(met.data(), words, bits);
        return bits;
    };
    const std::uint32_t number = m_partners.number(partner);
    if (backward)
        keepPair(made->met, 1, copied(m_before), number, 0);
    if (forward)
        keepPair(made->met, 2, copied(m_after), 0, number);
    keepAround(*made, 0, number);
    made->cost = made->met.rules;
    return made;
}

const RuleCounter::Kept* OrderCounter::extend(const Kept& kept, const Extension& to) {
    const Set& from = static_cast<const Set&>(kept);
    m_work.add(from.met.rules);
    if (!findTries(from, to))
        return nullptr;
    const std::size_t words = m_columns.words();
    m_work.add(words * (m_tries.size() + 3) + 20);
    const std::uint8_t* const item = m_columns.of(to.item);
    m_compare(item, from.latest);
    const Mark before = mark();
    Met made = takeMet(m_tries.size());
    for (const Try& tried : m_tries) {
        const SplitSet rule{static_cast<std::uint32_t>(to.size), static_cast<std::uint32_t>(to.set),
                            tried.split};
        const std::uint64_t* const bits = tried.from == BEFORE_ALL  ? from.together
                                          : tried.from == AFTER_ALL ? m_after.data()
                                                                    : from.met.bits[tried.from];
        const std::vector<std::uint64_t>& mask = tried.from == AFTER_ALL ? m_after
                                                 : tried.isNew           ? m_with
                                                                         : m_before;
        std::uint64_t* const met = m_bits.take(words);
        const std::uint32_t histories = m_intersect(bits, mask, met);
        const auto counted = [&] {
            return m_standings.anyPresent() ? m_counted(rule, met, item, from.latest) : histories;
        };
        if (judge(m_ledger, m_work.meter(), rule, histories, counted))
            keepTried(made, tried, met, from, to.item);
        else
            m_bits.giveBack(words);
    }
    if (made.rules == 0 || !to.isNeeded) {
        rewind(before);
        return nullptr;
    }
    Set* const set = m_kept.take(1);
    *set = Set();
    set->latest = m_latest(item, from.latest);
    set->together = m_bits.take(words);
    for (std::size_t word = 0; word < words; ++word)
        set->together[word] = from.together[word] & m_with[word];
    set->met = made;
    keepAround(*set, from, to.item);
    set->cost = made.rules;
    return set;
}

/// The number of histories in which a rule counts: it is met, and not all of the antecedent is
/// present when the last items come.
std::uint32_t OrderCounter::m_counted(const SplitSet& rule, const std::uint64_t* met,
                                      const std::uint8_t* item, const std::uint8_t* set) {
    m_items.resize(rule.size);
    m_sets.items(rule.size, rule.set, m_items.data());
    std::size_t antecedent = 0;
    for (std::size_t i = 0; i < rule.size; ++i)
        if ((rule.split >> i & 1) == 0)
            m_items[antecedent++] = m_items[i];
    std::uint32_t counted = 0;
    for (std::size_t word = 0; word < m_columns.words(); ++word)
        for (std::uint64_t rest = met[word]; rest != 0; rest &= rest - 1) {
            const std::size_t lane = 64 * word + static_cast<std::size_t>(std::countr_zero(rest));
            const std::size_t moment = std::max(item[lane], set[lane]) - std::size_t{1};
            const bool present = std::all_of(
                m_items.begin(), m_items.begin() + static_cast<std::ptrdiff_t>(antecedent),
                [&](Rank rank) { return m_isPresent(m_columns.place(lane), rank, moment); });
            counted += present ? 0 : m_columns.weights()[word];
        }
    return counted;
}

/// Whether an item is present at a moment of the history of `first`. It is the item of that place,
/// or a later one.
bool OrderCounter::m_isPresent(const Standings::Place& first, Rank item, std::size_t moment) const {
    const std::size_t entry = m_standings.entryOf(first, item);
    const std::uint64_t* const present = m_standings.masks(first.history, entry).present;
    return (present[moment / 64] >> (moment % 64) & 1) != 0;
}

}  // namespace quarvis::mining
