#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Why a history that holds all items of a rule "A => S" does not count for it. Every transaction
/// is tested in the order given here. The history's miss is the first failed test of the
/// transaction that passes the most tests.
enum class Miss : std::uint8_t {
    SUBSEQUENT_APART,    ///< No transaction has all of S.
    OTHER_ORDER,         ///< All of S is there, but some item of A has not occurred by then.
    SAME_TIME,           ///< All of A has occurred, but some of it only in this transaction.
    TOO_LATE,            ///< All of A occurred before, but some item not within the window.
    NOT_NEW,             ///< All of A occurred within the window, but so did some item of S.
    ANTECEDENT_PRESENT,  ///< All other tests are passed, but the transaction has all of A.
};

/// How a history that holds all items of a rule counts for it.
struct Occurrence {
    HistoryId history;  ///< In the index that was searched.
    bool counts;        ///< Whether the history counts for the rule.

    /// @{
    /// Set only if the history counts: the time of the first transaction that the rule counts in,
    /// and for each item of the antecedent, in the order given, its last time before that.
    std::uint64_t time;
    std::span<const std::uint64_t> lastTimes;
    /// @}

    Miss miss;  ///< Set only if the history does not count.
};

/// The histories that hold all items of a rule, in the order of the index.
class Occurrences {
  public:
    /// The number of histories.
    std::size_t size() const { return m_histories.size(); }

    /// The occurrence at a place. Its times are valid as long as this object.
    Occurrence operator[](std::size_t place) const {
        assert(place < size());
        Occurrence occurrence = m_histories[place];
        if (occurrence.counts)
            occurrence.lastTimes =
                std::span(m_times).subspan(m_begin[place], m_begin[place + 1] - m_begin[place]);
        return occurrence;
    }

    /// The number of histories that count for the rule.
    std::uint32_t count() const { return m_count; }

    /// The number of histories that count for the reverse rule, "S => A".
    std::uint32_t reverseCount() const { return m_reverseCount; }

  private:
    friend class OccurrenceSearch;

    std::vector<Occurrence> m_histories;  // without their last times
    std::vector<std::size_t> m_begin = {0};
    std::vector<std::uint64_t> m_times;
    std::uint32_t m_count = 0;
    std::uint32_t m_reverseCount = 0;
};

/// Finds the occurrences of a rule, which need not be in any result. A window of 0 is the whole
/// past. Takes one pass over the index. Throws `std::invalid_argument` when a side is empty, when
/// an item is not in the index, and when an item comes twice.
Occurrences findOccurrences(const HistoryIndex& index, std::span<const Rank> antecedent,
                            std::span<const Rank> subsequent, std::uint64_t window);

}  // namespace quarvis::mining

#pragma GCC visibility pop
