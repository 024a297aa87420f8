#pragma once

#include <cstddef>
#include <ostream>
#include <variant>
#include <vector>

#include "oracle/table.hpp"

namespace oracle {

/// A rule, whether it is listed anywhere or not.
struct Implication {
    Items antecedent;
    Items subsequent;
};

/// Why a history that has all items of a rule does not count for it: the first that holds of the
/// transaction that gets furthest in this list.
enum class Reason {
    SUBSEQUENT_APART,    ///< It does not have all of the subsequent.
    OTHER_ORDER,         ///< Not all of the antecedent had occurred by then, nor did it then.
    SAME_TIME,           ///< Something of the antecedent occurred then for the first time.
    TOO_LATE,            ///< Something of the antecedent was last there longer ago than the window.
    NOT_NEW,             ///< Something of the subsequent was there within the window before.
    ANTECEDENT_PRESENT,  ///< It has all of the antecedent too.
};

/// How a history counts.
struct Counted {
    Time time;                    ///< Of the first transaction that the rule counts in.
    std::vector<Time> lastTimes;  ///< The last before it of each item of the antecedent, in order.

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
    std::size_t count;                  ///< Histories that count for the rule,
    std::size_t reverseCount;           ///< and for the one with the sides exchanged.
};

/// Goes through the table from the definition. A window of 0 is the whole past. Throws
/// `std::invalid_argument` when a side is empty or both have an item in common.
Occurrences occurrencesOf(const Implication& rule, const Table& table, Time window);

/// "0 at 5 after 1,3", or "0 TOO_LATE".
std::ostream& operator<<(std::ostream& os, const Occurrence& occurrence);
std::ostream& operator<<(std::ostream& os, Reason reason);

}  // namespace oracle
