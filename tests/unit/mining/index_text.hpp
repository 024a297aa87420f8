#pragma once

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include <quarvis/mining/history_index.hpp>

namespace mining_tests {

/// The histories of an index in the short form of `oracle::tableOf`: "1:a,b 5:c | 2:a".
inline std::string historiesOf(const quarvis::mining::HistoryIndex& index) {
    std::ostringstream text;
    for (std::uint32_t number = 0; number < index.historyCount(); ++number) {
        const quarvis::mining::HistoryId history{number};
        text << (number == 0 ? "" : " | ");
        const std::size_t first = index.firstTransaction(history);
        for (std::size_t place = first; place < index.endTransaction(history); ++place) {
            const auto transaction = index.transaction(place);
            text << (place == first ? "" : " ") << transaction.time;
            char separator = ':';
            for (const quarvis::mining::Rank item : transaction.items) {
                text << separator << index.name(item);
                separator = ',';
            }
        }
    }
    return text.str();
}

/// The items of an index by rank, with their counts: "a 2, b 1".
inline std::string itemsOf(const quarvis::mining::HistoryIndex& index) {
    std::ostringstream text;
    for (std::uint32_t number = 0; number < index.itemCount(); ++number) {
        const quarvis::mining::Rank item{number};
        text << (number == 0 ? "" : ", ") << index.name(item) << ' ' << index.count(item);
    }
    return text.str();
}

/// All that an index tells.
inline std::string textOf(const quarvis::mining::HistoryIndex& index) {
    std::ostringstream text;
    text << "minCount " << index.minCount() << ", " << 8 * static_cast<int>(index.timeWidth())
         << " bits, " << index.transactionCount() << " transactions, " << index.occurrenceCount()
         << " occurrences\n"
         << itemsOf(index) << '\n'
         << historiesOf(index);
    return text.str();
}

}  // namespace mining_tests
