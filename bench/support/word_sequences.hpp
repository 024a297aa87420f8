#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// Sequences of words drawn independently by Zipf's law, one row a word, whose time is its
/// position, from 1. A word may recur in a sequence. Many items are frequent, and nearly all sets
/// of them are so by chance.
struct WordSequences {
    std::size_t sequences = 36'000;
    std::size_t words = 14'000;  ///< To draw from.
    std::size_t length = 22;     ///< Of each sequence.
    double exponent = 1;
    std::uint64_t seed = 19350101;

    /// Writes the transaction file.
    void write(std::ostream& os) const;
};

}  // namespace bench
