#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "targets.hpp"

namespace fuzz {

/// Decodes a case from bytes, from first to last. Past the end every byte is 0, so any bytes are a
/// valid case.
class Input {
  public:
    explicit Input(Bytes bytes) : m_rest(bytes) {}

    bool empty() const { return m_rest.empty(); }

    std::uint8_t byte() {
        if (m_rest.empty())
            return 0;
        const std::uint8_t first = m_rest.front();
        m_rest = m_rest.subspan(1);
        return first;
    }

    /// The next byte gives the length, at most `most`; that many characters follow.
    std::string text(std::size_t most) {
        std::string text(byte() % (most + 1), '\0');
        for (char& c : text)
            c = static_cast<char>(byte());
        return text;
    }

    std::string rest() {
        const std::string text(m_rest.begin(), m_rest.end());
        m_rest = {};
        return text;
    }

  private:
    Bytes m_rest;
};

}  // namespace fuzz
