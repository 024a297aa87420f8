#include <quarvis/mining/history_index.hpp>

#include "index_parts.hpp"

namespace quarvis::mining {

HistoryIndex HistoryIndex::slice(HistoryId begin, HistoryId end) const {
    assert(at(begin) <= at(end) && at(end) <= historyCount());
    HistoryIndex shard;
    shard.m_timeWidth = m_timeWidth;
    shard.m_minCount = m_minCount;
    shard.m_names = m_names;
    shard.m_nameBegin = m_nameBegin;
    shard.m_counts = m_counts;
    const std::size_t first = m_historyBegin[at(begin)];
    const std::size_t last = m_historyBegin[at(end)];
    shard.m_transactionCount = last - first;
    shard.m_historyBegin.clear();
    for (std::size_t history = at(begin); history <= at(end); ++history)
        shard.m_historyBegin.push_back(static_cast<std::uint32_t>(m_historyBegin[history] - first));
    const auto part = [first, last](const auto& array) {
        using Array = std::decay_t<decltype(array)>;
        return array.empty() ? Array()
                             : Array(array.begin() + static_cast<std::ptrdiff_t>(first),
                                     array.begin() + static_cast<std::ptrdiff_t>(last));
    };
    shard.m_times32 = part(m_times32);
    shard.m_times64 = part(m_times64);
    shard.m_itemBegin.clear();
    for (std::size_t place = first; place <= last; ++place)
        shard.m_itemBegin.push_back(m_itemBegin[place] - m_itemBegin[first]);
    shard.m_items.assign(m_items.begin() + m_itemBegin[first], m_items.begin() + m_itemBegin[last]);
    return shard;
}

std::size_t HistoryIndex::memory() const {
    const auto bytes = [](const auto& array) { return array.capacity() * sizeof(array[0]); };
    return m_names.capacity() + bytes(m_nameBegin) + bytes(m_counts) + bytes(m_historyBegin) +
           bytes(m_times32) + bytes(m_times64) + bytes(m_itemBegin) + bytes(m_items);
}

}  // namespace quarvis::mining
