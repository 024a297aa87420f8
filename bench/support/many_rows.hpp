#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// A transaction file of one item a row that may be larger than memory: it is written in blocks.
/// The rows of an entity are adjacent, about ten of them, at ascending times; the names of the
/// entities ascend. Items are drawn by Zipf's law.
struct ManyRows {
    std::size_t rows = 40'000'000;
    std::size_t items = 20'000;
    double exponent = 1;
    std::uint64_t seed = 20070801;

    /// Writes the file. Returns the number of entities; each row is a transaction of its own.
    std::size_t write(std::ostream& os) const;
};

}  // namespace bench
