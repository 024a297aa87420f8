#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace quarvis::test {

/// A stream buffer that keeps what is written from one flush to the next apart.
class FlushLog : public std::stringbuf {
  public:
    /// What each flush found.
    const std::vector<std::string>& pieces() const { return m_pieces; }

    /// What was not flushed.
    std::string rest() const { return str(); }

  protected:
    int sync() override {
        m_pieces.push_back(str());
        str("");
        return 0;
    }

  private:
    std::vector<std::string> m_pieces;
};

}  // namespace quarvis::test
