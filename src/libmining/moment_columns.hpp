#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "arena.hpp"
#include "moment_words.hpp"
#include "rule_counter.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// A first item and the items after it, with a column each: the masks of the item in the words of
/// the first item (see `MomentWords`).
///
/// An item that is in many of the words has a dense column, with masks for every word: 16 bytes a
/// word, or 24 if any item is present anywhere. Other columns list the words that the item is in,
/// and take 4 bytes more for each. Histories with fewer than two items after the first are left
/// out, since they hold no set of three items.
class MomentColumns {
  public:
    /// The masks of an item in a word.
    struct Standing {
        std::uint64_t fresh = 0;
        std::uint64_t recent = 0;
    };

    struct Column {
        /// The words that the item is in, ascending; null in a dense column.
        const std::uint32_t* word;
        const Standing* standing;
        const std::uint64_t* present;  ///< Null if no item is present anywhere.
        std::size_t size;

        bool isDense() const { return word == nullptr; }

        /// The place of a word in the column, or `size` if the item is not in the word.
        std::size_t find(std::uint32_t of) const;
    };

    explicit MomentColumns(const Standings& standings);

    /// Fills the columns of a first item and its partners. Earlier columns are gone.
    void fill(Rank first, std::span<const RuleCounter::Partner> partners);

    const MomentWords& words() const { return m_words; }

    /// The column of the first item, which is dense.
    const Column& first() const { return m_first; }

    const Column& of(Rank item) const { return m_columns[m_numbers[at(item)]]; }
    bool has(Rank item) const { return m_numbers[at(item)] != NONE; }

    /// The cost of the last `fill`, in units of work.
    std::size_t cost() const { return m_cost; }

  private:
    static constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

    /// A column that is being filled.
    struct Draft {
        Rank item;
        std::size_t most;
        std::uint32_t* word;
        Standing* standing;
        std::uint64_t* present;
        std::size_t size;
    };

    /// A partner in a history of the first item.
    struct Hit {
        std::uint32_t number;  // of the column
        std::uint32_t after;   // entries from the first item to this one
    };

    void m_clear();
    void m_choosePlaces(Rank first);
    Draft m_draft(Rank item, std::size_t most, bool isDense);
    void m_put(Draft& draft, const MomentWords::Field& field, const Standings::Masks& masks);

    const Standings& m_standings;
    MomentWords m_words;
    std::vector<std::uint32_t> m_numbers;  // by rank, or NONE
    std::vector<Draft> m_drafts;
    std::vector<Column> m_columns;
    Column m_first{};
    std::vector<Standings::Place> m_places;
    std::unique_ptr<Hit[]> m_hits;  // by history
    std::size_t m_hitRoom = 0;
    std::vector<std::uint32_t> m_hitsEnd;  // by place
    std::size_t m_cost = 0;
    Arena<std::uint32_t> m_indices;
    Arena<Standing> m_bits;
    Arena<std::uint64_t> m_presentBits;
};

}  // namespace quarvis::mining
