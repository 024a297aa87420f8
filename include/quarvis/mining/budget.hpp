#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// What a run may take. The number of frequent item sets has no bound but 2^n as the least count
/// falls, so whoever runs for others sets one. 0 is no bound.
struct Budget {
    /// Items of a set. Unlike `MiningOptions::maxSize`, which leaves larger sets out, this ends the
    /// run when there is one.
    std::size_t levels = 0;

    std::size_t sets = 0;  ///< Frequent item sets, of all sizes together.

    /// Memory beside the index, as the engine reckons it: its copy of the histories, SET_BYTES a
    /// set and RULE_BYTES a rule.
    std::size_t bytes = 0;

    /// A set while it is searched, and in the result.
    static constexpr std::size_t SET_BYTES = 28;

    /// A rule while it is counted, and in the result with three items.
    static constexpr std::size_t RULE_BYTES = 144;

    std::chrono::nanoseconds time{0};  ///< By the clock on the wall.
};

/// Thrown out of a run that comes to the end of its budget. Nothing of the run remains but this.
class BudgetExceeded : public std::runtime_error {
  public:
    /// A bound of `Budget`.
    enum class Limit {
        LEVELS,  ///< Items of a set.
        SETS,    ///< Item sets.
        BYTES,   ///< Memory.
        TIME,    ///< Time.
    };

    /// With what the members of these names tell.
    BudgetExceeded(Limit limit, std::vector<std::size_t> levels, std::uint32_t advisedCount);

    /// Which bound it was.
    Limit limit() const { return m_limit; }

    /// How far the run came: the number of sets that were found of each size, from 1 on. From size
    /// 2 on there may be more.
    const std::vector<std::size_t>& levels() const { return m_levels; }

    /// A least count to try next: the least one that at most half of these sets have.
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
