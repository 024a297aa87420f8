#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "arena.hpp"
#include "cover.hpp"
#include "frequent_sets.hpp"
#include "history_index.hpp"

namespace quarvis::rule {

/// Walks the sets of a level, of two items or more, in groups that share all items but the last,
/// and has the covers at hand that each set of a group is the intersection of: that of the prefix
/// and, for each last item, that of the pair of the first item and it.
///
/// Sets with the same first item follow each other, so the covers of pairs are made once for each
/// first item and pair; a stack keeps the covers of all prefixes of the group, of which only those
/// that changed since the last group are made anew. Room is taken for the covers of the pairs of
/// one first item, no more than the entries of its histories, and for the stack.
class GroupWalk {
  public:
    GroupWalk(const HistoryIndex& index, const FrequentSets& sets, std::size_t size);

    /// Goes on to the next group that has at least `least` sets; false when there is none. Covers
    /// are made when they are asked for, so a group that is passed over costs next to nothing.
    bool next(std::size_t least);

    /// The sets of the group are [begin(), end()) of the level.
    std::size_t begin() const { return m_begin; }
    std::size_t end() const { return m_end; }

    /// The items of the prefix; their number is the size of the sets less one.
    std::span<const Rank> prefixItems() const { return m_items; }

    /// The histories of the first item. Covers are of positions in it.
    std::span<const HistoryId> histories() const { return m_index.histories(m_items[0]); }

    const Cover& prefixCover();

    /// The cover of the first item and the last item of the set `set` of the group.
    Cover lastCover(std::size_t set) {
        prefixCover();
        return m_pairCover(m_level.last[set]);
    }

  private:
    static constexpr std::uint32_t NO_PAIR = static_cast<std::uint32_t>(-1);

    void m_enterPrefix();
    void m_enterFirstItem();
    const Cover& m_pairCover(Rank item);
    Cover m_makePair(Rank item);
    Position* m_findCommon(Rank item);

    const HistoryIndex& m_index;
    const FrequentSets& m_sets;
    const Level& m_level;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;

    std::vector<Rank> m_items;            // of the prefix
    std::vector<Cover> m_covers;          // of the first item, the first two, ... the prefix
    std::size_t m_covered = 0;            // how many of these are those of the group
    std::vector<CoverStorage> m_storage;  // of each of these that is not a pair's

    // The covers of pairs of the first item.
    std::vector<Cover> m_pairs;
    std::vector<std::uint32_t> m_pairOf;  // by item: its place in m_pairs, or NO_PAIR
    std::vector<Rank> m_paired;           // the items that have one
    Arena<std::uint64_t> m_pairWords;
    Arena<Position> m_pairPositions;
    std::vector<Position> m_common;
};

}  // namespace quarvis::rule
