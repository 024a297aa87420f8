#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include <quarvis/mining/dictionary.hpp>
#include <quarvis/mining/history_index.hpp>

#include "run_control.hpp"

namespace quarvis::mining {

/// Groups rows by history with a counting sort. A first pass over the rows announces each of them;
/// after `makeRoom`, a second pass puts each into its place. `Time` has 32 or 64 bits.
template <class Time>
class RowsByHistory {
  public:
    /// Throws `std::length_error` beyond 2^32 - 2 histories.
    explicit RowsByHistory(std::size_t histories) : m_begin(s_checked(histories) + 1) {}

    /// Announces a row of the history.
    void announce(std::size_t history) { ++m_begin[history]; }

    /// Ends the announcements. Throws `std::length_error` beyond 2^32 - 2 rows.
    void makeRoom() {
        std::size_t sum = 0;
        for (std::uint32_t& begin : m_begin) {
            sum += begin;
            begin = static_cast<std::uint32_t>(s_checked(sum));
        }
        m_times.resize(sum);
        m_items.resize(sum);
    }

    /// Puts a row into its place. The rows of a history end up in reverse order.
    void put(std::size_t history, Time time, Code item) {
        assert(history < historyCount());
        const std::uint32_t place = --m_begin[history];
        assert(place < m_items.size());
        m_times[place] = time;
        m_items[place] = item;
    }

    void replace(std::size_t row, Time time, Code item) {
        m_times[row] = time;
        m_items[row] = item;
    }

    std::size_t historyCount() const { return m_begin.size() - 1; }
    std::size_t begin(std::size_t history) const { return m_begin[history]; }
    std::size_t end(std::size_t history) const { return m_begin[history + 1]; }
    Time time(std::size_t row) const { return m_times[row]; }
    Code item(std::size_t row) const { return m_items[row]; }

  private:
    static std::size_t s_checked(std::size_t number) {
        if (number >= std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("too many histories or rows to index");
        return number;
    }

    std::vector<std::uint32_t> m_begin;  // by history, and the end of the last
    std::vector<Time> m_times;
    std::vector<Code> m_items;
};

/// Which items an index has.
struct ItemChoice {
    std::uint32_t minCount;  ///< What `HistoryIndex::minCount` returns.
    std::uint32_t least;     ///< The number of histories that an item must be in.

    /// The items that at least `minCount` histories hold. A name that no history holds is not an
    /// item.
    static ItemChoice ofCount(std::uint32_t minCount) {
        return {minCount, std::max<std::uint32_t>(minCount, 1)};
    }

    /// All names.
    static ItemChoice all() { return {0, 0}; }
};

/// Makes an index of the rows: keeps the chosen items of `names`, ranks them by name, and sorts
/// each history by time and rank, without repetitions. Takes three passes over the rows and a sort
/// of each history. Adds its work history by history to `work`, unless that is null.
template <class Time>
HistoryIndex assembleIndex(RowsByHistory<Time> rows, const Dictionary& names, ItemChoice choice,
                           Work* work = nullptr);

extern template HistoryIndex assembleIndex(RowsByHistory<std::uint32_t>, const Dictionary&,
                                           ItemChoice, Work*);
extern template HistoryIndex assembleIndex(RowsByHistory<std::uint64_t>, const Dictionary&,
                                           ItemChoice, Work*);

}  // namespace quarvis::mining
