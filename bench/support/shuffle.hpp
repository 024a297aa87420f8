#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "draws.hpp"

namespace bench {

/// The numbers below `count` in random order (the shuffle of Fisher and Yates).
inline std::vector<std::uint32_t> shuffledNumbers(std::size_t count, Draws& draws) {
    std::vector<std::uint32_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0U);
    for (std::size_t left = count; left > 1; --left)
        std::swap(numbers[left - 1], numbers[draws.below(left)]);
    return numbers;
}

}  // namespace bench
