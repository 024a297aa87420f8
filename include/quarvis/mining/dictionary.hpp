#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Numbers names from 0 on in the order in which they are first met, and owns them.
///
/// The names stand one after the other in one block. A hash table with linear probing, at most half
/// full, holds the hash beside the number, so that names are compared only where their hashes
/// agree. With names of n bytes it takes n + 24 bytes a name at least, and about twice that at
/// most.
class Dictionary {
  public:
    Dictionary();

    /// The code of the name, which is added when it is new. Throws `std::length_error` beyond
    /// 2^31 - 1 names.
    Code add(std::string_view name);

    /// The number of names; codes are below it.
    std::size_t size() const { return m_begins.size() - 1; }

    /// The name of a code. Valid until the next `add`.
    std::string_view name(Code code) const;

    /// Bytes that the dictionary holds.
    std::size_t memory() const;

  private:
    struct Slot {
        std::uint32_t hash;
        std::uint32_t code;
    };

    void m_grow();

    std::string m_text;                         // all names
    std::vector<std::uint64_t> m_begins = {0};  // by code: where its name begins; and an end
    std::vector<Slot> m_slots;                  // a power of two of them
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
