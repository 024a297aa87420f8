#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "found_sets.hpp"

namespace quarvis::mining {

/// Makes the candidates of the next size and keeps those that turn out frequent (R. Agrawal, R.
/// Srikant: Fast Algorithms for Mining Association Rules, 1994).
///
/// Frequent sets that differ only in their last item form a class. A candidate is a set and the
/// last item of a later set of its class, in the order in which `ItemSetWalk::count` counts.
/// Candidates are taken in blocks of first items, which bounds the memory for their counts.
class Candidates {
  public:
    /// The candidates have `found.maxSize()` + 1 items. `found` must be linked, and must not change
    /// until the last block is pruned. `items` is the number of items. A block ends after the first
    /// item with which it has `block` candidates or more.
    Candidates(FoundSets& found, std::size_t items, std::uint32_t minCount,
               std::size_t block = std::size_t{1} << 20);

    std::size_t size() const { return m_size; }

    /// Moves to the next block. Returns false when there is none.
    bool next();

    /// The first items of the block are [begin(), end()).
    std::size_t begin() const { return m_begin; }
    std::size_t end() const { return m_end; }

    std::size_t count() const { return m_count; }

    /// Keeps the candidates of the block whose counts reach the least count, and returns their
    /// number. `counts` has one count for each candidate, in order.
    std::size_t prune(const std::vector<std::uint32_t>& counts);

    /// Adds the kept sets to the frequent sets, after the last block. Returns whether there are
    /// any.
    bool finish();

  private:
    std::size_t m_countOf(std::size_t item) const;
    template <class Visit>
    void m_forEach(std::size_t item, Visit visit) const;

    FoundSets& m_found;
    std::size_t m_items;
    std::uint32_t m_minCount;
    std::size_t m_block;
    std::size_t m_size;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_count = 0;
    FoundSets m_kept;
};

}  // namespace quarvis::mining
