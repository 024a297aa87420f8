#pragma once

#include <map>
#include <set>
#include <sstream>
#include <string>

#include <quarvis/history.hpp>

namespace quarvis::test {

/// The items of each transaction by entity and time.
using Histories = std::map<std::string, std::map<rule::History::Time, std::set<rule::Item>>>;

inline Histories historiesOf(const rule::TransactionSet& transactions) {
    Histories histories;
    for (const auto& [key, history] : transactions) {
        auto& copy = histories[key];
        for (const auto& [time, items] : history)
            copy[time] = {items.begin(), items.end()};
    }
    return histories;
}

/// The transactions of the file content `text`.
inline rule::TransactionSet transactionsIn(const std::string& text, char delim = '\t') {
    std::istringstream in(text);
    rule::TransactionSet transactions;
    transactions.readInto(in, delim);
    return transactions;
}

}  // namespace quarvis::test
