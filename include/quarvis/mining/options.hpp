#pragma once

#include <cstdint>
#include <limits>

#include <quarvis/mining/budget.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Which rules are proposed from a frequent item set.
enum class Splits {
    /// Each run of neighbours among the sorted items, but all of them, implies the others: of k
    /// items k(k + 1)/2 - 1 rules. What is found depends on the names of the items.
    RUNS,

    /// Each non-empty part of the items implies the others: of k items 2^k - 2 rules.
    ALL,
};

/// The values that a rule must have at least, and at most for the conviction; all bounds are
/// inclusive, and a NaN passes none.
struct Thresholds {
    /// @{
    /// Of the measure of that name (see `measures.hpp`).
    double minSupport = 0;
    double minConfidence = 0;
    double minLift = 0;
    double maxConviction = std::numeric_limits<double>::infinity();
    /// @}
};

/// The settings of a run.
struct MiningOptions {
    /// The least number of histories of an item set, and of a rule; a rule needs one at least. Not
    /// less than that of the index.
    std::uint32_t minCount = 5;

    /// The greatest number of items of a set, and so of the two sides of a rule together. 0 is no
    /// bound.
    std::uint32_t maxSize = 0;

    /// How long before the subsequent the antecedent may lie, in the unit of the times of the
    /// index, and how long the subsequent must not have occurred. 0 is the whole past.
    std::uint64_t window = 0;

    Splits splits = Splits::RUNS;  ///< The rules that are proposed.
    Thresholds thresholds;         ///< What a rule must have besides the least count.

    /// Threads that work on the run, the calling one among them; at least 1. The result does not
    /// depend on it.
    unsigned threads = 1;

    Budget budget;  ///< What the run may take; by default there is no bound.
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
