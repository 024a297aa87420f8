#include "found_sets.hpp"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <limits>
#include <numeric>
#include <utility>

#include "tasks.hpp"

/// \file
/// Turns the trie of the walk into the trie of the result. In the walk, a set hangs below its first
/// items in walk order; in the result, below its least ranks.
///
/// Let X be a frequent set, l the item that the walk added last, so that X = P + l, and g the item
/// of X with the greatest rank. In the result X hangs below X - g. If g is l, that is P. Otherwise
/// P hangs below Q = P - g, and X - g = Q + l is an extension of Q in the walk, since every part of
/// a frequent set is frequent. So one binary search among the extensions of Q finds the prefix of
/// X, and no set is ever written out. Counting sorts then put each level into order: by greatest
/// item first, and by the place of the prefix after that.
///
/// The two least items of a set are its branch. The sets of a branch are contiguous in each level
/// of the result, so each thread places the sets of a range of branches, and threads need not wait
/// for each other between levels. Where items are many and sets are few, the least item alone
/// stands for the branch.
///
/// Takes linear time apart from the searches.
namespace quarvis::mining {

namespace {

/// A place in the first level of the result, where the items are in the order of their ranks.
using ItemPlace = std::uint32_t;

/// A number for the two least items of a set, or for the least one alone. It rises with them.
using Branch = std::uint32_t;

using Places = LargeVector<std::uint32_t>;

/// One set of so many is looked at to cut the sets into parts of about equal size.
constexpr std::size_t SAMPLED_EVERY = 16;

/// Resizes an array piece by piece, since the first touch of its memory takes long.
template <class Array>
void setSize(Array& array, std::size_t size, Step& step) {
    array.reserve(size);
    while (array.size() < size) {
        array.resize(std::min(size, array.size() + ASKED_EVERY));
        step.spend(0);
    }
}

class Ranking {
  public:
    Ranking(std::vector<FoundSets::Level>& found, const Places& pairBegin, const WalkOrder& order,
            unsigned threads, Step& step)
        : m_found(found),
          m_pairBegin(pairBegin),
          m_order(order),
          m_threads(threads),
          m_step(step),
          m_branchesOfItem(s_branchesOfItem(order.size(), found)),
          m_itemPlaces(order.size()),
          m_levels(found.size()),
          m_placedParts(found.size()) {
        for (std::uint32_t item = 0; item < order.size(); ++item)
            m_ranks.push_back(order.rank(WalkItem{item}));
        std::sort(m_ranks.begin(), m_ranks.end());
        for (ItemPlace place = 0; place < m_ranks.size(); ++place)
            m_itemPlaces[at(order.item(m_ranks[place]))] = place;
    }

    ItemSets run() {
        for (std::size_t level = 0; level < m_found.size(); ++level)
            m_rank(level);
        m_cut();
        if (m_threads > 1)
            workOn(
                m_levels.size(), m_threads, m_step,
                [this](unsigned) { return [this](std::size_t level) { m_makeRoom(level); }; },
                [](std::size_t) {});
        workOnParts(m_threads, m_step, [this](std::size_t part) {
            for (std::size_t level = 0; level < m_levels.size(); ++level) {
                // A single thread reuses the memory of earlier levels.
                if (m_threads == 1)
                    m_makeRoom(level);
                m_place(level, part);
                if (++m_placedParts[level] == m_threads)
                    m_giveBack(level);
            }
        });
        std::vector<Level> levels;
        levels.push_back(m_firstLevel());
        for (Ranked& level : m_levels) {
            levels.back().extensions = std::move(level.extensions);
            levels.push_back(std::move(level.made));
        }
        levels.back().extensions.assign(levels.back().size() + 1, 0);
        return ItemSets(std::move(levels));
    }

  private:
    /// What is known of a level of the walk. The level's column of parents is reused: first for the
    /// prefixes in the result, by their places in the walk; then for the places of the prefixes in
    /// the result; finally for the places of the sets themselves.
    struct Ranked {
        std::size_t size = 0;
        LargeVector<ItemPlace> greatest;
        LargeVector<Branch> branch;      // empty if there is only one thread
        std::vector<std::size_t> begin;  // by part: its first place in the result; then an end
        Level made;                      // without extensions
        std::vector<std::uint32_t> extensions;  // of the level below in the result
    };

    /// How many branches there are for a least item: one for each second item where so many can be
    /// counted in next to no memory beside the sets, otherwise a single one.
    static Branch s_branchesOfItem(std::size_t items, const std::vector<FoundSets::Level>& found) {
        std::size_t sets = 0;
        for (const FoundSets::Level& level : found)
            sets += level.size();
        return items < std::size_t{1} << 16 && items * items <= sets / 8
                   ? static_cast<Branch>(items)
                   : 1;
    }

    Branch m_branch(ItemPlace least, ItemPlace second) const {
        return least * m_branchesOfItem + (m_branchesOfItem > 1 ? second : 0);
    }

    ItemPlace m_placeOf(WalkItem item) const { return m_itemPlaces[at(item)]; }

    /// Finds the prefix, the greatest item and the branch of each set of a level.
    void m_rank(std::size_t level) {
        const std::size_t size = m_found[level].size();
        m_levels[level].size = size;
        m_levels[level].greatest.resize(size);
        if (m_threads > 1)
            m_levels[level].branch.resize(size);
        const unsigned parts = threadsFor(size, m_threads);
        workOnParts(parts, m_step, [&](std::size_t part) {
            const PartRange sets = partOf(size, part, parts);
            if (level == 0)
                m_rankPairs(sets);
            else
                m_rankLarger(level, sets);
        });
        if (level > 0)
            LargeVector<WalkItem>().swap(m_found[level - 1].last);
        if (level > 1)
            Places().swap(m_found[level - 2].extensions);
    }

    void m_rankPairs(PartRange sets) {
        FoundSets::Level& pairs = m_found.front();
        Ranked& ranked = m_levels.front();
        for (std::size_t pair = sets.begin; pair < sets.end; ++pair) {
            ask(m_step, pair);
            const WalkItem last = pairs.last[pair];
            const ItemPlace first = m_itemPlaces[pairs.parent[pair]];
            const ItemPlace second = m_placeOf(last);
            if (second < first)
                pairs.parent[pair] = static_cast<std::uint32_t>(last);
            ranked.greatest[pair] = std::max(first, second);
            if (!ranked.branch.empty())
                ranked.branch[pair] = m_branch(std::min(first, second), std::max(first, second));
        }
    }

    void m_rankLarger(std::size_t level, PartRange sets) {
        FoundSets::Level& found = m_found[level];
        const FoundSets::Level& below = m_found[level - 1];
        const Places& extensions = level == 1 ? m_pairBegin : m_found[level - 2].extensions;
        const Ranked& rankedBelow = m_levels[level - 1];
        Ranked& ranked = m_levels[level];
        std::uint32_t parent = std::numeric_limits<std::uint32_t>::max();
        auto sibling = below.last.begin();  // among the extensions of the prefix of the parent
        auto end = sibling;
        for (std::size_t set = sets.begin; set < sets.end; ++set) {
            ask(m_step, set);
            if (found.parent[set] != parent) {
                parent = found.parent[set];
                const std::uint32_t prefix = below.parent[parent];
                sibling = below.last.begin() + static_cast<std::ptrdiff_t>(extensions[prefix]);
                end = below.last.begin() + static_cast<std::ptrdiff_t>(extensions[prefix + 1]);
            }
            const WalkItem last = found.last[set];
            ItemPlace greatest = m_placeOf(last);
            if (greatest < rankedBelow.greatest[parent]) {
                greatest = rankedBelow.greatest[parent];
                sibling = std::lower_bound(sibling, end, last);
                assert(sibling != end && *sibling == last);
                found.parent[set] = static_cast<std::uint32_t>(sibling - below.last.begin());
            }
            ranked.greatest[set] = greatest;
            if (!ranked.branch.empty())
                ranked.branch[set] = rankedBelow.branch[found.parent[set]];
        }
    }

    /// Cuts the branches into a range for each part, with about equally many sets of a sample.
    void m_cut() {
        const std::size_t branches = m_ranks.size() * m_branchesOfItem;
        m_firstBranch.assign(m_threads + 1, static_cast<Branch>(branches));
        m_firstBranch.front() = 0;
        if (m_threads == 1)
            return;
        std::vector<std::size_t> sets(branches);
        std::size_t all = 0;
        for (const Ranked& level : m_levels) {
            for (std::size_t set = 0; set < level.branch.size(); set += SAMPLED_EVERY, ++all)
                ++sets[level.branch[set]];
            m_step.spend(0);
        }
        std::size_t before = 0;
        unsigned part = 1;
        for (Branch branch = 0; branch < branches; ++branch) {
            // A branch that goes beyond the aim by more than half its sets belongs to the next
            // part.
            while (part < m_threads && before + sets[branch] / 2 >= all / m_threads * part)
                m_firstBranch[part++] = branch;
            before += sets[branch];
        }
    }

    /// Whether a branch belongs to a part. One comparison suffices, since a lesser one wraps
    /// around.
    bool m_isIn(Branch branch, std::size_t part) const {
        return branch - m_firstBranch[part] < m_firstBranch[part + 1] - m_firstBranch[part];
    }

    /// The prefixes of the sets of a part of a level, by their places in the result. Two parts can
    /// share an item as the prefix of their pairs; no larger set has branches in two parts.
    PartRange m_prefixes(std::size_t level, std::size_t part) const {
        if (level > 0)
            return {m_levels[level - 1].begin[part], m_levels[level - 1].begin[part + 1]};
        const std::size_t end = std::size_t{m_firstBranch[part + 1]} + m_branchesOfItem - 1;
        return {m_firstBranch[part] / m_branchesOfItem, end / m_branchesOfItem};
    }

    /// Makes room for a level of the result, and finds where each part begins in it.
    void m_makeRoom(std::size_t level) {
        Ranked& ranked = m_levels[level];
        const std::size_t size = ranked.size;
        setSize(ranked.made.prefix, size, m_step);
        setSize(ranked.made.last, size, m_step);
        setSize(ranked.made.count, size, m_step);
        const std::size_t below = level == 0 ? m_ranks.size() : m_levels[level - 1].size;
        setSize(ranked.extensions, below + 1, m_step);
        ranked.extensions.back() = static_cast<std::uint32_t>(size);
        ranked.begin.assign(m_threads + 1, size);
        std::size_t sets = 0;
        for (unsigned part = 0; part + 1 < m_threads; ++part) {
            ranked.begin[part] = sets;
            for (const Branch branch : ranked.branch)
                sets += m_isIn(branch, part);
        }
        ranked.begin[m_threads - 1] = sets;
    }

    /// Puts the sets of a part of a level into their places. The level below must be done.
    void m_place(std::size_t level, std::size_t part) {
        Ranked& ranked = m_levels[level];
        const LargeVector<std::uint32_t> sets = m_sortedByGreatest(level, part);
        const Places& below = level == 0 ? m_itemPlaces : m_found[level - 1].parent;
        const PartRange prefixes = m_prefixes(level, part);
        std::vector<std::uint32_t> next(prefixes.end - prefixes.begin + 1);
        Places& places = m_found[level].parent;
        for (std::size_t i = 0; i < sets.size(); ++i) {
            ask(m_step, i);
            std::uint32_t& place = places[sets[i]];
            place = below[place];
            ++next[place - prefixes.begin + 1];
        }
        next.front() = static_cast<std::uint32_t>(ranked.begin[part]);
        std::partial_sum(next.begin(), next.end(), next.begin());
        // An item that two parts share has its first pair in the earlier one.
        const bool shared = level == 0 && m_firstBranch[part] % m_branchesOfItem != 0;
        std::copy(next.begin() + shared, next.end() - 1,
                  ranked.extensions.begin() + static_cast<std::ptrdiff_t>(prefixes.begin + shared));
        for (std::size_t i = 0; i < sets.size(); ++i) {
            ask(m_step, i);
            const std::uint32_t set = sets[i];
            const std::uint32_t prefix = places[set];
            const std::uint32_t place = next[prefix - prefixes.begin]++;
            ranked.made.prefix[place] = prefix;
            ranked.made.last[place] = m_ranks[ranked.greatest[set]];
            ranked.made.count[place] = m_found[level].count[set];
            places[set] = place;
        }
    }

    /// Frees what is no longer needed when all parts of a level are in their places.
    void m_giveBack(std::size_t level) {
        LargeVector<ItemPlace>().swap(m_levels[level].greatest);
        LargeVector<Branch>().swap(m_levels[level].branch);
        Places().swap(m_found[level].count);
        if (level > 0)
            Places().swap(m_found[level - 1].parent);
    }

    /// The sets of a part in a level, by ascending greatest items.
    LargeVector<std::uint32_t> m_sortedByGreatest(std::size_t level, std::size_t part) const {
        const Ranked& ranked = m_levels[level];
        LargeVector<std::uint32_t> sets(ranked.greatest.size() + 1);
        std::size_t size = 0;
        for (std::size_t set = 0; set < ranked.greatest.size(); ++set) {
            ask(m_step, set);
            sets[size] = static_cast<std::uint32_t>(set);
            size += ranked.branch.empty() || m_isIn(ranked.branch[set], part);
        }
        sets.resize(size);
        if (size < m_ranks.size() / 4) {
            std::sort(sets.begin(), sets.end(), [&ranked](std::uint32_t a, std::uint32_t b) {
                return ranked.greatest[a] < ranked.greatest[b];
            });
            return sets;
        }
        std::vector<std::uint32_t> next(m_ranks.size() + 1);
        for (std::size_t i = 0; i < size; ++i) {
            ask(m_step, i);
            ++next[ranked.greatest[sets[i]] + 1];
        }
        std::partial_sum(next.begin(), next.end(), next.begin());
        LargeVector<std::uint32_t> sorted(size);
        for (std::size_t i = 0; i < size; ++i) {
            ask(m_step, i);
            sorted[next[ranked.greatest[sets[i]]]++] = sets[i];
        }
        return sorted;
    }

    Level m_firstLevel() const {
        Level items;
        items.prefix.resize(m_ranks.size());
        items.last = m_ranks;
        for (const Rank rank : m_ranks)
            items.count.push_back(m_order.count(m_order.item(rank)));
        return items;
    }

    std::vector<FoundSets::Level>& m_found;
    const Places& m_pairBegin;
    const WalkOrder& m_order;
    unsigned m_threads;
    Step& m_step;
    Branch m_branchesOfItem;
    std::vector<Rank> m_ranks;  // by place in the first level
    Places m_itemPlaces;        // by walk item
    std::vector<Ranked> m_levels;
    std::vector<std::atomic<unsigned>> m_placedParts;  // by level
    std::vector<Branch> m_firstBranch;                 // by part; then an end
};

}  // namespace

ItemSets FoundSets::ordered(const WalkOrder& order, unsigned threads, Step& step) && {
    link(order.size(), threads, &step);
    ItemSets sets = Ranking(m_levels, m_pairBegin, order, threads, step).run();
    m_levels.clear();
    return sets;
}

}  // namespace quarvis::mining
