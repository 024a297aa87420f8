#pragma once

#include <cstdint>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// The index with the transactions of each history put to its times in another order, so that each
/// order is equally likely: what a table would be whose histories are known, but not their order.
/// Items, counts and the times of each history stay, and with them all frequent item sets.
///
/// Equal indexes and seeds give equal results on any machine; the draws for a history depend on its
/// number and the seed alone (D. E. Knuth, The Art of Computer Programming, vol. 2, 3.4.2 P, with
/// numbers of SplitMix64; G. Steele, D. Lea, C. Flood: Fast Splittable Pseudorandom Number
/// Generators, OOPSLA 2014). Numbers begin with `first`: a slice that is given the number of its
/// first history is shuffled as it is in the whole. Takes one walk over the index, and as much
/// memory.
HistoryIndex shuffleTimes(const HistoryIndex& index, std::uint64_t seed, std::uint64_t first = 0);

}  // namespace quarvis::mining

#pragma GCC visibility pop
