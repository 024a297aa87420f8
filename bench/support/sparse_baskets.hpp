#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// Market baskets, one row and one entity each: many short ones of very many items that are drawn
/// by Zipf's law. Half of the items of a basket come from patterns, groups of items that are often
/// bought together, of which some are left out each time.
struct SparseBaskets {
    std::size_t baskets = 88'000;
    std::size_t items = 16'000;
    std::size_t patterns = 2500;
    double exponent = 1.05;  ///< Of the items.
    double meanSize = 10;    ///< Of a basket; the least is 1.
    std::uint64_t seed = 19930525;

    /// Writes the transaction file.
    void write(std::ostream& os) const;
};

}  // namespace bench
