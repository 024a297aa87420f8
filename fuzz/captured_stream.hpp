#pragma once

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace fuzz {

/// Captures what the C library writes to one of its standard streams during this object's lifetime.
/// Requires that the standard streams are variables.
class CapturedStream {
  public:
    explicit CapturedStream(std::FILE*& stream)
        : m_stream(stream), m_previous(stream), m_memory(open_memstream(&m_text, &m_size)) {
        if (m_memory == nullptr)
            throw std::bad_alloc();
        m_stream = m_memory;
    }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;
    ~CapturedStream() {
        m_stream = m_previous;
        std::fclose(m_memory);
        std::free(m_text);
    }

    std::string text() const {
        std::fflush(m_memory);
        return std::string(m_text, m_size);
    }

  private:
    std::FILE*& m_stream;
    std::FILE* m_previous;
    char* m_text = nullptr;
    std::size_t m_size = 0;
    std::FILE* m_memory;
};

}  // namespace fuzz
