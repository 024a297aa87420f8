#include "forecast.hpp"

#include <algorithm>
#include <limits>

namespace quarvis::mining {

namespace {

constexpr std::size_t MOST = std::numeric_limits<std::size_t>::max();

/// n over k, or MOST where that overflows.
std::size_t choose(std::size_t n, std::size_t k) {
    if (k > n)
        return 0;
    k = std::min(k, n - k);
    std::size_t chosen = 1;
    for (std::size_t i = 1; i <= k; ++i) {
        const std::size_t factor = n - k + i;
        if (chosen > MOST / factor)
            return MOST;
        chosen = chosen * factor / i;
    }
    return chosen;
}

/// The greatest n for which n over k is at most `limit`. `limit` is at least 1.
std::size_t greatest(std::size_t k, std::size_t limit) {
    std::size_t low = k;
    std::size_t high = k + 1;
    while (choose(high, k) <= limit) {
        low = high;
        high *= 2;
    }
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        (choose(middle, k) <= limit ? low : high) = middle;
    }
    return low;
}

}  // namespace

/// Writes `sets` as the sum of (n_k over k), (n_(k-1) over k - 1) and so on, each n as great as
/// possible. The bound is the sum of (n_k over k + 1), (n_(k-1) over k) and so on.
std::size_t mostLarger(std::size_t size, std::size_t sets) {
    std::size_t most = 0;
    for (std::size_t k = size; k > 0 && sets > 0; --k) {
        const std::size_t n = k == 1 ? sets : greatest(k, sets);
        sets -= choose(n, k);
        const std::size_t larger = choose(n, k + 1);
        most = larger > MOST - most ? MOST : most + larger;
    }
    return most;
}

std::size_t forecast(const FoundSets& found, std::size_t items, Step& step) {
    const std::size_t size = found.maxSize();
    if (size == 1)
        return mostLarger(1, items);
    const LargeVector<std::uint32_t>& parents = found.level(size).parent;
    std::size_t joins = 0;
    std::size_t begin = 0;  // the first set with the parent at hand
    for (std::size_t set = 0; set < parents.size(); ++set) {
        ask(step, set);
        if (parents[set] != parents[begin])
            begin = set;
        joins += set - begin;
    }
    return std::min(joins, mostLarger(size, parents.size()));
}

}  // namespace quarvis::mining
