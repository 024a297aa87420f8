#include <quarvis/mining/budget.hpp>

#include <numeric>
#include <utility>

namespace quarvis::mining {

BudgetExceeded::BudgetExceeded(Limit limit, std::vector<std::size_t> levels,
                               std::uint32_t advisedCount)
    : std::runtime_error(s_message(limit, levels, advisedCount)),
      m_limit(limit),
      m_levels(std::move(levels)),
      m_advisedCount(advisedCount) {}

std::string BudgetExceeded::s_message(Limit limit, const std::vector<std::size_t>& levels,
                                      std::uint32_t advisedCount) {
    const char* name = "";
    switch (limit) {
        case Limit::LEVELS:
            name = "items of a set";
            break;
        case Limit::SETS:
            name = "item sets";
            break;
        case Limit::BYTES:
            name = "memory";
            break;
        case Limit::TIME:
            name = "time";
            break;
    }
    const std::size_t sets = std::accumulate(levels.begin(), levels.end(), std::size_t{0});
    return "the budget of " + std::string(name) + " is exceeded: " + std::to_string(sets) +
           " frequent sets of up to " + std::to_string(levels.size()) +
           " items were found so far; at most half of them have a count of " +
           std::to_string(advisedCount);
}

}  // namespace quarvis::mining
