#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "large_vector.hpp"
#include "order_kernels.hpp"
#include "rule_counter.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// The orders in which the histories of a first item first meet the item and those after it, where
/// there is no window.
///
/// The order of an item in a history is the number of moments up to its first occurrence: 0 where
/// it is in the first transaction, the same for items that come at once. Each item has a byte for
/// each history of the first item, its lane; 64 lanes make a word. A history that stands for
/// several has a lane for each binary digit of its weight, and all lanes of a word have one weight.
/// Histories with fewer than two partners have no lane: they tell nothing about sets of three items
/// and more.
class OrderColumns {
  public:
    /// Of standings without a window.
    explicit OrderColumns(const Standings& standings)
        : m_standings(standings), m_numbers(standings.itemCount(), NONE) {}

    /// Fills the columns of a first item and its partners. False, with nothing filled, when a
    /// history has more moments than a byte tells, or when most of the lanes would be empty.
    bool fill(Rank first, std::span<const RuleCounter::Partner> partners);

    std::size_t words() const { return m_weights.size(); }

    /// By word.
    const std::uint32_t* weights() const { return m_weights.data(); }

    /// By lane. Those of the first item.
    const std::uint8_t* first() const { return m_orders.data(); }
    const std::uint8_t* of(Rank partner) const {
        assert(m_numbers[at(partner)] != NONE);
        return m_orders.data() + m_numbers[at(partner)] * words() * 64;
    }

    /// The history of a lane, and the entry of the first item in it.
    const Standings::Place& place(std::size_t lane) const { return m_places[lane]; }

    /// What the last filling cost, in nanoseconds or so.
    std::size_t cost() const { return m_cost; }

  private:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    /// An item with a column in the history at hand.
    struct Hit {
        std::uint32_t number;
        std::uint8_t order;
    };

    bool m_layOut(Rank first, std::span<const RuleCounter::Partner> partners);
    void m_fillHistory(const Standings::Place& place);

    const Standings& m_standings;
    std::vector<std::uint32_t> m_numbers;  // by rank: of the column, or NONE; the first item's is 0
    std::vector<Rank> m_numbered;
    LargeVector<std::uint8_t> m_orders;  // by column and lane
    std::vector<std::uint32_t> m_weights;
    std::vector<Standings::Place> m_places;  // by lane
    std::array<std::size_t, 32> m_next{};    // by digit: the next lane
    std::vector<Hit> m_hits;
    std::size_t m_cost = 0;
};

}  // namespace quarvis::mining
