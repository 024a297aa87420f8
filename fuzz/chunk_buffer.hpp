#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

namespace fuzz {

/// A stream buffer that holds a few characters at a time, each chunk in newly allocated memory, so
/// that the address sanitizer detects reads before or beyond it. Optionally throws at the end of
/// its text, like a buffer of a broken device.
class ChunkBuffer : public std::streambuf {
  public:
    ChunkBuffer(std::string text, std::size_t chunkSize, bool fails = false)
        : m_text(std::move(text)), m_chunkSize(chunkSize), m_fails(fails) {}

  protected:
    int_type underflow() override {
        const std::size_t size = std::min(m_chunkSize, m_text.size() - m_next);
        if (size == 0 && m_fails)
            throw std::runtime_error("the device is broken");
        if (size == 0)
            return traits_type::eof();
        m_chunk = std::make_unique<char[]>(size);
        m_text.copy(m_chunk.get(), size, m_next);
        m_next += size;
        setg(m_chunk.get(), m_chunk.get(), m_chunk.get() + size);
        return traits_type::to_int_type(*gptr());
    }

  private:
    std::string m_text;
    std::size_t m_chunkSize;
    bool m_fails;
    std::size_t m_next = 0;
    std::unique_ptr<char[]> m_chunk;
};

}  // namespace fuzz
