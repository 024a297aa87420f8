#include "candidates.hpp"

#include <cassert>
#include <utility>

namespace quarvis::mining {

Candidates::Candidates(FoundSets& found, std::size_t items, std::uint32_t minCount,
                       std::size_t block)
    : m_found(found),
      m_items(items),
      m_minCount(minCount),
      m_block(block),
      m_size(found.maxSize() + 1) {}

/// Calls `visit(set, end)` for each set of the level below that begins with a first item and makes
/// candidates. The sets [set + 1, end) are the later ones of its class.
template <class Visit>
void Candidates::m_forEach(std::size_t item, Visit visit) const {
    const std::size_t size = m_size - 1;
    std::size_t begin = m_found.pairBegin()[item];
    std::size_t end = m_found.pairBegin()[item + 1];
    for (std::size_t below = 2; below < size; ++below) {
        begin = m_found.level(below).extensions[begin];
        end = m_found.level(below).extensions[end];
    }
    const LargeVector<std::uint32_t>& parents = m_found.level(size).parent;
    while (begin < end) {
        std::size_t next = begin;
        while (next < end && parents[next] == parents[begin])
            ++next;
        for (std::size_t set = begin; set + 1 < next; ++set)
            visit(set, next);
        begin = next;
    }
}

std::size_t Candidates::m_countOf(std::size_t item) const {
    if (m_size == 2)
        return m_items - item - 1;
    std::size_t sum = 0;
    m_forEach(item, [&sum](std::size_t set, std::size_t end) { sum += end - set - 1; });
    return sum;
}

bool Candidates::next() {
    m_begin = m_end;
    m_count = 0;
    while (m_end < m_items && m_count < m_block)
        m_count += m_countOf(m_end++);
    return m_begin < m_end;
}

std::size_t Candidates::prune(const std::vector<std::uint32_t>& counts) {
    assert(counts.size() == m_count);
    const std::size_t before = m_kept.count(m_size);
    std::size_t candidate = 0;
    for (std::size_t item = m_begin; item < m_end; ++item) {
        if (m_size == 2) {
            for (std::size_t other = item + 1; other < m_items; ++other, ++candidate)
                if (counts[candidate] >= m_minCount)
                    m_kept.add(2, item, WalkItem{static_cast<std::uint32_t>(other)},
                               counts[candidate]);
            continue;
        }
        m_forEach(item, [&](std::size_t set, std::size_t end) {
            for (std::size_t other = set + 1; other < end; ++other, ++candidate)
                if (counts[candidate] >= m_minCount)
                    m_kept.add(m_size, set, m_found.level(m_size - 1).last[other],
                               counts[candidate]);
        });
    }
    return m_kept.count(m_size) - before;
}

bool Candidates::finish() {
    if (m_kept.count(m_size) == 0)
        return false;
    m_found.addLevelOf(std::move(m_kept));
    m_found.link(m_items);
    return true;
}

}  // namespace quarvis::mining
