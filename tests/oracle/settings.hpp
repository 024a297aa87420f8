#pragma once

#include <cstdint>
#include <limits>
#include <ostream>

namespace oracle {

/// The settings of a run. All bounds are inclusive.
struct Settings {
    /// The least number of histories that hold a frequent item set, and that a rule counts in.
    std::uint32_t minCount = 5;

    double minSupport = 0;
    double minConfidence = 0;
    double minLift = 0;
    double maxConviction = std::numeric_limits<double>::infinity();

    std::uint32_t maxOrder = 0;    ///< Greatest order of a rule; 0: until the search runs out.
    std::uint64_t windowSize = 0;  ///< In units of time; 0: no window.

    /// Whether every split of a frequent set is proposed, not only those whose antecedent is a
    /// contiguous run of the items.
    bool allSplits = false;
};

std::ostream& operator<<(std::ostream& os, const Settings& settings);

}  // namespace oracle
