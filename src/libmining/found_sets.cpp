#include "found_sets.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

/// Finds where the extensions of the sets [sets.begin, sets.end) begin among sets with these
/// parents, which ascend.
void findBeginnings(const LargeVector<std::uint32_t>& parents, PartRange sets,
                    LargeVector<std::uint32_t>& beginnings, Step* step) {
    auto next = std::lower_bound(parents.begin(), parents.end(), sets.begin);
    for (std::size_t parent = sets.begin; parent < sets.end; ++parent) {
        if (step != nullptr)
            ask(*step, parent);
        while (next != parents.end() && *next < parent)
            ++next;
        beginnings[parent] = static_cast<std::uint32_t>(next - parents.begin());
    }
}

/// Where the extensions of each of `below` sets begin among sets with these parents, which ascend;
/// then an end.
LargeVector<std::uint32_t> beginningsOf(const LargeVector<std::uint32_t>& parents,
                                        std::size_t below, unsigned threads, Step* step) {
    LargeVector<std::uint32_t> beginnings(below + 1);
    const unsigned parts = threadsFor(below, threads);
    const auto find = [&](std::size_t part) {
        findBeginnings(parents, partOf(below + 1, part, parts), beginnings, step);
    };
    if (parts == 1)
        find(0);
    else
        workOnParts(parts, *step, find);
    return beginnings;
}

}  // namespace

void FoundSets::Level::grow(Step& step) {
    const auto move = [&step](auto& array) {
        std::remove_reference_t<decltype(array)> larger;
        larger.reserve(2 * array.size());
        for (std::size_t begin = 0; begin < array.size(); begin += ASKED_EVERY) {
            const std::size_t size = std::min(ASKED_EVERY, array.size() - begin);
            larger.insert(larger.end(), array.data() + begin, array.data() + begin + size);
            step.spend(0);
        }
        array.swap(larger);
    };
    move(parent);
    move(last);
    move(count);
}

void FoundSets::Level::resize(std::size_t sets) {
    if (sets >= std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many item sets of one size");
    parent.resize(sets);
    last.resize(sets);
    count.resize(sets);
}

void FoundSets::add(std::size_t size, std::size_t parent, WalkItem last, std::uint32_t count,
                    Step* step) {
    while (maxSize() < size)
        m_levels.emplace_back();
    Level& level = m_levels[size - 2];
    assert(level.parent.empty() || level.parent.back() <= parent);
    assert(level.parent.empty() || level.parent.back() < parent || level.last.back() < last);
    if (level.size() + 1 >= std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many item sets of one size");
    if (step != nullptr && level.size() == level.last.capacity() && level.size() >= ASKED_EVERY)
        level.grow(*step);
    level.parent.push_back(static_cast<std::uint32_t>(parent));
    level.last.push_back(last);
    level.count.push_back(count);
}

void FoundSets::append(const std::vector<Part>& parts, unsigned threads, Step& step) {
    /// Where a level of a part is copied to, and how far the places of its parents move.
    struct Target {
        std::size_t begin;
        std::size_t shift;
    };
    std::vector<std::vector<Target>> targets;
    const std::vector<std::size_t> before = sizes();
    std::vector<std::size_t> next = before;
    for (const Part& part : parts) {
        std::vector<Target>& levels = targets.emplace_back();
        std::size_t shift = 0;
        for (std::size_t i = 0; i < part.ends.size(); ++i) {
            const std::size_t begin = part.begin(i);
            next.resize(std::max(next.size(), i + 1));
            levels.push_back({next[i], shift});
            shift = begin == part.ends[i] ? 0 : next[i] - begin;
            next[i] += part.ends[i] - begin;
        }
    }
    while (next.size() > before.size() && next.back() == 0)
        next.pop_back();
    const auto copy = [&](std::size_t place) {
        const Part& part = parts[place];
        for (std::size_t i = 0; i < part.ends.size(); ++i) {
            const Level& from = part.from->m_levels[i];
            std::size_t target = targets[place][i].begin;
            for (std::size_t set = part.begin(i); set < part.ends[i]; ++set, ++target) {
                // The first touch of the target's pages makes copying slow.
                ask(step, set);
                m_levels[i].parent[target] =
                    from.parent[set] + static_cast<std::uint32_t>(targets[place][i].shift);
                m_levels[i].last[target] = from.last[set];
                m_levels[i].count[target] = from.count[set];
            }
        }
    };
    const auto resize = [this](const std::vector<std::size_t>& to) {
        m_levels.resize(to.size());
        for (std::size_t i = 0; i < to.size(); ++i)
            m_levels[i].resize(to[i]);
    };
    try {
        resize(next);
        workOn(
            parts.size(), threads, step, [&copy](unsigned) { return copy; }, [](std::size_t) {});
    } catch (...) {
        resize(before);
        throw;
    }
}

void FoundSets::addLevelOf(FoundSets&& other) {
    assert(other.m_levels.size() == m_levels.size() + 1);
    m_levels.push_back(std::move(other.m_levels.back()));
}

std::size_t FoundSets::size() const {
    std::size_t size = 0;
    for (const Level& level : m_levels)
        size += level.size();
    return size;
}

std::vector<std::size_t> FoundSets::sizes() const {
    std::vector<std::size_t> sizes;
    for (const Level& level : m_levels)
        sizes.push_back(level.size());
    return sizes;
}

void FoundSets::link(std::size_t items, unsigned threads, Step* step) {
    assert(threads == 1 || step != nullptr);
    if (m_levels.empty()) {
        m_pairBegin.assign(items + 1, 0);
        return;
    }
    m_pairBegin = beginningsOf(m_levels.front().parent, items, threads, step);
    for (std::size_t i = 0; i + 1 < m_levels.size(); ++i)
        if (m_levels[i].extensions.empty())
            m_levels[i].extensions =
                beginningsOf(m_levels[i + 1].parent, m_levels[i].size(), threads, step);
}

}  // namespace quarvis::mining
