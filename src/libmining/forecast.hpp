#pragma once

#include <cstddef>

#include "found_sets.hpp"

namespace quarvis::mining {

/// The greatest number of sets of `size` + 1 items of which all parts of `size` items are among
/// `sets` sets: the theorem of J. B. Kruskal (The Number of Simplices in a Complex, 1963) and
/// G. O. H. Katona. F. Geerts, B. Goethals and J. Van den Bussche show its use for frequent sets
/// (Tight Upper Bounds on the Number of Candidate Patterns, 2005). At most the greatest number that
/// the type holds.
std::size_t mostLarger(std::size_t size, std::size_t sets);

/// The greatest number of frequent sets of one item more than the largest that were found, of
/// `items` items: the bound above, or the number of pairs of sets that share all but the last
/// item, whichever is less. `found` is linked.
std::size_t forecast(const FoundSets& found, std::size_t items, Step& step);

}  // namespace quarvis::mining
