#pragma once

#include <cstddef>
#include <random>

namespace moxtel_tests {

/// Numbers from a seed, to draw inputs by.
class Draws {
  public:
    explicit Draws(unsigned seed) : m_random(seed) {}

    /// A number from 0 to `n` - 1.
    std::size_t below(std::size_t n) { return m_random() % n; }
    bool oneIn(std::size_t n) { return below(n) == 0; }

  private:
    std::mt19937 m_random;
};

}  // namespace moxtel_tests
