#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "live_pairs.hpp"

namespace quarvis::mining {

/// The items that may be in rules of three items and more with one first item, and which of them
/// may stand on the two sides of a rule: those whose pair has a rule that is followed.
///
/// The items are numbered, the first one 0, and sets of them are bitsets of `words()` words.
class RulePartners {
  public:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    RulePartners(const LivePairs& live, std::size_t items) : m_live(live), m_numbers(items, NONE) {}

    /// Begins with a first item, of which these items after it are partners, ascending.
    void begin(Rank first, const std::vector<Rank>& partners);

    /// The number of an item, or NONE if it is in no rule.
    std::uint32_t number(Rank item) const { return m_numbers[at(item)]; }
    std::size_t words() const { return m_words; }

    /// The items that may follow this one: they in the subsequent, it in the antecedent.
    const std::uint64_t* after(std::uint32_t number) const {
        return m_row(std::size_t{2} * number);
    }

    /// The items that may precede this one.
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
