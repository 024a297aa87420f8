#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <quarvis/mining/item_sets.hpp>

#include "run_control.hpp"
#include "standings.hpp"

namespace quarvis::mining {

/// For each frequent pair of items, the numbers of histories in which its two rules are met.
///
/// A pass over all histories adds each pair of items of a history, frequent or not, to a matrix of
/// counters. It reads memory in order and takes about a nanosecond for a pair in a history of up to
/// 64 moments, much less than keeping the moments of the pair would. The numbers then tell for
/// which pairs moments must be kept. A matrix that does not fit into a cache is made in strips of
/// first items, each in a pass of its own. If that takes too many passes, the pairs of each first
/// item are counted in the histories of that item. Takes 8 bytes a frequent pair.
class PairTallies {
  public:
    /// A number for each of the rules of a pair (a, b), a before b.
    struct Pair {
        std::uint32_t forward = 0;   ///< "a => b"
        std::uint32_t backward = 0;  ///< "b => a"
    };

    /// Counts for all pairs of `sets`, in `threads` threads of a step.
    PairTallies(const Standings& standings, const ItemSets& sets, unsigned threads, Step& step);

    /// The numbers of histories in which the rules of a pair are met. `pair` is its place in its
    /// level.
    const Pair& met(std::size_t pair) const { return m_met[pair]; }

  private:
    std::vector<Pair> m_met;
};

/// The numbers of histories in which the rules of the pair (a, b) count. Merges the places of both
/// items.
PairTallies::Pair countPair(const Standings& standings, Rank a, Rank b);

}  // namespace quarvis::mining
