#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

namespace quarvis::mining {

/// An item as the search for item sets numbers it: by ascending count, equals by rank. The rarest
/// item first keeps the conditional histories of a first item few.
enum class WalkItem : std::uint32_t {};

/// The items that are in `minCount` histories or more, in the order of the walk.
class WalkOrder {
  public:
    WalkOrder(const HistoryIndex& index, std::uint32_t minCount);

    /// Of items that are in so many histories, by rank.
    WalkOrder(std::span<const std::uint32_t> counts, std::uint32_t minCount);

    std::size_t size() const { return m_ranks.size(); }
    Rank rank(WalkItem item) const {
        assert(at(item) < size());
        return m_ranks[at(item)];
    }
    std::uint32_t count(WalkItem item) const {
        assert(at(item) < size());
        return m_counts[at(item)];
    }

    /// The ranks of the index; those of the items are below.
    std::size_t ranks() const { return m_items.size(); }

    /// The item of a rank, or NOT_WALKED.
    WalkItem item(Rank rank) const {
        assert(at(rank) < ranks());
        return m_items[at(rank)];
    }
    static constexpr WalkItem NOT_WALKED{static_cast<std::uint32_t>(-1)};

  private:
    std::vector<Rank> m_ranks;            // by walk item
    std::vector<std::uint32_t> m_counts;  // by walk item
    std::vector<WalkItem> m_items;        // by rank
};

}  // namespace quarvis::mining
