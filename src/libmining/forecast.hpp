#pragma once

#include <cstddef>

#include "found_sets.hpp"

namespace quarvis::mining {

/// The greatest number of sets of `size` + 1 items whose subsets of `size` items are all among
/// `sets` sets (J. B. Kruskal: The Number of Simplices in a Complex, 1963, and G. O. H. Katona). F.
/// Geerts, B. Goethals and J. Van den Bussche apply the theorem to frequent sets (Tight Upper
/// Bounds on the Number of Candidate Patterns, 2005). Saturates at the greatest value of the type.
std::size_t mostLarger(std::size_t size, std::size_t sets);

/// An upper bound for the number of frequent sets with one item more than the largest found, among
/// `items` items. It is the lesser of `mostLarger` and the number of pairs of sets that share all
/// but the last item. Takes one pass over the largest sets, which asks the step whether to end.
std::size_t forecast(const FoundSets& found, std::size_t items, Step& step);

}  // namespace quarvis::mining
