#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

namespace binding {

/// Counts the histories that hold any set of items, frequent or not. Keeps the histories of each
/// item: 4 bytes an item of a history. A count is the intersection of the shortest list of the
/// items with the others.
class SetCounts {
  public:
    explicit SetCounts(const quarvis::mining::HistoryIndex& index);

    /// The histories that have all of the items, at whatever times; at least one item.
    std::uint32_t count(std::span<const quarvis::mining::Rank> items);

  private:
    std::span<const std::uint32_t> m_historiesOf(quarvis::mining::Rank item) const;

    std::vector<std::size_t> m_begin;  // by rank, and the end of the last
    std::vector<std::uint32_t> m_histories;
    std::vector<std::uint32_t> m_common;
};

}  // namespace binding
