#include "exceeded.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <utility>

#include <quarvis/mining/mine.hpp>

namespace quarvis::mining {

namespace {

/// How far a search came: the number of sets of each size from 1 on, and the counts of all sets.
struct Came {
    std::vector<std::size_t> levels;
    std::vector<std::uint32_t> counts;

    void add(std::size_t size, std::span<const std::uint32_t> countsOfSize) {
        levels.resize(std::max(levels.size(), size));
        levels[size - 1] += countsOfSize.size();
        counts.insert(counts.end(), countsOfSize.begin(), countsOfSize.end());
    }

    BudgetExceeded exceeded(BudgetExceeded::Limit limit) && {
        std::uint32_t advised = 0;
        if (!counts.empty()) {
            const auto middle = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() / 2);
            std::nth_element(counts.begin(), middle, counts.end(), std::greater<>());
            advised = *middle == std::numeric_limits<std::uint32_t>::max() ? *middle : *middle + 1;
        }
        while (!levels.empty() && levels.back() == 0)
            levels.pop_back();
        return BudgetExceeded(limit, std::move(levels), advised);
    }
};

}  // namespace

BudgetExceeded exceeded(const OverBudget& over, const WalkOrder& order,
                        const std::vector<const FoundSets*>& found) {
    Came came;
    for (std::uint32_t item = 0; item < order.size(); ++item) {
        const std::uint32_t count = order.count(WalkItem{item});
        came.add(1, {&count, 1});
    }
    for (const FoundSets* const sets : found)
        for (std::size_t size = 2; size <= sets->maxSize(); ++size)
            came.add(size, sets->level(size).count);
    return std::move(came).exceeded(over.limit());
}

BudgetExceeded exceeded(BudgetExceeded::Limit limit, const ItemSets& sets) {
    Came came;
    for (std::size_t size = 1; size <= sets.levels(); ++size)
        came.add(size, sets.level(size).count);
    return std::move(came).exceeded(limit);
}

}  // namespace quarvis::mining
