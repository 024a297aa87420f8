#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// The frequent item sets of one size, in lexicographic order of their ranks. A set is stored as
/// its prefix, the set without its last item, and its last item. 16 bytes a set.
struct Level {
    std::vector<std::uint32_t> prefix;  ///< Places in the level below; 0 in the first level.
    std::vector<Rank> last;             ///< The greatest item of each set.
    std::vector<std::uint32_t> count;   ///< Histories that hold each set.

    /// The extensions of set i are [extensions[i], extensions[i + 1]) in the level above; empty
    /// ranges if there is none.
    std::vector<std::uint32_t> extensions;

    /// The number of sets.
    std::size_t size() const { return last.size(); }
};

/// All frequent item sets of a run, as a trie. A set is identified by its size and its place in the
/// level of that size.
class ItemSets {
  public:
    ItemSets() = default;

    /// Takes all levels, from size 1 on, with their `extensions`. In each level, prefixes ascend.
    explicit ItemSets(std::vector<Level> levels);

    /// The greatest size that has a level. Levels from size 2 on are not empty.
    std::size_t levels() const { return m_levels.size(); }

    /// The sets of a size; the size is from 1 to `levels()`.
    const Level& level(std::size_t size) const {
        assert(size >= 1 && size <= levels());
        return m_levels[size - 1];
    }

    /// The number of sets of a size; 0 beyond the levels.
    std::size_t count(std::size_t size) const {
        return size >= 1 && size <= levels() ? level(size).size() : 0;
    }

    /// The number of sets of all sizes.
    std::size_t size() const;

    /// Writes the ascending items of a set to `items`, which has room for `size` of them.
    void items(std::size_t size, std::size_t set, Rank* items) const;

    /// What `find` returns for a set that is not there.
    static constexpr std::size_t NOT_FOUND = static_cast<std::size_t>(-1);

    /// The place in its level of the set with these ascending items, or NOT_FOUND. Takes a binary
    /// search among the extensions of each prefix.
    std::size_t find(std::span<const Rank> items) const;

  private:
    std::vector<Level> m_levels;
};

/// Visits all sets in the order of the item-set file: lexicographic by rank, except that a set
/// comes right after the sets that begin with it.
class ItemSetCursor {
  public:
    /// Starts before the first set. `sets` must outlive the cursor.
    explicit ItemSetCursor(const ItemSets& sets);

    /// Moves to the next set. Returns false when there is none.
    bool next();

    /// The items of the current set, ascending. They are valid until the next move.
    std::span<const Rank> items() const { return m_items; }

    /// The count of the current set.
    std::uint32_t count() const { return m_count; }

  private:
    struct Range {
        std::size_t next;
        std::size_t end;
    };

    void m_descend();

    const ItemSets& m_sets;
    std::vector<Range> m_path;  // by size: the sets of the level still to visit
    std::vector<Rank> m_items;
    std::uint32_t m_count = 0;
    bool m_fresh = true;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
