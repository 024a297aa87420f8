#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// The frequent item sets of one size in lexicographic order of their ranks: each as the set of the
/// size below that it extends, its prefix, and the item that it adds. 16 bytes a set.
struct Level {
    std::vector<std::uint32_t> prefix;  ///< Places in the level below; 0 in the first level.
    std::vector<Rank> last;             ///< The item that each set adds.
    std::vector<std::uint32_t> count;   ///< Histories that hold the set.

    /// Where in the level above the extensions of each set begin, and the end of the last ones.
    std::vector<std::uint32_t> extensions;

    /// The number of sets.
    std::size_t size() const { return last.size(); }
};

/// All frequent item sets of a run, as a trie. A set is named by its size and its place in the
/// level of that size.
class ItemSets {
  public:
    /// The greatest size of which there is a level; levels from 2 on are not empty.
    std::size_t levels() const { return m_levels.size(); }

    /// The sets of a size from 1 to `levels()`.
    const Level& level(std::size_t size) const {
        assert(size >= 1 && size <= levels());
        return m_levels[size - 1];
    }

    /// The number of sets of a size; 0 beyond the levels.
    std::size_t count(std::size_t size) const {
        return size >= 1 && size <= levels() ? level(size).size() : 0;
    }

    /// All sets.
    std::size_t size() const;

    /// Writes the ascending items of a set to `items`, which has room for `size` of them.
    void items(std::size_t size, std::size_t set, Rank* items) const;

    /// The place of a set that is not there.
    static constexpr std::size_t NOT_FOUND = static_cast<std::size_t>(-1);

    /// A set that is given by its ascending items: its place in its level, or NOT_FOUND. A binary
    /// search among the extensions of each prefix.
    std::size_t find(std::span<const Rank> items) const;

    /// Adds the level of the next size; its prefixes ascend.
    void add(Level level);

  private:
    std::vector<Level> m_levels;
};

/// Walks over all sets in the order of the item-set file: lexicographic by rank, a set right after
/// all sets that it begins.
class ItemSetCursor {
  public:
    /// Before the first set; `sets` must outlive the cursor.
    explicit ItemSetCursor(const ItemSets& sets);

    /// Goes on to the next set; false when there is none.
    bool next();

    /// The items of the set at hand, ascending. Valid until the next move.
    std::span<const Rank> items() const { return m_items; }

    /// Its count.
    std::uint32_t count() const { return m_count; }

  private:
    struct Range {
        std::size_t next;
        std::size_t end;
    };

    void m_descend();

    const ItemSets& m_sets;
    std::vector<Range> m_path;  // by size: the sets of the level that are still to come
    std::vector<Rank> m_items;
    std::uint32_t m_count = 0;
    bool m_fresh = true;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
