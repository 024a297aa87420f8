#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frequent_sets.hpp"
#include "history_index.hpp"

namespace quarvis::rule {

/// How often the one of two items first occurs before the other: all that a rule of the two asks
/// for when there is no window.
///
/// Counted for those greater items for which that is less work than to visit the histories of their
/// frequent pairs, of each history at once for the pairs of all items in it. The counters take at
/// most 16 MB, and the times of 2,048 histories at a time 4 bytes an item.
class PairOrders {
  public:
    /// Counts for the pairs of `sets`, which were found in `index`; `least` is the least count of a
    /// rule.
    PairOrders(const HistoryIndex& index, const FrequentSets& sets, std::uint32_t least);

    /// Whether the item `a` first occurs before `b`, a greater one, in `least` histories, or after
    /// it in as many; true also where that was not counted.
    bool mayReach(std::uint32_t least, Rank a, Rank b) const {
        if (m_rows[b] == NONE)
            return true;
        const Order& order = m_orders[m_rows[b] + a];
        return std::max(order.before, order.after) >= least;
    }

  private:
    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    /// The histories in which the lesser of two items comes first, and in which it comes last.
    struct Order {
        std::uint32_t before = 0;
        std::uint32_t after = 0;
    };

    void m_makeRows(const HistoryIndex& index, const Level& pairs, std::uint32_t least);
    void m_count(const HistoryIndex& index);

    std::vector<std::size_t> m_rows;  // by greater item: where its lesser ones begin, or NONE
    std::vector<Order> m_orders;
};

}  // namespace quarvis::rule
