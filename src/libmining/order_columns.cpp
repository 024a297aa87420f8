#include "order_columns.hpp"

#include <bit>
#include <cassert>

namespace quarvis::mining {

namespace {

/// The histories of an item are far apart in memory, so they are prefetched this many ahead.
constexpr std::size_t AHEAD = 8;

/// The greatest number of lanes for each history that two items share. Comparing this many lanes
/// costs as much as a history costs in `MomentColumns`.
constexpr std::size_t MOST_LANES = 64;

}  // namespace

bool OrderColumns::fill(Rank first, std::span<const RuleCounter::Partner> partners) {
    m_cost = 0;
    if (!m_layOut(first, partners))
        return false;
    for (const Rank item : m_numbered)
        m_numbers[at(item)] = NONE;
    m_numbered.assign(1, first);
    for (const RuleCounter::Partner& partner : partners)
        m_numbered.push_back(partner.item);
    for (std::uint32_t number = 0; number < m_numbered.size(); ++number)
        m_numbers[at(m_numbered[number])] = number;
    m_orders.assign(m_numbered.size() * words() * 64, ABSENT);
    const std::span<const Standings::Place> places = m_standings.places(first);
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (i + AHEAD < places.size())
            m_standings.prefetchOrder(places[i + AHEAD].entry);
        m_fillHistory(places[i]);
    }
    m_cost += m_orders.size() / 32;
    return true;
}

/// Lays out the lanes, digit by digit of the weights. Returns what `fill` returns.
bool OrderColumns::m_layOut(Rank first, std::span<const RuleCounter::Partner> partners) {
    std::array<std::size_t, 32> lanes{};
    for (const Standings::Place& place : m_standings.places(first)) {
        if (m_standings.words(place.history) > Standings::ORDERED_WORDS)
            return false;
        for (std::uint32_t rest = m_standings.weight(place.history); rest != 0; rest &= rest - 1)
            ++lanes[static_cast<std::size_t>(std::countr_zero(rest))];
    }
    m_cost += m_standings.places(first).size();
    std::size_t all = 0;
    for (const std::size_t number : lanes)
        all += number;
    std::size_t shared = 0;
    for (const RuleCounter::Partner& partner : partners)
        shared += partner.histories;
    if (all * partners.size() > MOST_LANES * shared)
        return false;
    m_weights.clear();
    for (std::size_t digit = 0; digit < lanes.size(); ++digit) {
        m_next[digit] = words() * 64;
        m_weights.resize(words() + (lanes[digit] + 63) / 64, std::uint32_t{1} << digit);
    }
    m_places.resize(words() * 64);
    return true;
}

void OrderColumns::m_fillHistory(const Standings::Place& place) {
    const std::size_t after = m_standings.endEntry(place.history) - place.entry;
    m_cost += after + 2;
    if (m_hits.size() < after)
        m_hits.resize(2 * after);
    std::size_t hits = 0;
    for (std::size_t entry = 1; entry < after; ++entry) {
        const std::uint32_t number = m_numbers[at(m_standings.item(place.entry + entry))];
        m_hits[hits] = {number, m_standings.order(place.entry + entry)};
        hits += number != NONE ? 1 : 0;
    }
    if (hits < 2)
        return;
    m_cost += 2 * hits;
    const std::size_t lanes = words() * 64;
    for (std::uint32_t rest = m_standings.weight(place.history); rest != 0; rest &= rest - 1) {
        const std::size_t lane = m_next[static_cast<std::size_t>(std::countr_zero(rest))]++;
        m_places[lane] = place;
        m_orders[lane] = m_standings.order(place.entry);
        for (std::size_t i = 0; i < hits; ++i)
            m_orders[m_hits[i].number * lanes + lane] = m_hits[i].order;
    }
}

}  // namespace quarvis::mining
