#include "frequent_sets.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace quarvis::rule {

void Level::add(std::size_t prefixSet, Rank lastItem, std::uint32_t histories) {
    if (size() == std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many item sets of one size");
    prefix.push_back(static_cast<std::uint32_t>(prefixSet));
    last.push_back(lastItem);
    count.push_back(histories);
}

const Level& FrequentSets::add(Level level, std::vector<std::uint32_t> extensions) {
    if (!m_levels.empty())
        m_levels.back().extensions = std::move(extensions);
    m_levels.push_back(std::move(level));
    return m_levels.back();
}

void FrequentSets::items(std::size_t size, std::size_t set, Rank* items) const {
    for (; size > 0; --size) {
        items[size - 1] = level(size).last[set];
        set = level(size).prefix[set];
    }
}

std::uint32_t FrequentSets::count(std::span<const Rank> items) const {
    std::size_t begin = 0;
    std::size_t end = level(1).size();
    std::size_t set = 0;
    for (std::size_t size = 1; size <= items.size(); ++size) {
        if (size > levels())
            throw std::out_of_range("no such item set");
        const Level& at = level(size);
        const auto stop = at.last.begin() + static_cast<std::ptrdiff_t>(end);
        const auto found = std::lower_bound(at.last.begin() + static_cast<std::ptrdiff_t>(begin),
                                            stop, items[size - 1]);
        if (found == stop || *found != items[size - 1])
            throw std::out_of_range("no such item set");
        set = static_cast<std::size_t>(found - at.last.begin());
        if (size < items.size() && at.extensions.empty())
            throw std::out_of_range("no such item set");
        if (size < items.size()) {
            begin = at.extensions[set];
            end = at.extensions[set + 1];
        }
    }
    return level(items.size()).count[set];
}

}  // namespace quarvis::rule
