#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

namespace binding {

/// Counts the histories that hold an item set, frequent or not. Keeps the sorted list of histories
/// of each item, 4 bytes per item of a history. A count intersects the shortest of the items' lists
/// with the others.
class SetCounts {
  public:
    explicit SetCounts(const quarvis::mining::HistoryIndex& index);

    /// The number of histories that have all of the items, at any times. There must be an item.
    std::uint32_t count(std::span<const quarvis::mining::Rank> items);

  private:
    std::span<const std::uint32_t> m_historiesOf(quarvis::mining::Rank item) const;

    std::vector<std::size_t> m_begin;  // by rank; the last entry is the end
    std::vector<std::uint32_t> m_histories;
    std::vector<std::uint32_t> m_common;
};

}  // namespace binding
