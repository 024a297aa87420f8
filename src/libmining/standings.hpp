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

/// How the items of histories stand at the moments that rules can hold at.
///
/// A rule "A => S" is met at a transaction at which every item of S is new and every item of A is
/// recent: an item is recent at a time when it occurred before, within the window, and new when it
/// occurs and is not recent. The moments of a history are its transactions at which some item is
/// new and some item is recent; no rule is met at any other. For each item that is new or recent at
/// a moment there are three masks over the moments of the history: new, recent, and present, where
/// it is recent and occurs as well. So a set of items is met by the intersections of masks.
///
/// Histories that are alike in all masks are kept once, with a weight. Event logs shrink by that to
/// their variants. An item of a history takes 20 to 28 bytes for each 64 moments, and without a
/// window one more.
class Standings {
  public:
    /// Masks of one item in one history, `words` words each.
    struct Masks {
        const std::uint64_t* fresh;    ///< The others stand behind.
        const std::uint64_t* present;  ///< Null where no item is present anywhere.
        std::size_t words;

        const std::uint64_t* recent() const { return fresh + words; }

        /// Those of a later item of the history, by the number of entries between.
        Masks after(std::size_t entries) const {
            return {fresh + 2 * words * entries,
                    present == nullptr ? nullptr : present + words * entries, words};
        }
    };

    /// An item in a history.
    struct Place {
        std::uint32_t history;
        std::uint32_t entry;
    };

    /// Of the items of the index that `relevant` tells, by rank. A window of 0 is none: whatever
    /// occurred before is recent. Made in `threads` threads of a step.
    Standings(const Shard& shard, const std::vector<bool>& relevant, std::uint64_t window,
              unsigned threads, Step& step);

    /// The items of the index.
    std::size_t itemCount() const { return m_begin.size() - 1; }

    /// Histories that differ.
    std::size_t historyCount() const { return m_histories.size(); }

    /// The number of histories that one stands for.
    std::uint32_t weight(std::size_t history) const { return m_histories[history].weight; }

    /// The words of each mask of a history.
    std::size_t words(std::size_t history) const { return m_histories[history].words; }

    /// The places of an item, by ascending history.
    std::span<const Place> places(Rank item) const {
        return {m_places.data() + m_begin[at(item)], m_begin[at(item) + 1] - m_begin[at(item)]};
    }

    /// The items of a history stand at the entries up to this one, in ascending order.
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

    /// Has the memory of an item in a history fetched, which is about to be read.
    void prefetch(std::size_t history, std::size_t entry) const {
        const History& of = m_histories[history];
        const std::uint64_t* const masks =
            m_masks.data() + 2 * (of.mask + (entry - of.entry) * of.words);
        __builtin_prefetch(masks);
        __builtin_prefetch(masks + 8);
        __builtin_prefetch(m_items.data() + entry);
    }

    /// Without a window: the order in which the item of an entry occurred first in its history, 0
    /// in the first transaction and else 1 for the first moment and so on. The history has no more
    /// than ORDERED_WORDS words.
    std::uint8_t order(std::size_t entry) const { return m_orders[entry]; }
    static constexpr std::size_t ORDERED_WORDS = 3;

    /// Has the order of an entry fetched, which is about to be read with the item.
    void prefetchOrder(std::size_t entry) const {
        __builtin_prefetch(m_orders.data() + entry);
        __builtin_prefetch(m_items.data() + entry);
    }

    /// Whether any item is present anywhere.
    bool anyPresent() const { return !m_present.empty(); }

    /// The memory that they take.
    std::size_t bytes() const {
        return sizeof(History) * m_histories.size() + sizeof(Rank) * m_items.size() +
               sizeof(std::uint64_t) * (m_masks.size() + m_present.size()) + m_orders.size() +
               sizeof(std::uint32_t) * m_begin.size() + sizeof(Place) * m_places.size();
    }

  private:
    friend class StandingsBuilder;

    struct History {
        std::uint32_t entry;  // its first one
        std::uint32_t weight;
        std::uint32_t words;
        std::size_t mask;  // where the masks of the first entry begin, in words
    };

    Standings() = default;
    void m_listPlaces(std::size_t items, unsigned threads, Step& step);

    std::vector<History> m_histories;
    LargeVector<Rank> m_items;             // by entry
    LargeVector<std::uint64_t> m_masks;    // of the entries: new, then recent
    LargeVector<std::uint64_t> m_present;  // of the entries, unless no item is present anywhere
    LargeVector<std::uint8_t> m_orders;    // of the entries, without a window
    std::vector<std::uint32_t> m_begin;    // by rank
    LargeVector<Place> m_places;
};

}  // namespace quarvis::mining
