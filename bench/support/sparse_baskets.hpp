#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// Market baskets, each one row and one entity: many short ones, of very many items that are drawn
/// by Zipf's law. Half of the items of a basket come from patterns, which are groups of items that
/// are often bought together; each time some of the group are left out.
struct SparseBaskets {
    std::size_t baskets = 88'000;
    std::size_t items = 16'000;
    std::size_t patterns = 2500;
    double exponent = 1.05;  ///< The exponent of Zipf's law for the items.
    double meanSize = 10;    ///< The mean number of items of a basket; the least is 1.
    std::uint64_t seed = 19930525;

    /// Writes the transaction file.
    void write(std::ostream& os) const;
};

}  // namespace bench
