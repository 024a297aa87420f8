#include "set_counts.hpp"

#include <algorithm>
#include <limits>

namespace binding {

using quarvis::mining::at;
using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::Rank;

SetCounts::SetCounts(const HistoryIndex& index) : m_begin(index.itemCount() + 1) {
    for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
        m_begin[rank + 1] = m_begin[rank] + index.count(Rank{rank});
    m_histories.resize(m_begin.back());
    std::vector<std::size_t> next(m_begin.begin(), m_begin.end() - 1);
    std::vector<std::uint32_t> last(index.itemCount(), std::numeric_limits<std::uint32_t>::max());
    for (std::uint32_t history = 0; history < index.historyCount(); ++history)
        for (std::size_t place = index.firstTransaction(HistoryId{history});
             place < index.endTransaction(HistoryId{history}); ++place)
            for (const Rank item : index.items(place))
                if (last[at(item)] != history) {
                    last[at(item)] = history;
                    m_histories[next[at(item)]++] = history;
                }
}

std::span<const std::uint32_t> SetCounts::m_historiesOf(Rank item) const {
    return std::span(m_histories)
        .subspan(m_begin[at(item)], m_begin[at(item) + 1] - m_begin[at(item)]);
}

std::uint32_t SetCounts::count(std::span<const Rank> items) {
    const Rank rarest = *std::min_element(items.begin(), items.end(), [this](Rank a, Rank b) {
        return m_historiesOf(a).size() < m_historiesOf(b).size();
    });
    const std::span first = m_historiesOf(rarest);
    m_common.assign(first.begin(), first.end());
    for (const Rank item : items) {
        if (item == rarest)
            continue;
        const std::span others = m_historiesOf(item);
        const auto end = std::set_intersection(m_common.begin(), m_common.end(), others.begin(),
                                               others.end(), m_common.begin());
        m_common.erase(end, m_common.end());
    }
    return static_cast<std::uint32_t>(m_common.size());
}

}  // namespace binding
