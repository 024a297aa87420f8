#include "index_assembly.hpp"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <string_view>
#include <type_traits>
#include <utility>

#include "index_parts.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

/// The cost of a row in a pass over the rows, in units of work.
constexpr std::uint64_t ROW_COST = 10;

/// Adds the work of a pass over a history.
template <class Time>
void tell(Work* work, const RowsByHistory<Time>& rows, std::size_t history) {
    if (work != nullptr)
        work->add(ROW_COST * (rows.end(history) - rows.begin(history) + 1));
}

/// The number of histories that hold each item, by code.
template <class Time>
std::vector<std::uint32_t> countHistories(const RowsByHistory<Time>& rows, std::size_t items,
                                          Work* work) {
    std::vector<std::uint32_t> counts(items);
    std::vector<std::uint32_t> last(items, NONE);  // by code: the last history that was counted
    for (std::size_t history = 0; history < rows.historyCount(); ++history) {
        tell(work, rows, history);
        for (std::size_t row = rows.begin(history); row < rows.end(history); ++row) {
            const Code item = rows.item(row);
            if (item == NO_ITEM || last[at(item)] == history)
                continue;
            last[at(item)] = static_cast<std::uint32_t>(history);
            ++counts[at(item)];
        }
    }
    return counts;
}

/// The first eight bytes of a name as a number; a shorter name is padded with zeros. If the numbers
/// of two names differ, they are in the order of the names.
std::uint64_t firstBytes(std::string_view name) {
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < sizeof bytes; ++i)
        bytes = bytes << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0U);
    return bytes;
}

/// The codes of the frequent items in the order of their names.
std::vector<Code> frequentInOrder(const std::vector<std::uint32_t>& counts, const Dictionary& names,
                                  std::uint32_t least) {
    struct Entry {
        std::uint64_t firstBytes;
        Code code;
    };
    std::vector<Entry> entries;
    for (std::uint32_t code = 0; code < counts.size(); ++code)
        if (counts[code] >= least)
            entries.push_back({firstBytes(names.name(Code{code})), Code{code}});
    std::sort(entries.begin(), entries.end(), [&names](const Entry& a, const Entry& b) {
        return a.firstBytes != b.firstBytes ? a.firstBytes < b.firstBytes
                                            : names.name(a.code) < names.name(b.code);
    });
    std::vector<Code> codes;
    codes.reserve(entries.size());
    for (const Entry& entry : entries)
        codes.push_back(entry.code);
    return codes;
}

/// Adds the items that at least `least` histories hold to the index, in the byte order of their
/// names. Returns, by code, the rank of each item, or NONE.
std::vector<std::uint32_t> rankItems(const std::vector<std::uint32_t>& counts,
                                     const Dictionary& names, std::uint32_t least,
                                     IndexParts index) {
    const std::vector<Code> frequent = frequentInOrder(counts, names, least);
    std::size_t bytes = 0;
    for (const Code code : frequent)
        bytes += names.name(code).size();
    index.names.reserve(bytes);
    index.nameBegin.reserve(frequent.size() + 1);
    index.counts.reserve(frequent.size());
    std::vector<std::uint32_t> ranks(counts.size(), NONE);
    for (const Code code : frequent) {
        ranks[at(code)] = static_cast<std::uint32_t>(index.counts.size());
        index.counts.push_back(counts[at(code)]);
        index.names += names.name(code);
        index.nameBegin.push_back(index.names.size());
    }
    return ranks;
}

/// The sort key of a row: its time, then its rank. A row without a frequent item has the rank NONE.
struct WideKey {
    std::uint64_t time;
    std::uint32_t rank;
    bool operator<(const WideKey& other) const {
        return time != other.time ? time < other.time : rank < other.rank;
    }
};

template <class Time>
using Key = std::conditional_t<std::is_same_v<Time, std::uint32_t>, std::uint64_t, WideKey>;

std::uint64_t makeKey(std::uint32_t time, std::uint32_t rank) {
    return std::uint64_t{time} << 32 | rank;
}
std::uint32_t timeOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(key >> 32);
}
std::uint32_t rankOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(key);
}

WideKey makeKey(std::uint64_t time, std::uint32_t rank) {
    return {time, rank};
}
std::uint64_t timeOf(const WideKey& key) {
    return key.time;
}
std::uint32_t rankOf(const WideKey& key) {
    return key.rank;
}

template <class Key>
void sortKeys(std::vector<Key>& keys) {
    if (!std::is_sorted(keys.begin(), keys.end()))
        std::sort(keys.begin(), keys.end());
}

std::vector<std::uint32_t>& timesOf(IndexParts& index, std::uint32_t) {
    return index.times32;
}
std::vector<std::uint64_t>& timesOf(IndexParts& index, std::uint64_t) {
    return index.times64;
}

/// Sorts the rows of each history in place, and keeps each frequent item of a transaction once, as
/// its rank. The kept rows of a history are moved to its beginning; returns their number by
/// history. Counts the transactions of each history into the index.
template <class Time>
std::vector<std::uint32_t> sortRows(RowsByHistory<Time>& rows,
                                    const std::vector<std::uint32_t>& ranks, IndexParts index,
                                    Work* work) {
    std::vector<std::uint32_t> kept(rows.historyCount());
    index.historyBegin.reserve(rows.historyCount() + 1);
    std::uint32_t transactions = 0;
    std::vector<Key<Time>> keys;
    for (std::size_t history = 0; history < rows.historyCount(); ++history) {
        tell(work, rows, history);
        keys.clear();
        // Rows are in reverse order. In their original order they are mostly sorted by time.
        for (std::size_t row = rows.end(history); row-- > rows.begin(history);) {
            const Code item = rows.item(row);
            keys.push_back(makeKey(rows.time(row), item == NO_ITEM ? NONE : ranks[at(item)]));
        }
        sortKeys(keys);
        std::size_t row = rows.begin(history);
        for (auto key = keys.begin(); key != keys.end();) {
            const Time time = timeOf(*key);
            const std::size_t begin = row;
            std::uint32_t last = NONE;
            for (; key != keys.end() && timeOf(*key) == time; ++key)
                if (rankOf(*key) != last) {
                    last = rankOf(*key);
                    if (last != NONE)
                        rows.replace(row++, time, Code{last});
                }
            ++index.transactionCount;
            transactions += row != begin ? 1 : 0;
        }
        kept[history] = static_cast<std::uint32_t>(row - rows.begin(history));
        index.historyBegin.push_back(transactions);
    }
    return kept;
}

/// Fills the arrays of transactions, whose sizes are known beforehand.
template <class Time>
void fillTransactions(const RowsByHistory<Time>& rows, const std::vector<std::uint32_t>& kept,
                      IndexParts index, Work* work) {
    std::vector<Time>& times = timesOf(index, Time());
    times.reserve(index.historyBegin.back());
    index.itemBegin.reserve(index.historyBegin.back() + std::size_t{1});
    index.items.reserve(std::accumulate(kept.begin(), kept.end(), std::size_t{0}));
    for (std::size_t history = 0; history < rows.historyCount(); ++history) {
        tell(work, rows, history);
        for (std::size_t row = rows.begin(history); row < rows.begin(history) + kept[history];
             ++row) {
            if (row == rows.begin(history) || rows.time(row) != times.back()) {
                if (!index.items.empty())
                    index.itemBegin.push_back(static_cast<std::uint32_t>(index.items.size()));
                times.push_back(rows.time(row));
            }
            index.items.push_back(Rank{static_cast<std::uint32_t>(at(rows.item(row)))});
        }
    }
    if (!index.items.empty())
        index.itemBegin.push_back(static_cast<std::uint32_t>(index.items.size()));
    assert(index.itemBegin.size() == times.size() + 1);
}

}  // namespace

template <class Time>
HistoryIndex assembleIndex(RowsByHistory<Time> rows, const Dictionary& names, ItemChoice choice,
                           Work* work) {
    HistoryIndex made;
    IndexParts index(made);
    index.timeWidth = TimeWidth{sizeof(Time)};
    index.minCount = choice.minCount;
    const std::vector<std::uint32_t> ranks =
        rankItems(countHistories(rows, names.size(), work), names, choice.least, index);
    const std::vector<std::uint32_t> kept = sortRows(rows, ranks, index, work);
    fillTransactions(rows, kept, index, work);
    return made;
}

template HistoryIndex assembleIndex(RowsByHistory<std::uint32_t>, const Dictionary&, ItemChoice,
                                    Work*);
template HistoryIndex assembleIndex(RowsByHistory<std::uint64_t>, const Dictionary&, ItemChoice,
                                    Work*);

}  // namespace quarvis::mining
