#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quarvis::rule {

/// Numbers texts from 0 on in the order in which they are first met.
///
/// A hash table with linear probing, at most half full, of slots that hold the hash beside the
/// number, so that texts are compared only where their hashes agree: 32 to 64 bytes a text. A hash
/// takes in a word of the text at a time.
class Interner {
  public:
    using Number = std::uint32_t;

    Interner();

    /// The number of the text. A text that is new must outlive the interner. Throws
    /// `std::length_error` beyond 2^32 - 1 texts.
    Number number(std::string_view text);

    std::size_t size() const { return m_texts.size(); }

  private:
    static constexpr Number NONE = static_cast<Number>(-1);

    struct Slot {
        std::uint32_t hash;
        Number number;
    };

    Slot& m_find(std::string_view text, std::uint32_t hash);
    void m_grow();

    std::vector<Slot> m_slots;  // a power of two of them; the lowest bits of a hash say where
    std::vector<std::string_view> m_texts;
};

}  // namespace quarvis::rule
