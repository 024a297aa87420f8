#pragma once

#include <iostream>
#include <streambuf>

namespace bench {

/// While it lives, discards what is written to standard error.
class Quiet {
  public:
    Quiet() : m_previous(std::cerr.rdbuf(&m_sink)) {}
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet() { std::cerr.rdbuf(m_previous); }

  private:
    class Sink : public std::streambuf {
        int_type overflow(int_type c) override { return traits_type::not_eof(c); }
        std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    };

    Sink m_sink;
    std::streambuf* m_previous;
};

}  // namespace bench
