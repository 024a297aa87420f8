#include "index_assembly.hpp"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "index_parts.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

/// The number of histories that each item is in, by code.
template <class Time>
std::vector<std::uint32_t> countHistories(const RowsByHistory<Time>& rows, std::size_t items) {
    std::vector<std::uint32_t> counts(items);
    std::vector<std::uint32_t> last(items, NONE);  // the history that was counted last
    for (std::size_t history = 0; history < rows.historyCount(); ++history)
        for (std::size_t row = rows.begin(history); row < rows.end(history); ++row) {
            const Code item = rows.item(row);
            if (item == NO_ITEM || last[at(item)] == history)
                continue;
            last[at(item)] = static_cast<std::uint32_t>(history);
            ++counts[at(item)];
        }
    return counts;
}

/// Puts the names of the frequent items into the index, in their order. By code: the rank of an
/// item, or NONE.
std::vector<std::uint32_t> rankItems(const std::vector<std::uint32_t>& counts,
                                     const Dictionary& names, IndexParts index) {
    // A name that is in no row is no item.
    const std::uint32_t least = std::max<std::uint32_t>(index.minCount, 1);
    std::vector<Code> frequent;
    for (std::uint32_t code = 0; code < counts.size(); ++code)
        if (counts[code] >= least)
            frequent.push_back(Code{code});
    std::sort(frequent.begin(), frequent.end(),
              [&names](Code a, Code b) { return names.name(a) < names.name(b); });
    std::vector<std::uint32_t> ranks(counts.size(), NONE);
    for (const Code code : frequent) {
        ranks[at(code)] = static_cast<std::uint32_t>(index.counts.size());
        index.counts.push_back(counts[at(code)]);
        index.names += names.name(code);
        index.nameBegin.push_back(index.names.size());
    }
    return ranks;
}

/// A row of a history as it is sorted: by time, then by rank; a row without a frequent item has the
/// rank NONE.
struct WideKey {
    std::uint64_t time;
    std::uint32_t rank;
    auto operator<=>(const WideKey&) const = default;
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

/// Adds the transactions of one history, given by its sorted keys.
template <class Time>
void addHistory(const std::vector<Key<Time>>& keys, IndexParts index) {
    for (auto key = keys.begin(); key != keys.end();) {
        const Time time = timeOf(*key);
        ++index.transactionCount;
        const std::size_t begin = index.items.size();
        for (; key != keys.end() && timeOf(*key) == time; ++key) {
            const std::uint32_t rank = rankOf(*key);
            if (rank != NONE && (index.items.size() == begin || at(index.items.back()) != rank))
                index.items.push_back(Rank{rank});
        }
        if (index.items.size() == begin)
            continue;
        timesOf(index, time).push_back(time);
        index.itemBegin.push_back(static_cast<std::uint32_t>(index.items.size()));
    }
    index.historyBegin.push_back(static_cast<std::uint32_t>(index.itemBegin.size() - 1));
}

}  // namespace

template <class Time>
HistoryIndex assembleIndex(const RowsByHistory<Time>& rows, const Dictionary& names,
                           std::uint32_t minCount) {
    HistoryIndex made;
    IndexParts index(made);
    index.timeWidth = TimeWidth{sizeof(Time)};
    index.minCount = minCount;
    const std::vector<std::uint32_t> ranks =
        rankItems(countHistories(rows, names.size()), names, index);
    index.historyBegin.reserve(rows.historyCount() + 1);
    std::vector<Key<Time>> keys;
    for (std::size_t history = 0; history < rows.historyCount(); ++history) {
        keys.clear();
        // Rows stand in reverse; in their own order they are mostly sorted by time.
        for (std::size_t row = rows.end(history); row-- > rows.begin(history);) {
            const Code item = rows.item(row);
            keys.push_back(makeKey(rows.time(row), item == NO_ITEM ? NONE : ranks[at(item)]));
        }
        sortKeys(keys);
        addHistory<Time>(keys, index);
    }
    return made;
}

template HistoryIndex assembleIndex(const RowsByHistory<std::uint32_t>&, const Dictionary&,
                                    std::uint32_t);
template HistoryIndex assembleIndex(const RowsByHistory<std::uint64_t>&, const Dictionary&,
                                    std::uint32_t);

}  // namespace quarvis::mining
