#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <quarvis/mining/index_bytes.hpp>
#include <quarvis/mining/mine.hpp>

#include "input.hpp"
#include "targets.hpp"
#include "unit/mining/index_file.hpp"

namespace fuzz {

namespace {

using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;

/// Larger sets are merely expensive.
constexpr std::uint32_t MOST_ITEMS_OF_A_SET = 3;

void require(bool holds, const char* what) {
    if (!holds)
        throw Failure(what);
}

/// Calls every accessor and checks that the content is in order.
void visit(const HistoryIndex& index) {
    for (std::uint32_t item = 0; item < index.itemCount(); ++item) {
        require(item == 0 || index.name(Rank{item - 1}) < index.name(Rank{item}),
                "names are in disorder");
        require(index.count(Rank{item}) >= index.minCount(), "a count is too low");
    }
    std::size_t occurrences = 0;
    std::size_t next = 0;
    for (std::uint32_t history = 0; history < index.historyCount(); ++history) {
        require(index.firstTransaction(HistoryId{history}) == next, "there is a gap");
        const std::size_t first = next;
        next = index.endTransaction(HistoryId{history});
        for (std::size_t place = first; place < next; ++place) {
            require(place == first || index.time(place - 1) < index.time(place),
                    "times are in disorder");
            const auto [time, items] = index.transaction(place);
            require(time == index.time(place) && !items.empty(), "a transaction is empty");
            for (const Rank& item : items)
                require(quarvis::mining::at(item) < index.itemCount() &&
                            (&item == &items.front() || *(&item - 1) < item),
                        "items are in disorder");
            occurrences += items.size();
        }
    }
    require(occurrences == index.occurrenceCount(), "occurrences are lost");
    require(next <= index.transactionCount(), "there are too many transactions");
}

/// Checks that the index can be mined. Its counts may come from a larger index, so its rules may be
/// anything.
void mineAll(const HistoryIndex& index) {
    MiningOptions options;
    options.minCount = index.minCount();
    options.maxSize = MOST_ITEMS_OF_A_SET;
    options.splits = quarvis::mining::Splits::ALL;
    quarvis::mining::Observer observer;
    for (const std::uint64_t window : {0U, 1000U}) {
        options.window = window;
        const quarvis::mining::Result result = mine(index, options, observer);
        require(result.itemSets.levels() >= 1, "there is no level");
    }
}

}  // namespace

void fuzzIndexBytes(Bytes bytes) {
    Input input(bytes);
    const bool isSealed = input.byte() % 2 != 0;
    const std::string rest = input.rest();
    const std::string file = isSealed ? mining_tests::sealed(rest) : rest;
    HistoryIndex index;
    try {
        index = quarvis::mining::indexFromBytes(file);
    } catch (const quarvis::mining::IndexFormatError&) {
        return;
    }
    require(indexToBytes(index) == file, "the bytes come back as others");
    visit(index);
    mineAll(index);
}

}  // namespace fuzz
