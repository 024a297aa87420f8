#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "history_index.hpp"

namespace quarvis::rule {

/// The frequent item sets of one size, in lexicographic order: each as the set of the level below
/// that it extends, its prefix, and the item that it adds, its last. 16 bytes a set.
struct Level {
    std::vector<std::uint32_t> prefix;
    std::vector<Rank> last;
    std::vector<std::uint32_t> count;  ///< Histories that contain the set.

    /// Where in the level above the extensions of each set begin, and after them the end of the
    /// last; empty until that level is made.
    std::vector<std::uint32_t> extensions;

    std::size_t size() const { return last.size(); }

    /// Adds a set after all others. Throws `std::length_error` beyond 2^32 - 1 sets.
    void add(std::size_t prefixSet, Rank lastItem, std::uint32_t histories);
};

/// The levels found so far. A set is named by its size and its place in its level.
class FrequentSets {
  public:
    /// The number of levels: the greatest size of sets that there is a level of, empty or not.
    std::size_t levels() const { return m_levels.size(); }
    const Level& level(std::size_t size) const { return m_levels[size - 1]; }

    /// Adds the level of the next size, with the beginnings of the extensions that it holds of each
    /// set of the level below (for the first level, nothing).
    const Level& add(Level level, std::vector<std::uint32_t> extensions);

    /// Writes the items of a set to `items`, which has room for `size` of them, ascending.
    void items(std::size_t size, std::size_t set, Rank* items) const;

    /// The count of a set, given by its ascending items. Throws `std::out_of_range` when it is not
    /// there. Binary searches among the extensions of each prefix.
    std::uint32_t count(std::span<const Rank> items) const;

  private:
    std::vector<Level> m_levels;
};

}  // namespace quarvis::rule
