#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

namespace quarvis::mining {

/// An item as the search for item sets numbers it: by ascending count, and by rank where counts are
/// equal. Having the rarest items first keeps conditional databases small.
enum class WalkItem : std::uint32_t {};

/// The frequent items, those that at least `minCount` histories hold, in walk order.
class WalkOrder {
  public:
    WalkOrder(const HistoryIndex& index, std::uint32_t minCount);

    /// `counts` has, by rank, the number of histories that hold each item.
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

    /// The number of items of the index, frequent or not.
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
