#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace bench {

/// A fingerprint of a sequence of values, to compare large contents that are never in memory
/// together: FNV-1a over 64 bits, a word at a time. It depends on the byte order of the machine.
class Digest {
  public:
    void add(std::uint64_t value) {
        m_hash = (m_hash ^ value) * 0x100000001b3U;
        m_hash ^= m_hash >> 32;
    }

    /// Takes the bits of the value, so values that compare equal may differ.
    void add(double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        add(bits);
    }

    void add(const std::string& text) {
        add(std::uint64_t{text.size()});
        for (std::size_t at = 0; at < text.size(); at += 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data() + at, text.size() - at < 8 ? text.size() - at : 8);
            add(word);
        }
    }

    std::uint64_t value() const { return m_hash; }

  private:
    std::uint64_t m_hash = 0xcbf29ce484222325U;
};

}  // namespace bench
