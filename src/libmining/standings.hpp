#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "large_vector.hpp"
#include "run_control.hpp"
#include "shard.hpp"

namespace quarvis::mining {

/// The histories in the form in which rules are counted: bit masks over moments.
///
/// At a transaction, an item is recent if it occurred before, within the window, and new if it
/// occurs and is not recent. A rule "A => S" is met at a transaction if every item of A is recent
/// and every item of S is new. The moments of a history are the transactions at which some item is
/// new and some item is recent; no rule is met at any other. Each item that is new or recent at
/// some moment has three masks with a bit for each moment: new, recent, and present, which is
/// recent and occurring. So the moments at which a rule is met are an intersection of masks.
///
/// Histories with the same masks are kept once, with a weight; an event log shrinks to its
/// variants. An item of a history takes 12 bytes, and 16 bytes for each 64 moments, or 24 if any
/// item is present anywhere; without a window it takes one byte more. Making them takes two passes
/// over the shard. Threads may share them.
class Standings {
  public:
    /// The masks of an item in a history, of `words` words each.
    struct Masks {
        const std::uint64_t* fresh;    ///< The new mask; the recent one follows.
        const std::uint64_t* present;  ///< Null if no item is present anywhere.
        std::size_t words;

        const std::uint64_t* recent() const { return fresh + words; }

        /// The masks of the item that is `entries` entries later in the history.
        Masks after(std::size_t entries) const {
            return {fresh + 2 * words * entries,
                    present == nullptr ? nullptr : present + words * entries, words};
        }
    };

    /// Where an item is in a history.
    struct Place {
        std::uint32_t history;
        std::uint32_t entry;
    };

    /// Takes the items that are `relevant`, by rank. With a window of 0 all that occurred before is
    /// recent. Works in `threads` threads of a step.
    Standings(const Shard& shard, const std::vector<bool>& relevant, std::uint64_t window,
              unsigned threads, Step& step);

    /// The number of items of the index.
    std::size_t itemCount() const { return m_begin.size() - 1; }

    /// The number of kept histories. Some may be equal, since merging stops where it does not pay.
    std::size_t historyCount() const { return m_histories.size(); }

    /// The number of histories that a kept one stands for.
    std::uint32_t weight(std::size_t history) const { return m_histories[history].weight; }

    /// The number of words of each mask of a history.
    std::size_t words(std::size_t history) const { return m_histories[history].words; }

    /// The places of an item, by ascending history.
    std::span<const Place> places(Rank item) const {
        return {m_places.data() + m_begin[at(item)], m_begin[at(item) + 1] - m_begin[at(item)]};
    }

    /// The end of the entries of a history. Each entry is an item of the history; items ascend.
    std::size_t endEntry(std::size_t history) const {
        return history + 1 < m_histories.size() ? m_histories[history + 1].entry : m_items.size();
    }
    Rank item(std::size_t entry) const { return m_items[entry]; }

    /// The entry of an item in a history that holds it at `from` or after.
    std::size_t entryOf(const Place& from, Rank item) const {
        const auto begin = m_items.begin() + from.entry;
        const auto end = m_items.begin() + static_cast<std::ptrdiff_t>(endEntry(from.history));
        const auto found = std::lower_bound(begin, end, item);
        assert(found != end && *found == item);
        return static_cast<std::size_t>(found - m_items.begin());
    }

    Masks masks(std::size_t history, std::size_t entry) const {
        const History& of = m_histories[history];
        const std::size_t mask = of.mask + (entry - of.entry) * of.words;
        return {m_masks.data() + 2 * mask, anyPresent() ? m_present.data() + mask : nullptr,
                of.words};
    }

    /// Prefetches an entry and its masks.
    void prefetch(std::size_t history, std::size_t entry) const {
        const History& of = m_histories[history];
        const std::uint64_t* const masks =
            m_masks.data() + 2 * (of.mask + (entry - of.entry) * of.words);
        __builtin_prefetch(masks);
        __builtin_prefetch(masks + 8);
        __builtin_prefetch(m_items.data() + entry);
    }

    /// The order of the first occurrence of an entry's item: 0 in the first transaction, 1 at the
    /// first moment, and so on. Only without a window, and in a history of at most ORDERED_WORDS
    /// words.
    std::uint8_t order(std::size_t entry) const { return m_orders[entry]; }
    static constexpr std::size_t ORDERED_WORDS = 3;

    /// Prefetches an entry and its order.
    void prefetchOrder(std::size_t entry) const {
        __builtin_prefetch(m_orders.data() + entry);
        __builtin_prefetch(m_items.data() + entry);
    }

    /// Whether any item is present anywhere.
    bool anyPresent() const { return !m_present.empty(); }

    std::size_t bytes() const {
        return sizeof(History) * m_histories.size() + sizeof(Rank) * m_items.size() +
               sizeof(std::uint64_t) * (m_masks.size() + m_present.size()) + m_orders.size() +
               sizeof(std::uint32_t) * m_begin.size() + sizeof(Place) * m_places.size();
    }

  private:
    friend class StandingsBuilder;

    struct History {
        std::uint32_t entry;  // its first entry
        std::uint32_t weight;
        std::uint32_t words;
        std::size_t mask;  // where the masks of the first entry begin, in words
    };

    Standings() = default;
    void m_listPlaces(std::size_t items, unsigned threads, Step& step);

    std::vector<History> m_histories;
    LargeVector<Rank> m_items;             // by entry
    LargeVector<std::uint64_t> m_masks;    // by entry: new, then recent
    LargeVector<std::uint64_t> m_present;  // by entry; empty if no item is present anywhere
    LargeVector<std::uint8_t> m_orders;    // by entry; only without a window
    std::vector<std::uint32_t> m_begin;    // by rank
    LargeVector<Place> m_places;
};

}  // namespace quarvis::mining
