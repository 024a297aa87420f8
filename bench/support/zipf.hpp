#pragma once

#include <cstddef>
#include <vector>

#include "draws.hpp"

namespace bench {

/// Draws ranks by Zipf's law: rank r, from 0, with a probability in proportion to
/// 1 / (r + 1)^exponent. Keeps a number for each rank; a draw is a binary search.
class Zipf {
  public:
    /// For one rank or more.
    Zipf(std::size_t ranks, double exponent);

    std::size_t draw(Draws& draws) const;

  private:
    std::vector<double> m_weightUpTo;  // by rank: its weight and those of all before it
};

}  // namespace bench
