#include "walk_order.hpp"

#include <algorithm>

namespace quarvis::mining {

WalkOrder::WalkOrder(const HistoryIndex& index, std::uint32_t minCount)
    : m_items(index.itemCount(), NOT_WALKED) {
    for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
        if (index.count(Rank{rank}) >= minCount)
            m_ranks.push_back(Rank{rank});
    std::stable_sort(m_ranks.begin(), m_ranks.end(),
                     [&index](Rank a, Rank b) { return index.count(a) < index.count(b); });
    m_counts.reserve(size());
    for (const Rank rank : m_ranks) {
        m_items[at(rank)] = WalkItem{static_cast<std::uint32_t>(m_counts.size())};
        m_counts.push_back(index.count(rank));
    }
}

}  // namespace quarvis::mining
