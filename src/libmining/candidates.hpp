#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "found_sets.hpp"

namespace quarvis::mining {

/// The candidates for frequent sets of the next size, made from the frequent sets so far: of each
/// first item, each set with the last item of each later set of its class, in the order in which
/// `ItemSetWalk::count` counts them. They are taken a block of first items at a time, so that the
/// counts of a block stay few.
class Candidates {
  public:
    /// Of size `found.maxSize()` + 1, or of size 2 when there is none; `found` is linked and stays
    /// as it is until the last block was pruned. A block ends when it has `block` candidates.
    Candidates(FoundSets& found, std::size_t items, std::uint32_t minCount,
               std::size_t block = std::size_t{1} << 20);

    /// The size of the candidates.
    std::size_t size() const { return m_size; }

    /// Goes on to the next block; false when there is none.
    bool next();

    /// The first items of the block are [begin(), end()).
    std::size_t begin() const { return m_begin; }
    std::size_t end() const { return m_end; }

    /// The number of candidates of the block.
    std::size_t count() const { return m_count; }

    /// Keeps those candidates of the block that are frequent by these counts; how many there are.
    std::size_t prune(const std::vector<std::uint32_t>& counts);

    /// Adds the sets that were kept to the frequent sets; whether there is any.
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
