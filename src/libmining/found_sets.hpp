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

/// The item sets that a search has found, as a trie. Sets of one size are in lexicographic order of
/// walk items. A set is stored as its parent, the set without its last item, and its last item. The
/// level of size 1 has all items and is not stored. 12 bytes a set, and 16 once it is linked.
class FoundSets {
  public:
    struct Level {
        LargeVector<std::uint32_t> parent;  // place in the level below; for a pair an item
        LargeVector<WalkItem> last;
        LargeVector<std::uint32_t> count;

        /// The extensions of set i are [extensions[i], extensions[i + 1]) in the level above. Empty
        /// until the level is linked, and in the highest level.
        LargeVector<std::uint32_t> extensions;

        std::size_t size() const { return last.size(); }

        /// Doubles the room. The step is asked now and then whether to end.
        void grow(Step& step);

        /// Leaves new sets uninitialized. Throws `std::length_error` beyond 2^32 - 2 sets.
        void resize(std::size_t sets);
    };

    /// The greatest size that has sets; at least 1.
    std::size_t maxSize() const { return m_levels.size() + 1; }

    /// The sets of a size from 2 on.
    const Level& level(std::size_t size) const {
        assert(size >= 2 && size <= maxSize());
        return m_levels[size - 2];
    }
    std::size_t count(std::size_t size) const { return size <= maxSize() ? level(size).size() : 0; }

    /// The number of all sets of two items or more.
    std::size_t size() const;

    /// Adds a set, which must follow all others of its size in their order. Throws
    /// `std::length_error` beyond 2^32 - 2 of them. When many sets move to a larger room, a step
    /// that is given is asked whether to end.
    void add(std::size_t size, std::size_t parent, WalkItem last, std::uint32_t count,
             Step* step = nullptr);

    /// A part of the sets of `from`: of each level from size 2 on, the sets at the places [begin,
    /// end). Missing begins are 0.
    struct Part {
        const FoundSets* from = nullptr;
        std::vector<std::size_t> begins;
        std::vector<std::size_t> ends;

        std::size_t begin(std::size_t level) const {
            return level < begins.size() ? begins[level] : 0;
        }
    };

    /// Adds the sets of the parts after all others, in the order of the parts. The parent of a set
    /// must be in the same part; if the part has no sets of the parent's size, it must be here.
    /// Copies in `threads` threads. Throws `std::length_error` as `add` does. If it throws, nothing
    /// is added.
    void append(const std::vector<Part>& parts, unsigned threads, Step& step);

    /// Adds the highest level of `other`, whose size is one more than the greatest here. Its
    /// parents are places in the highest level here.
    void addLevelOf(FoundSets&& other);

    /// The number of sets of each size from 2 on.
    std::vector<std::size_t> sizes() const;

    /// Fills in `pairBegin`, and `extensions` in all levels but the highest. Levels that have their
    /// extensions are skipped, so nothing may have been added to the levels above them since. Works
    /// in `threads` threads; several need a step. A step that is given is asked now and then
    /// whether to end.
    void link(std::size_t items, unsigned threads = 1, Step* step = nullptr);

    /// The pairs that begin with item i are [pairBegin()[i], pairBegin()[i + 1]) in the level of
    /// size 2.
    const LargeVector<std::uint32_t>& pairBegin() const { return m_pairBegin; }

    /// Returns the same sets in lexicographic order of their ranks, with the first level, and
    /// leaves this empty. Levels are sorted by counting, in `threads` threads.
    ItemSets ordered(const WalkOrder& order, unsigned threads, Step& step) &&;

  private:
    std::vector<Level> m_levels;
    LargeVector<std::uint32_t> m_pairBegin;
};

}  // namespace quarvis::mining
