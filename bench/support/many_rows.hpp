#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// A transaction file of one item a row, written in blocks, so that it may be larger than memory.
/// An entity has about ten adjacent rows at ascending times. The names of the entities ascend.
/// Items are drawn by Zipf's law.
struct ManyRows {
    std::size_t rows = 40'000'000;
    std::size_t items = 20'000;
    double exponent = 1;
    std::uint64_t seed = 20070801;

    /// Writes the file. Returns the number of entities; each row is a transaction of its own.
    std::size_t write(std::ostream& os) const;
};

}  // namespace bench
