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

/// The histories of a shard as sets of items, without times, for the search for item sets.
///
/// The items of each history are in ascending walk order, followed by an end mark. For each item
/// there is a list of its places, one in each history that holds it. Reading from each place up to
/// the end mark gives the item's conditional database: the later items of its histories. Histories
/// of fewer than two items are left out. Takes 8 bytes an item of a history and 4 bytes a history,
/// and two passes over the shard to make.
class Baskets {
  public:
    /// The end mark of a history; greater than every item.
    static constexpr WalkItem END{static_cast<std::uint32_t>(-1)};

    /// Converts the shard in `threads` threads. Throws `std::length_error` beyond 2^32 - 2 items
    /// and end marks.
    Baskets(const Shard& shard, const WalkOrder& order, unsigned threads, Step& step);

    std::size_t itemCount() const { return m_begin.size() - 1; }

    /// The places of an item, one for each history that holds it and another item.
    std::span<const std::uint32_t> places(WalkItem item) const {
        assert(at(item) < itemCount());
        return {m_places.data() + m_begin[at(item)], m_begin[at(item) + 1] - m_begin[at(item)]};
    }

    /// The items after the one at a place, ascending, up to END.
    const WalkItem* after(std::uint32_t place) const {
        assert(place + std::size_t{1} < m_items.size());
        return &m_items[place + std::size_t{1}];
    }

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
