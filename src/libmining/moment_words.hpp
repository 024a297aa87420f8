#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "standings.hpp"

namespace quarvis::mining {

/// The moments of histories that hold one item, packed into words of 64 bits: a bit for each moment
/// from the first to the last at which the item is new or recent.
///
/// The moments of a history stand next to each other, a field, and fields share words. A history
/// that stands for several is packed once for each binary digit of its weight, and all fields of a
/// word have one weight; so a count of histories is a sum of bit counts times the weights of words.
/// Histories with more than 64 moments have words of their own, after all others.
class MomentWords {
  public:
    /// A piece of the moments of a history: `bits` moments from `from` on, of the masks' word
    /// `source`, which stand from `to` on in the word `word`.
    struct Field {
        std::uint32_t place;  ///< Of the item, by its number among those that were packed.
        std::uint32_t word;
        std::uint32_t source;
        std::uint8_t from;
        std::uint8_t to;
        std::uint8_t bits;
    };

    /// Packs the moments of these places of one item.
    void make(const Standings& standings, std::span<const Standings::Place> places);

    const std::vector<Field>& fields() const { return m_fields; }
    std::size_t words() const { return m_weights.size(); }

    /// The fields of one history at most.
    std::size_t mostFields() const { return m_mostFields; }

    /// The bits of a field where it stands, from one of the masks of an item of its history.
    static std::uint64_t moved(const std::uint64_t* mask, const Field& field) {
        return (mask[field.source] >> field.from & ~std::uint64_t{0} >> (64 - field.bits))
               << field.to;
    }

    /// A number of words, ascending, with what counting asks of them.
    struct Selection {
        std::size_t size = 0;
        std::size_t shared = 0;  ///< How many of them histories share.
        const std::uint32_t* word = nullptr;
        const std::uint32_t* weight = nullptr;
        const std::uint64_t* top = nullptr;
    };

    /// Fills in weights and tops of the words of `selection`, which are given, to arrays with room.
    void describe(Selection& selection, std::uint32_t* weights, std::uint64_t* tops) const;

    /// Intersects `bits` of the words of a selection with `mask`, word by word, into `result`: the
    /// histories that have one of these bits. With `single`, no history has more than one.
    std::uint32_t intersect(const Selection& words, const std::uint64_t* bits,
                            const std::uint64_t* mask, std::uint64_t* result, bool single) const;

  private:
    /// The fields of the histories whose weights have one binary digit, in words of their own.
    struct Digit {
        std::vector<Field> fields;
        std::vector<std::uint64_t> tops;  // by word
        std::size_t used = 64;            // bits of the last word

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
