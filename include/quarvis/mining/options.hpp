#pragma once

#include <cstdint>
#include <limits>

#include <quarvis/mining/budget.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Which rules are proposed from a frequent item set.
enum class Splits {
    /// The antecedent is a contiguous run of the sorted items, but not all of them: k(k + 1)/2 - 1
    /// rules for k items. The rules that are found depend on the names of the items.
    RUNS,

    /// The antecedent is any part of the items that is neither empty nor all: 2^k - 2 rules for k
    /// items.
    ALL,
};

/// Bounds on the measures of a rule: least values, and for the conviction a greatest one. All
/// bounds are inclusive. A NaN passes no bound.
struct Thresholds {
    /// @{
    /// Bounds the measure of that name (see `measures.hpp`).
    double minSupport = 0;
    double minConfidence = 0;
    double minLift = 0;
    double maxConviction = std::numeric_limits<double>::infinity();
    /// @}
};

/// The settings of a run.
struct MiningOptions {
    /// The least number of histories that hold an item set, and that a rule counts in; a rule
    /// always needs one. Must not be less than the least count of the index.
    std::uint32_t minCount = 5;

    /// The greatest number of items of a set, and so of both sides of a rule together. 0 means no
    /// bound.
    std::uint32_t maxSize = 0;

    /// How far back from a transaction its past reaches, in the unit of the index's times. All of
    /// the antecedent must have occurred in that past, and nothing of the subsequent. An age of
    /// exactly the window is within it. 0 is the whole past.
    std::uint64_t window = 0;

    Splits splits = Splits::RUNS;  ///< The rules that are proposed.
    Thresholds thresholds;         ///< What a rule must pass besides the least count.

    /// The number of threads that work on the run, including the calling one; at least 1. The
    /// result does not depend on it.
    unsigned threads = 1;

    Budget budget;  ///< What the run may take; no bound by default.
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
