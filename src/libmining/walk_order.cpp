#include "walk_order.hpp"

#include <algorithm>

namespace quarvis::mining {

namespace {

std::vector<std::uint32_t> countsOf(const HistoryIndex& index) {
    std::vector<std::uint32_t> counts;
    counts.reserve(index.itemCount());
    for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
        counts.push_back(index.count(Rank{rank}));
    return counts;
}

}  // namespace

WalkOrder::WalkOrder(const HistoryIndex& index, std::uint32_t minCount)
    : WalkOrder(countsOf(index), minCount) {}

WalkOrder::WalkOrder(std::span<const std::uint32_t> counts, std::uint32_t minCount)
    : m_items(counts.size(), NOT_WALKED) {
    for (std::uint32_t rank = 0; rank < counts.size(); ++rank)
        if (counts[rank] >= minCount)
            m_ranks.push_back(Rank{rank});
    std::stable_sort(m_ranks.begin(), m_ranks.end(),
                     [&counts](Rank a, Rank b) { return counts[at(a)] < counts[at(b)]; });
    m_counts.reserve(size());
    for (const Rank rank : m_ranks) {
        m_items[at(rank)] = WalkItem{static_cast<std::uint32_t>(m_counts.size())};
        m_counts.push_back(counts[at(rank)]);
    }
}

}  // namespace quarvis::mining
