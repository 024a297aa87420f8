#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "run_control.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// In how many histories the rules between two items are met, for all frequent pairs.
///
/// They are counted history by history, in a matrix of first and second items: each history adds to
/// the counters of all pairs of its items, frequent or not. So memory is read in its order, and a
/// pair of items in a history of up to 64 moments takes about a nanosecond, much less than keeping
/// the moments of the pair does. The counts tell for which pairs they have to be kept. A matrix
/// that would not fit into a cache is made in strips of some first items each; where that would
/// take too many strips, the pairs of a first item are counted in the histories of that item.
class PairTallies {
  public:
    /// A number for each of the rules of a pair (a, b), a before b.
    struct Pair {
        std::uint32_t forward = 0;   ///< "a => b"
        std::uint32_t backward = 0;  ///< "b => a"
    };

    /// Counts for all pairs of `sets`, in several threads.
    PairTallies(const Standings& standings, const ItemSets& sets, unsigned threads, Step& step);

    /// The histories in which the rules of a pair are met, by its place in its level.
    const Pair& met(std::size_t pair) const { return m_met[pair]; }

  private:
    std::vector<Pair> m_met;
};

/// The histories in which the rules of the pair (a, b) count. A walk over the places of both items.
PairTallies::Pair countPair(const Standings& standings, Rank a, Rank b);

}  // namespace quarvis::mining
