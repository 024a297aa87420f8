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

/// For a first item and the items after it: the order of their first occurrences in each history of
/// the first item, where there is no window.
///
/// The order of an item in a history is 0 in the first transaction, and from there on the number of
/// moments up to its first occurrence. Items that first occur together have the same order. A
/// column has a byte, a lane, for each history of the first item, and 64 lanes are a word. A
/// history of a weight above 1 has a lane for each bit that is set in the weight, and all lanes of
/// a word have one weight. Histories with fewer than two partners have no lane, since they hold no
/// set of three items.
class OrderColumns {
  public:
    /// The standings must be made without a window and must outlive the columns.
    explicit OrderColumns(const Standings& standings)
        : m_standings(standings), m_numbers(standings.itemCount(), NONE) {}

    /// Fills the columns of a first item and its partners. Returns false, and fills nothing, if a
    /// history has too many moments for a byte or if most lanes would be empty.
    bool fill(Rank first, std::span<const RuleCounter::Partner> partners);

    std::size_t words() const { return m_weights.size(); }

    /// The weight of each word.
    const std::uint32_t* weights() const { return m_weights.data(); }

    /// The orders of the first item and of a partner, by lane.
    const std::uint8_t* first() const { return m_orders.data(); }
    const std::uint8_t* of(Rank partner) const {
        assert(m_numbers[at(partner)] != NONE);
        return m_orders.data() + m_numbers[at(partner)] * words() * 64;
    }

    /// The history of a lane, and the entry of the first item in it.
    const Standings::Place& place(std::size_t lane) const { return m_places[lane]; }

    /// The cost of the last `fill`, in units of work.
    std::size_t cost() const { return m_cost; }

  private:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    /// A partner in the current history.
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
