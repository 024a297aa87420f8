#pragma once

#include <cstddef>
#include <vector>

#include "draws.hpp"

namespace bench {

/// Draws ranks by Zipf's law: rank r, from 0 on, has a probability proportional to 1 / (r +
/// 1)^exponent. Stores a number for each rank; a draw is a binary search.
class Zipf {
  public:
    /// There must be at least one rank.
    Zipf(std::size_t ranks, double exponent);

    std::size_t draw(Draws& draws) const;

  private:
    std::vector<double> m_weightUpTo;  // by rank: its weight and those before it
};

}  // namespace bench
