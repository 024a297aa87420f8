#include <quarvis/mining/history_index.hpp>

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "index_text.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::historiesOf;
using mining_tests::itemsOf;
using mining_tests::textOf;

HistoryIndex fourHistories(TimeWidth width = TimeWidth::BITS_32) {
    return support::indexOf(oracle::tableOf({"1:a,b 5:c", "3:d", "2:a 4:b,c 6:a", "7:b"}), 2,
                            width);
}

TEST(Slice, HasTheHistoriesOfItsRange) {
    const HistoryIndex index = fourHistories();
    ASSERT_EQ("1:a,b 5:c |  | 2:a 4:b,c 6:a | 7:b", historiesOf(index));
    struct Row {
        std::uint32_t begin;
        std::uint32_t end;
        const char* histories;
        std::size_t occurrences;
    };
    const Row rows[] = {
        {0, 4, "1:a,b 5:c |  | 2:a 4:b,c 6:a | 7:b", 8},
        {0, 1, "1:a,b 5:c", 3},
        {1, 2, "", 0},
        {1, 3, " | 2:a 4:b,c 6:a", 4},
        {2, 4, "2:a 4:b,c 6:a | 7:b", 5},
        {3, 4, "7:b", 1},
        {0, 0, "", 0},
        {2, 2, "", 0},
        {4, 4, "", 0},
    };
    for (const auto& [begin, end, histories, occurrences] : rows) {
        const HistoryIndex slice = index.slice(HistoryId{begin}, HistoryId{end});
        EXPECT_EQ(end - begin, slice.historyCount());
        EXPECT_EQ(histories, historiesOf(slice)) << begin << " to " << end;
        EXPECT_EQ(occurrences, slice.occurrenceCount()) << begin << " to " << end;
    }
}

TEST(Slice, HasTheItemsAndCountsOfTheWhole) {
    const HistoryIndex slice = fourHistories().slice(HistoryId{3}, HistoryId{4});
    EXPECT_EQ("a 2, b 3, c 2", itemsOf(slice));
    EXPECT_EQ(2U, slice.minCount());
}

TEST(Slice, KeepsTheWidthOfTimes) {
    const HistoryIndex slice = fourHistories(TimeWidth::BITS_64).slice(HistoryId{2}, HistoryId{3});
    EXPECT_EQ(TimeWidth::BITS_64, slice.timeWidth());
    EXPECT_EQ("2:a 4:b,c 6:a", historiesOf(slice));
}

TEST(Slice, OfASliceIsOneOfTheWhole) {
    const HistoryIndex index = fourHistories();
    EXPECT_EQ(textOf(index.slice(HistoryId{2}, HistoryId{3})),
              textOf(index.slice(HistoryId{1}, HistoryId{4}).slice(HistoryId{1}, HistoryId{2})));
}

TEST(Slice, OutlivesTheWhole) {
    HistoryIndex index = fourHistories();
    const HistoryIndex slice = index.slice(HistoryId{0}, HistoryId{1});
    index = HistoryIndex();
    EXPECT_EQ("1:a,b 5:c", historiesOf(slice));
}

/// Four bytes a history, eight a transaction and four an item of a transaction. With times of 64
/// bits a transaction takes four more.
TEST(HistoryIndex, TellsItsMemory) {
    EXPECT_GE(fourHistories().memory(), 4 * 4U + 6 * 8U + 8 * 4U);
    EXPECT_GE(fourHistories(TimeWidth::BITS_64).memory(), 4 * 4U + 6 * 12U + 8 * 4U);
    EXPECT_GT(fourHistories().memory(), fourHistories().slice(HistoryId{0}, HistoryId{1}).memory());
}

}  // namespace
}  // namespace quarvis::mining
