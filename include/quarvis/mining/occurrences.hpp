#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Why a history that holds all items of a rule "A => S" does not count for it: the first test that
/// fails, in the order that is given here, at the transaction that gets furthest.
enum class Miss : std::uint8_t {
    SUBSEQUENT_APART,    ///< No transaction has all of S.
    OTHER_ORDER,         ///< Where all of S is, not all of A had occurred by then.
    SAME_TIME,           ///< All of A had, but some of it only then.
    TOO_LATE,            ///< All of A had before, but not all of it within the window.
    NOT_NEW,             ///< All of A had within the window, but so had some of S.
    ANTECEDENT_PRESENT,  ///< All is well, but the transaction has all of A too.
};

/// How a history that holds all items of a rule counts for it.
struct Occurrence {
    HistoryId history;  ///< In the index that was searched.
    bool counts;        ///< Whether it counts for the rule.

    /// @{
    /// Of a history that counts: the time of the first transaction that the rule counts in, and of
    /// each item of the antecedent, in the order in which they were given, the last time before.
    std::uint64_t time;
    std::span<const std::uint64_t> lastTimes;
    /// @}

    Miss miss;  ///< Of a history that does not count.
};

/// The histories that hold all items of a rule, in the order of the index.
class Occurrences {
  public:
    /// The number of histories.
    std::size_t size() const { return m_histories.size(); }

    /// An occurrence by its place. Valid as long as the occurrences are.
    Occurrence operator[](std::size_t place) const {
        assert(place < size());
        Occurrence occurrence = m_histories[place];
        if (occurrence.counts)
            occurrence.lastTimes =
                std::span(m_times).subspan(m_begin[place], m_begin[place + 1] - m_begin[place]);
        return occurrence;
    }

    /// The histories that count for the rule,
    std::uint32_t count() const { return m_count; }

    /// and for its reverse, "S => A".
    std::uint32_t reverseCount() const { return m_reverseCount; }

  private:
    friend class OccurrenceSearch;

    std::vector<Occurrence> m_histories;  // but for the last times
    std::vector<std::size_t> m_begin = {0};
    std::vector<std::uint64_t> m_times;
    std::uint32_t m_count = 0;
    std::uint32_t m_reverseCount = 0;
};

/// The occurrences of a rule, whether it is listed anywhere or not. A window of 0 is the whole
/// past. Takes one walk over the index. Throws `std::invalid_argument` when a side is empty, or
/// when an item is none of the index or comes twice.
Occurrences findOccurrences(const HistoryIndex& index, std::span<const Rank> antecedent,
                            std::span<const Rank> subsequent, std::uint64_t window);

}  // namespace quarvis::mining

#pragma GCC visibility pop
