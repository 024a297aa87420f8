#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// Sequences of words that are drawn independently by Zipf's law, one row a word. The time of a
/// word is its position, from 1. A word may recur. Many items are frequent, and nearly all frequent
/// sets are so by chance.
struct WordSequences {
    std::size_t sequences = 36'000;
    std::size_t words = 14'000;  ///< The number of words to draw from.
    std::size_t length = 22;     ///< The number of words of a sequence.
    double exponent = 1;
    std::uint64_t seed = 19350101;

    /// Writes the transaction file.
    void write(std::ostream& os) const;
};

}  // namespace bench
