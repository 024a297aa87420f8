#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "large_vector.hpp"
#include "run_control.hpp"
#include "walk_order.hpp"

namespace quarvis::mining {

/// Item sets as the search finds them: by size, those of a size in the lexicographic order of the
/// walk, each as the set of the size below that it extends and the item that it adds. The first
/// level, of all items, is implied.
class FoundSets {
  public:
    struct Level {
        LargeVector<std::uint32_t>
            parent;  // in the level below; in the lowest one, of size 2, an item
        LargeVector<WalkItem> last;
        LargeVector<std::uint32_t> count;

        /// By set, and an end: where its extensions begin in the level above. Empty in the highest
        /// level.
        LargeVector<std::uint32_t> extensions;

        std::size_t size() const { return last.size(); }

        /// Makes room for twice as many sets. The step is asked now and then whether to end.
        void grow(Step& step);

        /// Added sets have no value yet. Throws `std::length_error` beyond 2^32 - 2 sets.
        void resize(std::size_t sets);
    };

    /// The greatest size of which there are sets; at least 1.
    std::size_t maxSize() const { return m_levels.size() + 1; }

    /// The sets of a size from 2 on.
    const Level& level(std::size_t size) const {
        assert(size >= 2 && size <= maxSize());
        return m_levels[size - 2];
    }
    std::size_t count(std::size_t size) const { return size <= maxSize() ? level(size).size() : 0; }

    /// The number of all sets of two items or more.
    std::size_t size() const;

    /// Adds a set after all others of its size. Throws `std::length_error` beyond 2^32 - 2 of them.
    /// A step that is given is asked whether to end while many sets move to a larger room.
    void add(std::size_t size, std::size_t parent, WalkItem last, std::uint32_t count,
             Step* step = nullptr);

    /// Some of the sets of `from`: of each level from 2 on those at the places [begin, end), by
    /// size. Missing begins are 0.
    struct Part {
        const FoundSets* from = nullptr;
        std::vector<std::size_t> begins;
        std::vector<std::size_t> ends;

        std::size_t begin(std::size_t level) const {
            return level < begins.size() ? begins[level] : 0;
        }
    };

    /// Adds the sets of the parts, one part after the other, after all others; a part holds all
    /// that its sets extend. The work is done in `threads` threads. Throws `std::length_error` as
    /// `add`; whenever it throws, nothing was added.
    void append(const std::vector<Part>& parts, unsigned threads, Step& step);

    /// Adds the sets of the greatest size of `other`, one more than here; they extend sets that are
    /// here.
    void addLevelOf(FoundSets&& other);

    /// The number of sets of each size from 2 on.
    std::vector<std::size_t> sizes() const;

    /// Fills in where extensions begin, in all levels but the highest. A level that has this
    /// already is left as it is: nothing may have been added to the level above it since. A step
    /// that is given is asked now and then whether to end.
    void link(std::size_t items, Step* step = nullptr);

    /// Where the extensions of the items begin in the level of size 2.
    const LargeVector<std::uint32_t>& pairBegin() const { return m_pairBegin; }

    /// The same sets in the byte order of their items, with the first level; leaves this empty. The
    /// levels are sorted in `threads` threads.
    ItemSets ordered(const WalkOrder& order, unsigned threads, Step& step) &&;

  private:
    std::vector<Level> m_levels;
    LargeVector<std::uint32_t> m_pairBegin;
};

}  // namespace quarvis::mining
