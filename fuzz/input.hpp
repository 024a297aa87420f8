#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "targets.hpp"

namespace fuzz {

/// Takes a case from bytes, first to last. Past the end every byte is 0, so that any bytes make a
/// case.
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

    /// As many characters as the next byte says, `most` at most.
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
