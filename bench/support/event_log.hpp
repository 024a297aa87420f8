#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// The event log of a process: each case goes through one of the variants of the process, one row
/// an activity. A variant is a sequence of distinct activities in the common order of the process,
/// with skips and local swaps; a few activities are in nearly every variant, many are rare. The
/// variants are drawn by Zipf's law. The histories are few, long and much alike: frequent sets are
/// large.
struct EventLog {
    std::size_t cases = 6400;
    std::size_t variants = 1400;
    std::size_t activities = 22;
    std::size_t leastLength = 5;      ///< Of a variant, as the greatest.
    std::size_t greatestLength = 17;  ///< At most the number of activities.
    std::uint64_t seed = 6;

    /// Writes the transaction file. Times are in seconds: cases start within two years, and the
    /// pace of each is its own, with gaps of a few hours to several days.
    void write(std::ostream& os) const;
};

}  // namespace bench
