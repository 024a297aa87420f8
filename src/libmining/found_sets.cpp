#include "found_sets.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

/// After so many sets that are copied the step is asked whether to end.
constexpr std::size_t ASKED_EVERY = 1 << 16;

/// Where the extensions of `below` sets begin among sets with these parents, and an end.
LargeVector<std::uint32_t> beginnings(const LargeVector<std::uint32_t>& parents,
                                      std::size_t below) {
    LargeVector<std::uint32_t> begin(below + 1, 0);
    for (const std::uint32_t parent : parents)
        ++begin[parent + 1];
    std::partial_sum(begin.begin(), begin.end(), begin.begin());
    return begin;
}

/// The item sets of one size as tuples of ascending ranks, one after the other.
struct Tuples {
    std::size_t size = 0;
    LargeVector<Rank> ranks;

    const Rank* operator[](std::size_t set) const { return &ranks[set * size]; }
};

/// The tuples of a level from those of the level below.
Tuples extended(const Tuples& below, const FoundSets::Level& level, const WalkOrder& order,
                unsigned threads, Step& step) {
    Tuples tuples{below.size + 1, LargeVector<Rank>((below.size + 1) * level.size())};
    workOnParts(threads, step, [&](std::size_t part) {
        const auto [firstSet, endSet] = partOf(level.size(), part, threads);
        Rank* target = tuples.ranks.data() + firstSet * tuples.size;
        for (std::size_t set = firstSet; set < endSet; ++set) {
            const Rank* const prefix = below[level.parent[set]];
            const Rank* const end = prefix + below.size;
            const Rank last = order.rank(level.last[set]);
            const Rank* const place =
                std::find_if(prefix, end, [last](Rank rank) { return rank > last; });
            target = std::copy(prefix, place, target);
            *target++ = last;
            target = std::copy(place, end, target);
        }
    });
    return tuples;
}

/// Sorts the numbers of the tuples lexicographically: by some items at a time, from the last to the
/// first, each time by counting; or by comparing where there are few tuples beside the items.
std::vector<std::uint32_t> sortedTuples(const Tuples& tuples, std::size_t number,
                                        std::size_t items) {
    std::vector<std::uint32_t> sorted(number);
    std::iota(sorted.begin(), sorted.end(), 0U);
    if (number < items / 4) {
        std::sort(sorted.begin(), sorted.end(), [&tuples](std::uint32_t a, std::uint32_t b) {
            return std::lexicographical_compare(tuples[a], tuples[a] + tuples.size, tuples[b],
                                                tuples[b] + tuples.size);
        });
        return sorted;
    }
    // So many counters stay in a cache.
    constexpr std::size_t most = 1 << 14;
    std::vector<std::uint32_t> keys(number);
    std::vector<std::uint32_t> other(number);
    std::vector<std::uint32_t> next;
    for (std::size_t end = tuples.size; end > 0;) {
        std::size_t begin = end - 1;
        std::size_t range = items;
        for (; begin > 0 && range * items <= most; --begin)
            range *= items;
        next.assign(range + 1, 0);
        for (std::size_t set = 0; set < number; ++set) {
            std::size_t key = 0;
            for (std::size_t i = begin; i < end; ++i)
                key = key * items + at(tuples[set][i]);
            keys[set] = static_cast<std::uint32_t>(key);
            ++next[key + 1];
        }
        std::partial_sum(next.begin(), next.end(), next.begin());
        for (const std::uint32_t set : sorted)
            other[next[keys[set]]++] = set;
        sorted.swap(other);
        end = begin;
    }
    return sorted;
}

/// The items as sets, in the order of their ranks.
Level firstLevel(const std::vector<std::uint32_t>& sorted, const WalkOrder& order) {
    Level level;
    for (const std::uint32_t item : sorted) {
        level.prefix.push_back(0);
        level.last.push_back(order.rank(WalkItem{item}));
        level.count.push_back(order.count(WalkItem{item}));
    }
    return level;
}

/// A level in the order of its tuples, which tell the place of each prefix in the level below.
Level orderedLevel(const LargeVector<std::uint32_t>& counts, const Tuples& tuples,
                   const std::vector<std::uint32_t>& sorted, const Tuples& below,
                   const std::vector<std::uint32_t>& sortedBelow) {
    Level made;
    made.prefix.reserve(counts.size());
    made.last.reserve(counts.size());
    made.count.reserve(counts.size());
    std::uint32_t prefix = 0;
    for (const std::uint32_t set : sorted) {
        const Rank* const tuple = tuples[set];
        while (!std::equal(tuple, tuple + below.size, below[sortedBelow[prefix]])) {
            ++prefix;
            assert(prefix < sortedBelow.size());
        }
        made.prefix.push_back(prefix);
        made.last.push_back(tuple[below.size]);
        made.count.push_back(counts[set]);
    }
    return made;
}

}  // namespace

void FoundSets::Level::resize(std::size_t sets) {
    if (sets >= std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many item sets of one size");
    parent.resize(sets);
    last.resize(sets);
    count.resize(sets);
}

void FoundSets::add(std::size_t size, std::size_t parent, WalkItem last, std::uint32_t count) {
    while (maxSize() < size)
        m_levels.emplace_back();
    Level& level = m_levels[size - 2];
    assert(level.parent.empty() || level.parent.back() <= parent);
    assert(level.parent.empty() || level.parent.back() < parent || level.last.back() < last);
    if (level.size() + 1 >= std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many item sets of one size");
    level.parent.push_back(static_cast<std::uint32_t>(parent));
    level.last.push_back(last);
    level.count.push_back(count);
}

void FoundSets::append(const std::vector<Part>& parts, unsigned threads, Step& step) {
    /// Where a level of a part goes, and by what the places of its parents move.
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
                // The first touch of the target's memory makes this slow.
                if (set % ASKED_EVERY == ASKED_EVERY - 1)
                    step.spend(0);
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

void FoundSets::link(std::size_t items) {
    if (m_levels.empty()) {
        m_pairBegin.assign(items + 1, 0);
        return;
    }
    m_pairBegin = beginnings(m_levels.front().parent, items);
    for (std::size_t i = 0; i + 1 < m_levels.size(); ++i)
        if (m_levels[i].extensions.empty())
            m_levels[i].extensions = beginnings(m_levels[i + 1].parent, m_levels[i].size());
}

ItemSets FoundSets::ordered(const WalkOrder& order, unsigned threads, Step& step) && {
    struct Sorted {
        Tuples tuples;
        std::vector<std::uint32_t> order;
        mining::Level level;
    };
    Sorted below;
    below.tuples.size = 1;
    for (std::uint32_t item = 0; item < order.size(); ++item)
        below.tuples.ranks.push_back(order.rank(WalkItem{item}));
    below.order = sortedTuples(below.tuples, order.size(), order.ranks());
    ItemSets sets;
    sets.add(firstLevel(below.order, order));

    // As many levels at a time as there are threads; of all others there are no tuples.
    std::vector<Sorted> batch;
    for (std::size_t begin = 0; begin < m_levels.size(); begin += batch.size()) {
        batch.clear();
        for (std::size_t i = begin; i < m_levels.size() && batch.size() < threads; ++i) {
            batch.push_back({extended(batch.empty() ? below.tuples : batch.back().tuples,
                                      m_levels[i], order, threads, step),
                             {},
                             {}});
            // From here on the tuples tell what these told.
            LargeVector<std::uint32_t>().swap(m_levels[i].parent);
            LargeVector<WalkItem>().swap(m_levels[i].last);
        }
        const auto levels = static_cast<unsigned>(batch.size());
        workOnParts(levels, step, [&](std::size_t i) {
            batch[i].order =
                sortedTuples(batch[i].tuples, m_levels[begin + i].count.size(), order.ranks());
        });
        workOnParts(levels, step, [&](std::size_t i) {
            const Sorted& lower = i == 0 ? below : batch[i - 1];
            batch[i].level = orderedLevel(m_levels[begin + i].count, batch[i].tuples,
                                          batch[i].order, lower.tuples, lower.order);
            m_levels[begin + i] = Level();
        });
        for (Sorted& sorted : batch)
            sets.add(std::move(sorted.level));
        below = std::move(batch.back());
        step.spend(0);
    }
    m_levels.clear();
    return sets;
}

}  // namespace quarvis::mining
