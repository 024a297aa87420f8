#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "live_pairs.hpp"

namespace quarvis::mining {

/// For rules of three items or more that have a given first item: which items may be on which side.
/// An item may be in the antecedent while another one is in the subsequent only if that rule of
/// their pair is followed.
///
/// Items are numbered, the first one 0, and a set of items is a bitset of `words()` words.
class RulePartners {
  public:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    RulePartners(const LivePairs& live, std::size_t items) : m_live(live), m_numbers(items, NONE) {}

    /// Starts with a first item and the later items of its pairs, ascending.
    void begin(Rank first, const std::vector<Rank>& partners);

    /// The number of an item, or NONE if it is in no such rule.
    std::uint32_t number(Rank item) const { return m_numbers[at(item)]; }
    std::size_t words() const { return m_words; }

    /// The items that may be in the subsequent while this one is in the antecedent.
    const std::uint64_t* after(std::uint32_t number) const {
        return m_row(std::size_t{2} * number);
    }

    /// The items that may be in the antecedent while this one is in the subsequent.
    const std::uint64_t* before(std::uint32_t number) const {
        return m_row(std::size_t{2} * number + 1);
    }

    static bool has(const std::uint64_t* items, std::uint32_t number) {
        return (items[number / 64] >> (number % 64) & 1) != 0;
    }

  private:
    const std::uint64_t* m_row(std::size_t row) const {
        assert(row < 2 * m_items.size());
        return &m_rows[row * m_words];
    }
    void m_addRule(std::uint32_t antecedent, std::uint32_t subsequent);

    const LivePairs& m_live;
    std::vector<std::uint32_t> m_numbers;  // by rank
    std::vector<Rank> m_items;             // by number
    std::size_t m_words = 0;
    std::vector<std::uint64_t> m_rows;  // of each item: those after it, those before it
};

}  // namespace quarvis::mining
