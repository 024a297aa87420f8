#include "zipf.hpp"

#include <algorithm>
#include <cmath>

namespace bench {

Zipf::Zipf(std::size_t ranks, double exponent) {
    double weight = 0;
    for (std::size_t rank = 0; rank < ranks; ++rank) {
        weight += std::pow(static_cast<double>(rank + 1), -exponent);
        m_weightUpTo.push_back(weight);
    }
}

std::size_t Zipf::draw(Draws& draws) const {
    const double at = draws.uniform() * m_weightUpTo.back();
    const auto rank = std::upper_bound(m_weightUpTo.begin(), m_weightUpTo.end() - 1, at);
    return static_cast<std::size_t>(rank - m_weightUpTo.begin());
}

}  // namespace bench
