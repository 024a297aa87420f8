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

/// The masks of a first item and of the items after it, by the words of its moments.
///
/// An item that is in many of the words has a mask for each of them, in its place; of any other the
/// words in which it is are listed. Both take no more than 28 bytes a word of the first item and a
/// history of both items. Histories with fewer than two items that have a column are left out: they
/// tell nothing about sets of three items and more.
class MomentColumns {
  public:
    /// How an item stands in the moments of a word.
    struct Standing {
        std::uint64_t fresh = 0;
        std::uint64_t recent = 0;
    };

    struct Column {
        /// The words in which the item is, ascending; null where it has a place for every word.
        const std::uint32_t* word;
        const Standing* standing;
        const std::uint64_t* present;  ///< Null where no item is present anywhere.
        std::size_t size;

        bool isDense() const { return word == nullptr; }

        /// The place of a word, or the size where the item is not in it.
        std::size_t find(std::uint32_t of) const;
    };

    explicit MomentColumns(const Standings& standings);

    /// Fills the columns of a first item and its partners; columns of before are gone.
    void fill(Rank first, std::span<const RuleCounter::Partner> partners);

    const MomentWords& words() const { return m_words; }

    /// The first item, in all words.
    const Column& first() const { return m_first; }

    /// The column of an item that has one.
    const Column& of(Rank item) const { return m_columns[m_numbers[at(item)]]; }
    bool has(Rank item) const { return m_numbers[at(item)] != NONE; }

    /// What the last filling cost, in nanoseconds or so.
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

    /// An item with a column in a history of the first item.
    struct Hit {
        std::uint32_t number;  // of the column
        std::uint32_t after;   // how many entries after the first item
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
    std::unique_ptr<Hit[]> m_hits;  // of one history after the other
    std::size_t m_hitRoom = 0;
    std::vector<std::uint32_t> m_hitsEnd;  // by place
    std::size_t m_cost = 0;
    Arena<std::uint32_t> m_indices;
    Arena<Standing> m_bits;
    Arena<std::uint64_t> m_presentBits;
};

}  // namespace quarvis::mining
