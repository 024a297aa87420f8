#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "large_vector.hpp"
#include "run_control.hpp"
#include "shard.hpp"
#include "walk_order.hpp"

namespace quarvis::mining {

/// The histories of a shard as plain sets of items, for the search for item sets.
///
/// The items of each history stand in ascending walk order, followed by a mark, and for each item
/// there is a list of the places where it stands: so what is read from such a place on up to the
/// mark are the items after it in one of its histories, its conditional database. Histories of
/// fewer than two items are left out. 8 bytes an item of a history and 4 bytes a history.
class Baskets {
  public:
    /// The mark behind the items of a history; greater than every item.
    static constexpr WalkItem END{static_cast<std::uint32_t>(-1)};

    /// Made in `threads` threads of a step.
    Baskets(const Shard& shard, const WalkOrder& order, unsigned threads, Step& step);

    std::size_t itemCount() const { return m_begin.size() - 1; }

    /// Where an item stands, one place for each history that holds it and another item.
    std::span<const std::uint32_t> places(WalkItem item) const {
        assert(at(item) < itemCount());
        return {m_places.data() + m_begin[at(item)], m_begin[at(item) + 1] - m_begin[at(item)]};
    }

    /// The items after the one at a place, in ascending order up to END.
    const WalkItem* after(std::uint32_t place) const {
        assert(place + std::size_t{1} < m_items.size());
        return &m_items[place + std::size_t{1}];
    }

    /// The memory that they take.
    std::size_t bytes() const {
        return sizeof(WalkItem) * m_items.size() +
               sizeof(std::uint32_t) * (m_begin.size() + m_places.size());
    }

  private:
    class Part;

    LargeVector<WalkItem> m_items;       // by history
    std::vector<std::uint32_t> m_begin;  // by item: where its places begin, and the end of the last
    LargeVector<std::uint32_t> m_places;
};

}  // namespace quarvis::mining
