#include <quarvis/mining/item_sets.hpp>

#include <algorithm>
#include <utility>

namespace quarvis::mining {

ItemSets::ItemSets(std::vector<Level> levels) : m_levels(std::move(levels)) {
    for ([[maybe_unused]] const Level& level : m_levels) {
        assert(std::is_sorted(level.prefix.begin(), level.prefix.end()));
        assert(level.extensions.size() == level.size() + 1);
    }
}

std::size_t ItemSets::size() const {
    std::size_t sum = 0;
    for (const Level& level : m_levels)
        sum += level.size();
    return sum;
}

void ItemSets::items(std::size_t size, std::size_t set, Rank* items) const {
    for (; size > 0; --size) {
        items[size - 1] = level(size).last[set];
        set = level(size).prefix[set];
    }
}

std::size_t ItemSets::find(std::span<const Rank> items) const {
    if (items.empty() || items.size() > levels())
        return NOT_FOUND;
    std::size_t begin = 0;
    std::size_t end = level(1).size();
    for (std::size_t size = 1;; ++size) {
        const Level& here = level(size);
        const auto first = here.last.begin() + static_cast<std::ptrdiff_t>(begin);
        const auto stop = here.last.begin() + static_cast<std::ptrdiff_t>(end);
        const auto found = std::lower_bound(first, stop, items[size - 1]);
        if (found == stop || *found != items[size - 1])
            return NOT_FOUND;
        const auto set = static_cast<std::size_t>(found - here.last.begin());
        if (size == items.size())
            return set;
        begin = here.extensions[set];
        end = here.extensions[set + 1];
    }
}

ItemSetCursor::ItemSetCursor(const ItemSets& sets) : m_sets(sets) {
    if (sets.levels() > 0)
        m_path.push_back({0, sets.level(1).size()});
}

/// Goes down from the next set of the deepest range to its first extension, and on until a set has
/// no extensions.
void ItemSetCursor::m_descend() {
    while (true) {
        const Level& level = m_sets.level(m_path.size());
        const std::size_t set = m_path.back().next;
        m_items.push_back(level.last[set]);
        const Range extensions{level.extensions[set], level.extensions[set + 1]};
        if (extensions.next == extensions.end)
            return;
        m_path.push_back(extensions);
    }
}

bool ItemSetCursor::next() {
    if (m_path.empty())
        return false;
    if (m_fresh) {
        m_fresh = false;
    } else {
        // The current set is done, and so are all sets that begin with it.
        m_items.pop_back();
        ++m_path.back().next;
    }
    if (m_path.back().next < m_path.back().end) {
        m_descend();
    } else {
        m_path.pop_back();
        if (m_path.empty())
            return false;
    }
    m_count = m_sets.level(m_path.size()).count[m_path.back().next];
    return true;
}

}  // namespace quarvis::mining
