#include "search.hpp"

#include <algorithm>
#include <span>
#include <utility>

#include "bit_kernels.hpp"
#include "cover.hpp"
#include "group_walk.hpp"
#include "pair_counters.hpp"

namespace quarvis::rule {

namespace {

/// A level in the making: extensions are added in the order of the sets that they extend.
class LevelBuilder {
  public:
    explicit LevelBuilder(std::size_t below) { m_extensions.reserve(below + 1); }

    void add(std::size_t prefixSet, Rank lastItem, std::uint32_t count) {
        m_reach(prefixSet + 1);
        m_level.add(prefixSet, lastItem, count);
    }

    const Level& finish(FrequentSets& sets) {
        const std::size_t below = sets.level(sets.levels()).size();
        m_reach(below + 1);
        return sets.add(std::move(m_level), std::move(m_extensions));
    }

  private:
    /// The extensions of all sets before `begins - 1` are complete.
    void m_reach(std::size_t begins) {
        m_extensions.resize(std::max(begins, m_extensions.size()),
                            static_cast<std::uint32_t>(m_level.size()));
    }

    Level m_level;
    std::vector<std::uint32_t> m_extensions;
};

/// Counts all pairs at once, history by history.
void countPairsByHistory(const HistoryIndex& index, std::uint32_t minCount, LevelBuilder& level) {
    PairCounters counts;
    counts.reset(index.itemCount());
    for (HistoryId history = 0; history < index.historyCount(); ++history)
        counts.add(index.items(history));
    for (Rank a = 0; a < index.itemCount(); ++a) {
        Rank b = a;
        for (const std::uint32_t count : counts.row(a))
            if (++b; count >= minCount)
                level.add(a, b, count);
    }
}

/// Counts the pairs of one first item after the other, over the histories of that item.
void countPairsByItem(const HistoryIndex& index, std::uint32_t minCount, LevelBuilder& level) {
    const std::size_t items = index.itemCount();
    std::vector<std::uint32_t> counts(items);
    std::vector<Rank> met;
    for (Rank a = 0; a < items; ++a) {
        for (const HistoryId history : index.histories(a)) {
            const std::span<const Rank> present = index.items(history);
            for (auto b = std::upper_bound(present.begin(), present.end(), a); b != present.end();
                 ++b)
                if (counts[*b]++ == 0)
                    met.push_back(*b);
        }
        if (minCount == 0) {
            for (Rank b = a + 1; b < items; ++b)
                level.add(a, b, counts[b]);
        } else {
            std::erase_if(met, [&](Rank b) {
                const bool infrequent = counts[b] < minCount;
                if (infrequent)
                    counts[b] = 0;
                return infrequent;
            });
            std::sort(met.begin(), met.end());
            for (const Rank b : met)
                level.add(a, b, counts[b]);
        }
        for (const Rank b : met)
            counts[b] = 0;
        met.clear();
    }
}

void mergePairs(const HistoryIndex& index, std::uint32_t minCount, LevelBuilder& level) {
    if (index.itemCount() < 2)
        return;
    if (PairCounters::fit(index.itemCount()))
        countPairsByHistory(index, minCount, level);
    else
        countPairsByItem(index, minCount, level);
}

/// Joins pairs of one first item by counting, in each history of that item, the pairs of their last
/// items. Where histories are short, that is less work than to intersect the covers of every two.
class HistoryJoin {
  public:
    HistoryJoin(const HistoryIndex& index, std::uint32_t minCount, LevelBuilder& level)
        : m_index(index),
          m_minCount(minCount),
          m_level(level),
          m_placeOf(index.itemCount(), NONE) {}

    /// Joins every two pairs of the group; or does nothing and gives false if intersecting is less
    /// work.
    bool join(const GroupWalk& group, const Level& below) {
        const std::size_t pairs = group.end() - group.begin();
        const std::size_t intersecting = s_intersecting(pairs, group.histories().size());
        if (!PairCounters::fit(pairs) || m_leastCounting(group, below) > intersecting ||
            m_findPlaces(group, below) > intersecting)
            return false;

        m_counts.reset(pairs);
        std::size_t begin = 0;
        for (const std::size_t end : m_ends) {
            m_counts.add(std::span(m_places).subspan(begin, end - begin));
            begin = end;
        }
        for (std::size_t a = 0; a < pairs; ++a) {
            std::size_t b = group.begin() + a;
            for (const std::uint32_t count : m_counts.row(a))
                if (++b; count >= m_minCount)
                    m_level.add(group.begin() + a, below.last[b], count);
        }
        return true;
    }

  private:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    // Work is told in additions to a counter, about a nanosecond each.

    /// A cover for each pair, bit by bit, and an intersection for every two.
    static std::size_t s_intersecting(std::size_t pairs, std::size_t histories) {
        return pairs * histories / 4 + pairs * (pairs - 1) / 2 * (8 + histories / 256);
    }

    /// The work of counting if the items of the pairs were spread evenly over the histories; it is
    /// more when they are not.
    std::size_t m_leastCounting(const GroupWalk& group, const Level& below) const {
        const std::size_t pairs = group.end() - group.begin();
        std::size_t entries = 0;
        for (const HistoryId history : group.histories())
            entries += m_index.items(history).size();
        std::size_t found = 0;
        for (std::size_t set = group.begin(); set < group.end(); ++set)
            found += below.count[set];
        return pairs * (pairs - 1) / 2 + entries +
               found * found / (2 * std::max(group.histories().size(), std::size_t{1}));
    }

    /// Finds, for each history, the places in the group of the pairs that it contains, ascending.
    /// The number of pairs of these.
    std::size_t m_findPlaces(const GroupWalk& group, const Level& below) {
        for (std::size_t set = group.begin(); set < group.end(); ++set)
            m_placeOf[below.last[set]] = static_cast<std::uint32_t>(set - group.begin());
        m_places.clear();
        m_ends.clear();
        std::size_t pairs = 0;
        for (const HistoryId history : group.histories()) {
            const std::size_t begin = m_places.size();
            for (const Rank item : m_index.items(history))
                if (m_placeOf[item] != NONE)
                    m_places.push_back(m_placeOf[item]);
            const std::size_t found = m_places.size() - begin;
            pairs += found * (found - 1) / 2;
            m_ends.push_back(m_places.size());
        }
        for (std::size_t set = group.begin(); set < group.end(); ++set)
            m_placeOf[below.last[set]] = NONE;
        return pairs;
    }

    const HistoryIndex& m_index;
    std::uint32_t m_minCount;
    LevelBuilder& m_level;
    std::vector<std::uint32_t> m_placeOf;  // by item
    std::vector<std::uint32_t> m_places;
    std::vector<std::size_t> m_ends;  // by history: where its places end
    PairCounters m_counts;
};

/// Joins every two sets of a group, the second's last item to the first set, by intersecting their
/// covers.
class CoverJoin {
  public:
    CoverJoin(std::uint32_t minCount, LevelBuilder& level) : m_minCount(minCount), m_level(level) {}

    void join(GroupWalk& group, const Level& below) {
        const std::size_t size = group.histories().size();
        for (std::size_t set = group.begin(); set + 1 < group.end(); ++set) {
            const Cover cover =
                intersect(group.prefixCover(), group.lastCover(set), size, m_storage);
            m_count(cover, group, set + 1, size);
            for (std::size_t i = 0; i < m_counts.size(); ++i)
                if (m_counts[i] >= m_minCount)
                    m_level.add(set, below.last[set + 1 + i], m_counts[i]);
        }
    }

  private:
    /// Counts what `cover` has in common with the last item of each set from `begin` on.
    void m_count(const Cover& cover, GroupWalk& group, std::size_t begin, std::size_t size) {
        m_counts.resize(group.end() - begin);
        m_bitmaps.clear();
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            const Cover other = group.lastCover(begin + i);
            if (cover.isBitmap() && other.isBitmap())
                m_bitmaps.push_back(other.words);
            else
                m_counts[i] = countCommon(cover, other, size, m_minCount);
        }
        if (m_bitmaps.size() == m_counts.size()) {
            bitKernels().countCommonEach(cover.words, m_bitmaps.data(), m_bitmaps.size(),
                                         (size + 63) / 64, m_counts.data());
            return;
        }
        for (std::size_t i = 0; cover.isBitmap() && i < m_counts.size(); ++i)
            if (group.lastCover(begin + i).isBitmap())
                m_counts[i] = countCommon(cover, group.lastCover(begin + i), size, m_minCount);
    }

    std::uint32_t m_minCount;
    LevelBuilder& m_level;
    CoverStorage m_storage;
    std::vector<std::uint32_t> m_counts;
    std::vector<const std::uint64_t*> m_bitmaps;
};

}  // namespace

Level oneSets(const HistoryIndex& index) {
    Level level;
    for (Rank item = 0; item < index.itemCount(); ++item)
        level.add(0, item, index.count(item));
    return level;
}

const Level& aprioriMerge(const Configuration& config, const HistoryIndex& index,
                          FrequentSets& sets) {
    const std::size_t size = sets.levels();
    const Level& below = sets.level(size);
    LevelBuilder level(below.size());
    if (size == 1) {
        mergePairs(index, config.minCount, level);
    } else {
        CoverJoin byCover(config.minCount, level);
        HistoryJoin byHistory(index, config.minCount, level);
        for (GroupWalk group(index, sets, size); group.next(2);)
            if (size != 2 || !byHistory.join(group, below))
                byCover.join(group, below);
    }
    return level.finish(sets);
}

}  // namespace quarvis::rule
