#include "item_set_walk.hpp"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>

#include "bit_kernels.hpp"
#include "walk_costs.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

/// The histories of an item are far apart in memory, so they are prefetched this many ahead.
constexpr std::size_t AHEAD = 16;

std::size_t wordsOf(std::size_t bits) {
    return (bits + 63) / 64;
}

}  // namespace

ItemSetWalk::ItemSetWalk(const Baskets& baskets, std::uint32_t minCount, const Scope& scope,
                         Work& work)
    : m_baskets(baskets),
      m_minCount(minCount),
      m_scope(scope),
      m_work(work),
      m_delivered(baskets.itemCount()),
      m_member(baskets.itemCount(), NONE),
      m_kept(baskets.itemCount()),
      m_joined(baskets.itemCount()) {}

void ItemSetWalk::walk(WalkItem item, FoundSets& found) {
    assert(m_scope.maxSize > m_scope.knownSize);
    const Arena<std::uint64_t>::Mark mark = m_arena.mark();
    Class& partners = m_scope.knownSize == 1 ? m_frequentPartners(item) : m_knownPartners(item);
    if (m_scope.knownSize == 1) {
        partners.begin = found.count(2);
        m_work.meter().found(2, partners.items.size());
        for (std::size_t i = 0; i < partners.items.size(); ++i)
            found.add(2, at(item), partners.items[i], partners.counts[i], &m_work.step());
    }
    if (m_scope.maxSize > 2 && partners.items.size() > 1) {
        m_makeBitmaps(item, partners);
        if (m_scope.knownSize > 2)
            m_follow(partners, found);
        else
            m_extend(partners, found);
    }
    m_arena.release(mark);
}

void ItemSetWalk::count(WalkItem item, std::vector<std::uint32_t>& counts) {
    if (m_scope.knownSize == 1) {
        const Delivery delivery = m_deliver(item, 0);
        counts.insert(counts.end(), m_delivered.begin() + static_cast<std::ptrdiff_t>(at(item)) + 1,
                      m_delivered.end());
        m_forDelivered(item, delivery, [](WalkItem, std::uint32_t& count) { count = 0; });
        return;
    }
    const Arena<std::uint64_t>::Mark mark = m_arena.mark();
    Class& partners = m_knownPartners(item);
    if (partners.items.size() > 1) {
        m_makeBitmaps(item, partners);
        m_followAndCount(partners, counts);
    }
    m_arena.release(mark);
}

/// Counts each later item in the histories of `item`. Stops with incomplete counts as soon as no
/// later item can be in `least` of these histories.
ItemSetWalk::Delivery ItemSetWalk::m_deliver(WalkItem item, std::uint32_t least) {
    const std::span<const std::uint32_t> places = m_baskets.places(item);
    const std::size_t later = m_delivered.size() - at(item) - 1;
    Delivery delivery{0, false, places.size() < least};
    if (delivery.isVain)
        return delivery;
    // A frequent partner is missing from no more histories than this.
    const std::size_t spare = places.size() - least;
    std::size_t check = spare + walk_costs::firstCheck(least);
    std::size_t steps = 0;
    for (std::size_t history = 0; history < places.size(); ++history) {
        if (history == check && walk_costs::scanningPays(later, steps)) {
            const auto enough = static_cast<std::uint32_t>(history - spare);
            const auto begin = m_delivered.begin() + static_cast<std::ptrdiff_t>(at(item)) + 1;
            delivery.isVain = std::none_of(begin, m_delivered.end(), [enough](std::uint32_t count) {
                return count >= enough;
            });
            if (delivery.isVain)
                break;
            check += check - spare;
        }
        if (history + AHEAD < places.size())
            __builtin_prefetch(m_baskets.after(places[history + AHEAD]));
        const WalkItem* other = m_baskets.after(places[history]);
        const WalkItem* const first = other;
        for (; *other != Baskets::END; ++other)
            ++m_delivered[at(*other)];
        steps += static_cast<std::size_t>(other - first);
        delivery.histories = history + 1;
    }
    delivery.isDense = walk_costs::scanningPays(later, steps);
    m_work.add(walk_costs::delivery(steps, delivery.histories));
    return delivery;
}

/// Calls `visit` with each later item that was counted, and its counter. If the delivery is dense,
/// items ascend. If not, they come in no order, and come again unless `visit` sets the counter to
/// 0.
template <class Visit>
void ItemSetWalk::m_forDelivered(WalkItem item, const Delivery& delivery, Visit visit) {
    if (delivery.isDense) {
        for (std::size_t other = at(item) + 1; other < m_delivered.size(); ++other)
            if (m_delivered[other] != 0)
                visit(WalkItem{static_cast<std::uint32_t>(other)}, m_delivered[other]);
        return;
    }
    const std::span<const std::uint32_t> places = m_baskets.places(item);
    for (const std::uint32_t place : places.first(delivery.histories))
        for (const WalkItem* other = m_baskets.after(place); *other != Baskets::END; ++other)
            if (m_delivered[at(*other)] != 0)
                visit(*other, m_delivered[at(*other)]);
}

ItemSetWalk::Class& ItemSetWalk::m_emptyClass(std::size_t size) {
    while (m_classes.size() <= size)
        m_classes.emplace_back();
    Class& members = m_classes[size];
    members.size = size;
    members.items.clear();
    members.counts.clear();
    return members;
}

ItemSetWalk::Class& ItemSetWalk::m_frequentPartners(WalkItem item) {
    Class& partners = m_emptyClass(2);
    const Delivery delivery = m_deliver(item, m_minCount);
    if (m_minCount == 0)
        for (std::size_t other = at(item) + 1; other < m_delivered.size(); ++other) {
            partners.items.push_back(WalkItem{static_cast<std::uint32_t>(other)});
            partners.counts.push_back(m_delivered[other]);
        }
    std::vector<std::pair<WalkItem, std::uint32_t>>& frequent = m_frequent;
    frequent.clear();
    m_forDelivered(item, delivery, [&](WalkItem other, std::uint32_t& count) {
        if (count >= m_minCount && !delivery.isVain)
            frequent.emplace_back(other, count);
        count = 0;
    });
    if (m_minCount == 0)
        return partners;
    if (!delivery.isDense)
        std::sort(frequent.begin(), frequent.end());
    for (const auto& [other, count] : frequent) {
        partners.items.push_back(other);
        partners.counts.push_back(count);
    }
    return partners;
}

ItemSetWalk::Class& ItemSetWalk::m_knownPartners(WalkItem item) {
    Class& partners = m_emptyClass(2);
    const std::size_t begin = m_scope.known->pairBegin()[at(item)];
    const std::size_t end = m_scope.known->pairBegin()[at(item) + 1];
    partners.begin = begin;
    for (std::size_t pair = begin; pair < end; ++pair) {
        partners.items.push_back(m_scope.known->level(2).last[pair]);
        partners.counts.push_back(m_scope.known->level(2).count[pair]);
    }
    return partners;
}

/// Makes the bitmap of each partner over the histories of the first item.
void ItemSetWalk::m_makeBitmaps(WalkItem item, Class& partners) {
    const std::span<const std::uint32_t> places = m_baskets.places(item);
    partners.words = wordsOf(places.size());
    const std::size_t size = partners.items.size() * partners.words;
    partners.bitmaps = m_arena.take(size);
    std::fill_n(partners.bitmaps, size, 0);
    m_work.add(size);
    for (std::size_t i = 0; i < partners.items.size(); ++i)
        m_member[at(partners.items[i])] = static_cast<std::uint32_t>(i * partners.words);
    std::size_t steps = 0;
    for (std::size_t history = 0; history < places.size(); ++history) {
        const std::uint64_t bit = std::uint64_t{1} << (history % 64);
        std::uint64_t* const word = partners.bitmaps + history / 64;
        if (history + AHEAD < places.size())
            __builtin_prefetch(m_baskets.after(places[history + AHEAD]));
        const WalkItem* other = m_baskets.after(places[history]);
        const WalkItem* const first = other;
        for (; *other != Baskets::END; ++other)
            if (m_member[at(*other)] != NONE)
                word[m_member[at(*other)]] |= bit;
        steps += static_cast<std::size_t>(other - first);
    }
    m_work.add(walk_costs::delivery(steps, places.size()));
    for (const WalkItem other : partners.items)
        m_member[at(other)] = NONE;
}

/// Makes the class of a member's known extensions. Bitmaps are made only for two extensions or
/// more.
ItemSetWalk::Class& ItemSetWalk::m_followed(const Class& members, std::size_t member) {
    Class& extended = m_emptyClass(members.size + 1);
    assert(members.size < m_scope.knownSize);
    const FoundSets::Level& level = m_scope.known->level(members.size);
    const FoundSets::Level& above = m_scope.known->level(members.size + 1);
    const std::size_t set = members.begin + member;
    extended.begin = level.extensions[set];
    extended.words = members.words;
    const std::size_t end = level.extensions[set + 1];
    if (end - extended.begin < 2)
        return extended;
    extended.bitmaps = m_arena.take((end - extended.begin) * members.words);
    std::uint64_t* target = extended.bitmaps;
    std::size_t other = member;
    for (std::size_t extension = extended.begin; extension < end; ++extension) {
        const WalkItem item = above.last[extension];
        while (members.items[other] != item) {
            ++other;
            assert(other < members.items.size());
        }
        extended.items.push_back(item);
        extended.counts.push_back(above.count[extension]);
        for (std::size_t word = 0; word < members.words; ++word)
            *target++ = members.bitmap(member)[word] & members.bitmap(other)[word];
    }
    m_work.add(extended.items.size() * (members.words + 4));
    // The known count is a sum over all shards, so the histories of this one are counted here.
    std::size_t histories = 0;
    for (std::size_t word = 0; word < members.words; ++word)
        histories += static_cast<std::size_t>(std::popcount(members.bitmap(member)[word]));
    m_shrink(members.bitmap(member), histories, extended);
    return extended;
}

void ItemSetWalk::m_follow(const Class& members, FoundSets& found) {
    if (members.size == m_scope.knownSize)
        return m_extend(members, found);
    for (std::size_t member = 0; member + 1 < members.items.size(); ++member) {
        const Arena<std::uint64_t>::Mark mark = m_arena.mark();
        const Class& extended = m_followed(members, member);
        if (extended.items.size() > 1)
            m_follow(extended, found);
        m_arena.release(mark);
    }
}

void ItemSetWalk::m_followAndCount(const Class& members, std::vector<std::uint32_t>& counts) {
    for (std::size_t member = 0; member + 1 < members.items.size(); ++member) {
        if (members.size == m_scope.knownSize) {
            m_countJoins(members, member);
            counts.insert(
                counts.end(), m_joined.begin(),
                m_joined.begin() + static_cast<std::ptrdiff_t>(members.items.size() - member - 1));
            continue;
        }
        const Arena<std::uint64_t>::Mark mark = m_arena.mark();
        const Class& extended = m_followed(members, member);
        if (extended.items.size() > 1)
            m_followAndCount(extended, counts);
        m_arena.release(mark);
    }
}

/// Counts the joins of a member with each later one, into m_joined.
void ItemSetWalk::m_countJoins(const Class& members, std::size_t member) {
    const std::size_t later = members.items.size() - member - 1;
    bitKernels().count(members.bitmap(member), members.bitmap(member + 1), later, members.words,
                       m_joined.data());
    m_work.add(walk_costs::joins(later, members.words));
}

/// Joins each member with each later one, adds the frequent joins to `found`, and extends their
/// classes.
void ItemSetWalk::m_extend(const Class& members, FoundSets& found) {
    assert(std::is_sorted(members.items.begin(), members.items.end()));
    assert(members.items.size() == members.counts.size());
    if (members.size + 1 == m_scope.maxSize)
        return m_extendLast(members, found);
    for (std::size_t member = 0; member + 1 < members.items.size(); ++member) {
        const Arena<std::uint64_t>::Mark mark = m_arena.mark();
        const std::size_t later = members.items.size() - member - 1;
        Class& extended = m_emptyClass(members.size + 1);
        extended.words = members.words;
        extended.bitmaps = m_arena.take(later * members.words);
        const std::size_t kept = bitKernels().join(
            members.bitmap(member), members.bitmap(member + 1), later, members.words, m_minCount,
            extended.bitmaps, m_kept.data(), m_joined.data());
        m_arena.giveBack((later - kept) * members.words);
        m_work.add(walk_costs::joins(later, members.words));
        extended.begin = found.count(extended.size);
        m_work.add(kept * walk_costs::FOUND);
        m_work.meter().found(extended.size, kept);
        for (std::size_t i = 0; i < kept; ++i) {
            const WalkItem item = members.items[member + 1 + m_kept[i]];
            extended.items.push_back(item);
            extended.counts.push_back(m_joined[i]);
            found.add(extended.size, members.begin + member, item, m_joined[i], &m_work.step());
        }
        if (kept > 1) {
            m_shrink(members.bitmap(member), members.counts[member], extended);
            m_extend(extended, found);
        }
        m_arena.release(mark);
    }
}

/// The same for joins of the greatest size, whose bitmaps are not needed.
void ItemSetWalk::m_extendLast(const Class& members, FoundSets& found) {
    for (std::size_t member = 0; member + 1 < members.items.size(); ++member) {
        m_countJoins(members, member);
        for (std::size_t i = 0; i + member + 1 < members.items.size(); ++i)
            if (m_joined[i] >= m_minCount) {
                m_work.meter().found(members.size + 1, 1);
                found.add(members.size + 1, members.begin + member, members.items[member + 1 + i],
                          m_joined[i], &m_work.step());
            }
    }
}

/// Rebuilds the bitmaps of a class over the histories of `cover` alone, those that hold its prefix,
/// if the joins of the class save more than that costs.
void ItemSetWalk::m_shrink(const std::uint64_t* cover, std::size_t histories, Class& members) {
    const std::size_t words = members.words;
    const std::size_t less = wordsOf(histories);
    assert(less <= words);
    if (!walk_costs::shrinkingPays(members.items.size(), words, less, histories))
        return;
    m_positions.clear();
    for (std::size_t word = 0; word < words; ++word)
        for (std::uint64_t bits = cover[word]; bits != 0; bits &= bits - 1)
            m_positions.push_back(static_cast<std::uint32_t>(
                word * 64 + static_cast<std::size_t>(std::countr_zero(bits))));
    // Bitmaps become shorter, so none is overwritten before it is read.
    for (std::size_t member = 0; member < members.items.size(); ++member) {
        const std::uint64_t* const from = members.bitmap(member);
        std::uint64_t* target = members.bitmaps + member * less;
        for (std::size_t begin = 0; begin < histories; begin += 64) {
            const std::size_t end = std::min(begin + 64, histories);
            std::uint64_t bits = 0;
            for (std::size_t i = begin; i < end; ++i)
                bits |= (from[m_positions[i] / 64] >> (m_positions[i] % 64) & 1) << (i - begin);
            *target++ = bits;
        }
    }
    m_work.add(members.items.size() * histories);
    members.words = less;
}

}  // namespace quarvis::mining
