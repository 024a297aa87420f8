#pragma once

#include <cstddef>
#include <ostream>
#include <variant>
#include <vector>

#include "oracle/table.hpp"

namespace oracle {

/// A rule, which need not be in any result.
struct Implication {
    Items antecedent;
    Items subsequent;
};

/// Why a history that has all items of a rule does not count for it. Each transaction has the first
/// of these reasons that holds for it; the history has the last reason of its transactions in this
/// order.
enum class Reason {
    SUBSEQUENT_APART,    ///< Not all of the subsequent is there.
    OTHER_ORDER,         ///< Some of the antecedent has not occurred by then.
    SAME_TIME,           ///< Some of the antecedent occurs then for the first time.
    TOO_LATE,            ///< Some of the antecedent last occurred longer ago than the window.
    NOT_NEW,             ///< Some of the subsequent occurred within the window before.
    ANTECEDENT_PRESENT,  ///< All of the antecedent is there too.
};

/// How a history counts.
struct Counted {
    Time time;                    ///< The first time at which the rule counts.
    std::vector<Time> lastTimes;  ///< By item of the antecedent: its last time before that.

    bool operator==(const Counted&) const = default;
};

/// A history that has all items of a rule, at whatever times.
struct Occurrence {
    std::size_t history;  ///< Its place in the table.
    std::variant<Counted, Reason> outcome;

    bool counts() const { return std::holds_alternative<Counted>(outcome); }
    bool operator==(const Occurrence&) const = default;
};

struct Occurrences {
    std::vector<Occurrence> histories;  ///< In the order of the table.
    std::size_t count;                  ///< Histories that count for the rule.
    std::size_t reverseCount;  ///< Histories that count for the rule with the sides exchanged.
};

/// Tests each history by the definition. A window of 0 is the whole past. Throws
/// `std::invalid_argument` when a side is empty or the sides share an item.
Occurrences occurrencesOf(const Implication& rule, const Table& table, Time window);

/// "0 at 5 after 1,3", or "0 TOO_LATE".
std::ostream& operator<<(std::ostream& os, const Occurrence& occurrence);
std::ostream& operator<<(std::ostream& os, Reason reason);

}  // namespace oracle
