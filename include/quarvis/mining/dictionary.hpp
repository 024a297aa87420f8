#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// All names are stored in one block. A hash table with linear probing, at most half full, stores
/// each hash beside its code, so that names are compared only when their hashes agree. A name of n
/// bytes takes between n + 24 bytes and about twice as many.
class Dictionary {
  public:
    Dictionary();

    /// Returns the code of a name, which is added if it is new. Throws `std::length_error` beyond
    /// 2^31 - 1 names.
    Code add(std::string_view name);

    /// The number of names. Codes are less than this.
    std::size_t size() const { return m_begins.size() - 1; }

    /// The name of a code. Valid until the next `add`.
    std::string_view name(Code code) const;

    /// The number of bytes that the dictionary takes.
    std::size_t memory() const;

  private:
    struct Slot {
        std::uint32_t hash;
        std::uint32_t code;
    };

    void m_grow();

    std::string m_text;                         // all names
    std::vector<std::uint64_t> m_begins = {0};  // by code: where the name begins; then an end
    std::vector<Slot> m_slots;                  // a power of two of them
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
