#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// The event log of a process, one row an activity. Each case follows one of the variants of the
/// process. A variant is a sequence of distinct activities in the common order of the process, with
/// skips and local swaps. A few activities are in nearly every variant, and many are rare. Variants
/// are drawn by Zipf's law. Histories are few, long and much alike, so frequent sets are large.
struct EventLog {
    std::size_t cases = 6400;
    std::size_t variants = 1400;
    std::size_t activities = 22;
    std::size_t leastLength = 5;      ///< The least number of activities of a variant.
    std::size_t greatestLength = 17;  ///< The greatest one; at most the number of activities.
    std::uint64_t seed = 6;

    /// Writes the transaction file. Times are in seconds. Cases start within two years, and each
    /// has a pace of its own, with gaps of a few hours to several days.
    void write(std::ostream& os) const;
};

}  // namespace bench
