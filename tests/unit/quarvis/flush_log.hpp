#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace quarvis::test {

/// A stream buffer that records separately what is written between two flushes.
class FlushLog : public std::stringbuf {
  public:
    /// The texts that were flushed, one for each flush.
    const std::vector<std::string>& pieces() const { return m_pieces; }

    /// The text after the last flush.
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
