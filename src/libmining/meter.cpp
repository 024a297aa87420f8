#include "meter.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace quarvis::mining {

BudgetExceeded exceeded(const OverBudget& over, std::vector<std::size_t> levels,
                        std::vector<std::uint32_t> counts) {
    std::uint32_t advised = 0;
    if (!counts.empty()) {
        const auto middle = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() / 2);
        std::nth_element(counts.begin(), middle, counts.end(), std::greater<>());
        advised = *middle == std::numeric_limits<std::uint32_t>::max() ? *middle : *middle + 1;
    }
    while (!levels.empty() && levels.back() == 0)
        levels.pop_back();
    return BudgetExceeded(over.limit(), std::move(levels), advised);
}

}  // namespace quarvis::mining
