#include "group_walk.hpp"

#include <algorithm>

namespace quarvis::rule {

namespace {

constexpr Rank NO_ITEM = static_cast<Rank>(-1);

}  // namespace

GroupWalk::GroupWalk(const HistoryIndex& index, const FrequentSets& sets, std::size_t size)
    : m_index(index),
      m_sets(sets),
      m_level(sets.level(size)),
      m_items(size - 1, NO_ITEM),
      m_covers(size - 1),
      m_storage(size - 1),
      m_pairOf(index.itemCount(), NO_PAIR) {}

bool GroupWalk::next(std::size_t least) {
    do {
        m_begin = m_end;
        if (m_begin == m_level.size())
            return false;
        while (m_end < m_level.size() && m_level.prefix[m_end] == m_level.prefix[m_begin])
            ++m_end;
    } while (m_end - m_begin < least);
    m_enterPrefix();
    return true;
}

void GroupWalk::m_enterPrefix() {
    std::size_t set = m_level.prefix[m_begin];
    for (std::size_t size = m_items.size(); size > 0; --size) {
        const Level& level = m_sets.level(size);
        if (m_items[size - 1] != level.last[set]) {
            m_items[size - 1] = level.last[set];
            m_covered = std::min(m_covered, size - 1);
        }
        set = level.prefix[set];
    }
}

const Cover& GroupWalk::prefixCover() {
    for (; m_covered < m_items.size(); ++m_covered) {
        if (m_covered == 0)
            m_enterFirstItem();
        else if (m_covered == 1)
            m_covers[1] = m_pairCover(m_items[1]);
        else
            m_covers[m_covered] =
                intersect(m_covers[m_covered - 1], m_pairCover(m_items[m_covered]),
                          histories().size(), m_storage[m_covered]);
    }
    return m_covers.back();
}

void GroupWalk::m_enterFirstItem() {
    for (const Rank other : m_paired)
        m_pairOf[other] = NO_PAIR;
    m_paired.clear();
    m_pairs.clear();
    m_pairWords.clear();
    m_pairPositions.clear();

    const std::size_t size = histories().size();
    std::vector<std::uint64_t>& words = m_storage[0].words;
    words.assign((size + 63) / 64, ~std::uint64_t{0});
    if (size % 64 != 0)
        words.back() = (std::uint64_t{1} << (size % 64)) - 1;
    m_covers[0] = {static_cast<std::uint32_t>(size), words.data(), nullptr};
}

const Cover& GroupWalk::m_pairCover(Rank item) {
    if (m_pairOf[item] == NO_PAIR) {
        m_pairOf[item] = static_cast<std::uint32_t>(m_pairs.size());
        m_paired.push_back(item);
        m_pairs.push_back(m_makePair(item));
    }
    return m_pairs[m_pairOf[item]];
}

Cover GroupWalk::m_makePair(Rank item) {
    const std::size_t size = histories().size();
    Position* const end = m_findCommon(item);
    Cover pair;
    pair.count = static_cast<std::uint32_t>(end - m_common.data());
    if (keptAsBitmap(pair.count, size)) {
        const std::size_t count = (size + 63) / 64;
        std::uint64_t* const words = m_pairWords.take(count);
        std::fill_n(words, count, 0);
        for (const Position* at = m_common.data(); at != end; ++at)
            words[*at / 64] |= std::uint64_t{1} << (*at % 64);
        pair.words = words;
    } else {
        Position* const positions = m_pairPositions.take(pair.count);
        std::copy(m_common.data(), end, positions);
        pair.positions = positions;
    }
    return pair;
}

/// Leaves the positions of the histories that the item is in, too, in `m_common`; the end of them.
Position* GroupWalk::m_findCommon(Rank item) {
    const std::span<const HistoryId> own = histories();
    const auto size = static_cast<Position>(own.size());
    m_common.resize(size);
    Position* end = m_common.data();
    if (m_index.hasBitmap(item)) {
        for (Position at = 0; at < size; ++at) {
            *end = at;
            end += m_index.inBitmap(item, own[at]) ? 1 : 0;
        }
        return end;
    }
    const std::span<const HistoryId> others = m_index.histories(item);
    Position at = 0;
    auto other = others.begin();
    while (at < size && other != others.end()) {
        const HistoryId left = own[at];
        const HistoryId right = *other;
        *end = at;
        end += left == right ? 1 : 0;
        at += left <= right ? 1 : 0;
        other += right <= left ? 1 : 0;
    }
    return end;
}

}  // namespace quarvis::rule
