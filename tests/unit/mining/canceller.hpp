#pragma once

#include <atomic>
#include <cstddef>
#include <limits>

#include <quarvis/mining/observer.hpp>

namespace mining_tests {

/// Cancels from the n-th time on that it is asked, counted from 0; never by default.
class Canceller : public quarvis::mining::Observer {
  public:
    explicit Canceller(std::size_t from = std::numeric_limits<std::size_t>::max()) : m_from(from) {}

    bool isCancelled() const override { return m_asked++ >= m_from; }
    std::size_t asked() const { return m_asked; }

  private:
    std::size_t m_from;
    mutable std::atomic<std::size_t> m_asked{0};
};

}  // namespace mining_tests
