#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace support {

/// Captures what is written to `std::cerr` during this object's lifetime. The stream keeps its
/// formatting.
class ErrorOutput {
  public:
    ErrorOutput() : m_previous(std::cerr.rdbuf(m_text.rdbuf())) {}
    ErrorOutput(const ErrorOutput&) = delete;
    ErrorOutput& operator=(const ErrorOutput&) = delete;
    ~ErrorOutput() { std::cerr.rdbuf(m_previous); }

    std::string text() const { return m_text.str(); }

  private:
    std::ostringstream m_text;
    std::streambuf* m_previous;
};

}  // namespace support
