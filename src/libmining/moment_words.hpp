#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "standings.hpp"

namespace quarvis::mining {

/// The histories of one item, packed into words of 64 bits, so that many are counted at once.
///
/// A history has a field: adjacent bits, one for each of its moments from the first to the last at
/// which the item is new or recent. Fields share words. A history of a weight above 1 has a field
/// for each bit that is set in the weight, and all fields of a word have one weight. So a number of
/// histories is a sum over words of a number of bits times a weight. Histories with more than 64
/// moments have words of their own, after all others.
class MomentWords {
  public:
    /// A piece of the moments of a history: `bits` bits, from bit `from` of the masks' word
    /// `source` to bit `to` of the word `word`.
    struct Field {
        std::uint32_t place;  ///< The number of the item's place among those packed.
        std::uint32_t word;
        std::uint32_t source;
        std::uint8_t from;
        std::uint8_t to;
        std::uint8_t bits;
    };

    /// Packs the histories of these places of one item. What was packed before is gone.
    void make(const Standings& standings, std::span<const Standings::Place> places);

    const std::vector<Field>& fields() const { return m_fields; }
    std::size_t words() const { return m_weights.size(); }

    /// The greatest number of fields of a history.
    std::size_t mostFields() const { return m_mostFields; }

    /// The bits of a field, moved to where the field is in its word. `mask` is a mask of an item of
    /// its history.
    static std::uint64_t moved(const std::uint64_t* mask, const Field& field) {
        return (mask[field.source] >> field.from & ~std::uint64_t{0} >> (64 - field.bits))
               << field.to;
    }

    /// Some of the words, ascending, with what counting needs of them.
    struct Selection {
        std::size_t size = 0;
        std::size_t shared = 0;  ///< The number of shared words; they come first.
        const std::uint32_t* word = nullptr;
        const std::uint32_t* weight = nullptr;
        const std::uint64_t* top = nullptr;
    };

    /// Fills in the weights and tops of the selected words, and `shared`. The arrays have room for
    /// `size` elements and must outlive the selection.
    void describe(Selection& selection, std::uint32_t* weights, std::uint64_t* tops) const;

    /// Intersects `bits` with `mask`, word by word of a selection, into `result`. Returns the
    /// number of histories that have a bit of the result. `single` promises that none has more than
    /// one.
    std::uint32_t intersect(const Selection& words, const std::uint64_t* bits,
                            const std::uint64_t* mask, std::uint64_t* result, bool single) const;

  private:
    /// The fields of one binary digit of the weights, in words of their own.
    struct Digit {
        std::vector<Field> fields;
        std::vector<std::uint64_t> tops;  // by word
        std::size_t used = 64;            // bits that are taken of the last word

        void add(Field field);
    };

    void m_addDigits();
    void m_addWide(const Standings& standings, std::span<const Standings::Place> places);

    std::vector<Field> m_fields;
    std::vector<std::uint32_t> m_weights;  // by word
    std::vector<std::uint64_t> m_tops;     // by word: the highest bit of each field
    std::vector<std::uint32_t> m_owners;   // by word: the history of one that is not shared
    std::size_t m_mostFields = 1;
    std::size_t m_shared = 0;           // the number of words that are shared
    std::vector<std::uint32_t> m_wide;  // places with more than 64 moments
    std::vector<Digit> m_digits;
};

}  // namespace quarvis::mining
