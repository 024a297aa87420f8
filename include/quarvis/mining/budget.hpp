#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Bounds on what a run may take; 0 means no bound. As the least count falls, n items can have up
/// to 2^n frequent sets, so a program that mines on behalf of others should set a budget.
struct Budget {
    /// The greatest number of items of a set. `MiningOptions::maxSize` leaves larger sets out; this
    /// bound ends the run when a larger set is frequent.
    std::size_t levels = 0;

    std::size_t sets = 0;  ///< Frequent item sets of all sizes together.

    /// Bytes of memory besides the index, as the engine estimates them: its copy of the histories,
    /// SET_BYTES for each set and RULE_BYTES for each rule.
    std::size_t bytes = 0;

    /// The bytes of a set: during the search, and in the result.
    static constexpr std::size_t SET_BYTES = 28;

    /// The bytes of a rule: while it is counted, and in the result if it has three items.
    static constexpr std::size_t RULE_BYTES = 144;

    std::chrono::nanoseconds time{0};  ///< Wall-clock time.
};

/// Thrown when a run exceeds its budget. Nothing else remains of the run.
class BudgetExceeded : public std::runtime_error {
  public:
    /// A bound of `Budget`.
    enum class Limit {
        LEVELS,  ///< Items of a set.
        SETS,    ///< Item sets.
        BYTES,   ///< Memory.
        TIME,    ///< Time.
    };

    /// The arguments are what the accessors of the same names return.
    BudgetExceeded(Limit limit, std::vector<std::size_t> levels, std::uint32_t advisedCount);

    /// The bound that was exceeded.
    Limit limit() const { return m_limit; }

    /// How far the run came: the number of sets that were found of each size from 1 on. From size 2
    /// on there may be more.
    const std::vector<std::size_t>& levels() const { return m_levels; }

    /// A least count to try next: the smallest one that at most half of the sets found so far
    /// reach.
    std::uint32_t advisedCount() const { return m_advisedCount; }

  private:
    static std::string s_message(Limit limit, const std::vector<std::size_t>& levels,
                                 std::uint32_t advisedCount);

    Limit m_limit;
    std::vector<std::size_t> m_levels;
    std::uint32_t m_advisedCount;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
