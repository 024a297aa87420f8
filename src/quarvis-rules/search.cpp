#include "search.hpp"

#include <algorithm>
#include <utility>

#include "bit_kernels.hpp"
#include "cover.hpp"
#include "group_walk.hpp"

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

/// A triangle of counters, one a pair of items, takes at most this many bytes.
constexpr std::size_t MAX_TRIANGLE = std::size_t{16} << 20;

/// Counts all pairs at once, history by history.
void countPairsByHistory(const HistoryIndex& index, std::uint32_t minCount, LevelBuilder& level) {
    const std::size_t items = index.itemCount();
    std::vector<std::uint32_t> counts(items * (items - 1) / 2);
    // The counter of items a < b is counts[rows[a] + b]; the first row begins at -1, modulo 2^64.
    std::vector<std::size_t> rows(items);
    std::size_t begin = 0;
    for (std::size_t a = 0; a < items; ++a) {
        rows[a] = begin - a - 1;
        begin += items - a - 1;
    }
    for (HistoryId history = 0; history < index.historyCount(); ++history) {
        const std::span<const Rank> present = index.items(history);
        for (auto a = present.begin(); a != present.end(); ++a) {
            const std::size_t row = rows[*a];
            for (auto b = a + 1; b != present.end(); ++b)
                ++counts[row + *b];
        }
    }
    for (Rank a = 0; a < items; ++a)
        for (Rank b = a + 1; b < items; ++b)
            if (counts[rows[a] + b] >= minCount)
                level.add(a, b, counts[rows[a] + b]);
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
    const std::size_t items = index.itemCount();
    if (items < 2)
        return;
    if (items * (items - 1) / 2 * sizeof(std::uint32_t) <= MAX_TRIANGLE)
        countPairsByHistory(index, minCount, level);
    else
        countPairsByItem(index, minCount, level);
}

/// Joins every two sets of a group, the second's last item to the first set.
class GroupJoin {
  public:
    GroupJoin(std::uint32_t minCount, LevelBuilder& level) : m_minCount(minCount), m_level(level) {}

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
        GroupJoin joining(config.minCount, level);
        for (GroupWalk group(index, sets, size); group.next(2);)
            joining.join(group, below);
    }
    return level.finish(sets);
}

}  // namespace quarvis::rule
