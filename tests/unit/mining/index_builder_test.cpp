#include <quarvis/mining/index_builder.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "index_text.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::historiesOf;
using mining_tests::itemsOf;
using mining_tests::textOf;
using namespace std::string_literals;

TEST(HistoryIndex, HasNoHistoriesAtFirst) {
    const HistoryIndex index;
    EXPECT_EQ("minCount 0, 32 bits, 0 transactions, 0 occurrences\n\n", textOf(index));
    EXPECT_EQ(0U, index.historyCount());
}

TEST(IndexBuilder, WithoutRowsMakesAnIndexWithoutHistories) {
    IndexBuilder builder;
    EXPECT_EQ("minCount 3, 32 bits, 0 transactions, 0 occurrences\n\n", textOf(builder.freeze(3)));
}

TEST(IndexBuilder, SortsTheRowsOfEachEntityByTime) {
    IndexBuilder builder;
    builder.add("bob", 5, "x");
    builder.add("ann", 9, "y");
    builder.add("bob", 2, "y");
    builder.add("ann", 1, "x");
    builder.add("bob", 3, "z");
    EXPECT_EQ("2:y 3:z 5:x | 1:x 9:y", historiesOf(builder.freeze(1)));
}

TEST(IndexBuilder, NumbersHistoriesAsTheirEntitiesAreMet) {
    IndexBuilder builder;
    builder.add("zoe", 1, "x");
    builder.add("ann", 1, "y");
    builder.add("zoe", 2, "x");
    builder.add("", 1, "z");
    ASSERT_EQ(3U, builder.entities().size());
    EXPECT_EQ("zoe", builder.entities().name(Code{0}));
    EXPECT_EQ("ann", builder.entities().name(Code{1}));
    EXPECT_EQ("", builder.entities().name(Code{2}));
    EXPECT_EQ("1:x 2:x | 1:y | 1:z", historiesOf(builder.freeze(1)));
}

TEST(IndexBuilder, TakesRowsOfOneEntityAndTimeAsOneTransaction) {
    IndexBuilder builder;
    builder.add("ann", 1, "b");
    builder.add("ann", 1, "a");
    builder.add("bob", 1, "a");
    builder.add("ann", 2, "c");
    builder.beginRow("ann", 1);
    builder.addItem("c");
    builder.addItem("b");
    const HistoryIndex index = builder.freeze(1);
    EXPECT_EQ("1:a,b,c 2:c | 1:a", historiesOf(index));
    EXPECT_EQ(3U, index.transactionCount());
    EXPECT_EQ(5U, index.occurrenceCount());
}

TEST(IndexBuilder, TakesRepeatedItemsOnce) {
    IndexBuilder builder;
    builder.beginRow("ann", 1);
    for (const char* item : {"b", "a", "b", "b", "a"})
        builder.addItem(item);
    builder.add("ann", 4, "b");
    builder.add("bob", 1, "b");
    const HistoryIndex index = builder.freeze(1);
    EXPECT_EQ("1:a,b 4:b | 1:b", historiesOf(index));
    EXPECT_EQ("a 1, b 2", itemsOf(index));
}

TEST(IndexBuilder, CountsTransactionsWithoutItems) {
    IndexBuilder builder;
    builder.beginRow("ann", 1);
    builder.beginRow("ann", 2);
    builder.beginRow("bob", 1);
    builder.beginRow("bob", 1);
    builder.add("ann", 3, "a");
    builder.beginRow("ann", 3);
    EXPECT_EQ("minCount 1, 32 bits, 4 transactions, 1 occurrences\na 1\n3:a | ",
              textOf(builder.freeze(1)));
}

TEST(IndexBuilder, KeepsTheItemsThatAreInEnoughHistories) {
    struct Row {
        std::uint32_t minCount;
        const char* items;
        const char* histories;
        std::size_t occurrences;
    };
    // Item a is in three histories, b in two, and c in one, which has it three times.
    const Row rows[] = {
        {0, "a 3, b 2, c 1", "1:a,b 2:c 3:c 4:c | 1:a 2:a,b | 1:a | ", 9},
        {1, "a 3, b 2, c 1", "1:a,b 2:c 3:c 4:c | 1:a 2:a,b | 1:a | ", 9},
        {2, "a 3, b 2", "1:a,b | 1:a 2:a,b | 1:a | ", 6},
        {3, "a 3", "1:a | 1:a 2:a | 1:a | ", 4},
        {4, "", " |  |  | ", 0},
        {std::numeric_limits<std::uint32_t>::max(), "", " |  |  | ", 0},
    };
    for (const auto& [minCount, items, histories, occurrences] : rows) {
        IndexBuilder builder;
        builder.add("e0", 1, "a");
        builder.add("e0", 1, "b");
        for (const std::uint64_t time : {2U, 3U, 4U})
            builder.add("e0", time, "c");
        builder.add("e1", 1, "a");
        builder.add("e1", 2, "a");
        builder.add("e1", 2, "b");
        builder.add("e2", 1, "a");
        builder.beginRow("e3", 1);
        const HistoryIndex index = builder.freeze(minCount);
        EXPECT_EQ(items, itemsOf(index)) << minCount;
        EXPECT_EQ(histories, historiesOf(index)) << minCount;
        EXPECT_EQ(minCount, index.minCount());
        EXPECT_EQ(8U, index.transactionCount()) << minCount;
        EXPECT_EQ(occurrences, index.occurrenceCount()) << minCount;
    }
}

TEST(IndexBuilder, RanksItemsByTheBytesOfTheirNames) {
    const std::vector<std::string> sorted = {"",     "\0"s,  "\x01",     " ",   "B",
                                             "a",    "a\0"s, "aa",       "ab",  "b",
                                             "\x7f", "\x80", "\xc3\xa9", "\xff"};
    IndexBuilder builder;
    for (std::size_t i = sorted.size(); i-- > 0;)
        builder.add("ann", i, sorted[i]);
    const HistoryIndex index = builder.freeze(1);
    ASSERT_EQ(sorted.size(), index.itemCount());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        EXPECT_EQ(sorted[i], index.name(Rank(i)));
        ASSERT_EQ(1U, index.items(i).size());
        EXPECT_EQ(Rank(i), index.items(i)[0]);
    }
}

TEST(IndexBuilder, TakesTimesUpToTheirWidth) {
    constexpr std::uint64_t greatest = std::numeric_limits<std::uint32_t>::max();
    IndexBuilder builder;
    builder.add("ann", greatest, "a");
    builder.add("ann", 0, "b");
    EXPECT_THROW(builder.beginRow("ann", greatest + 1), std::out_of_range);
    EXPECT_THROW(builder.beginRow("bob", std::numeric_limits<std::uint64_t>::max()),
                 std::out_of_range);
    EXPECT_EQ(1U, builder.entities().size());
    EXPECT_EQ("0:b 4294967295:a", historiesOf(builder.freeze(1)));
}

TEST(IndexBuilder, TakesTimesOf64BitsWhereItIsToldTo) {
    IndexBuilder builder(TimeWidth::BITS_64);
    builder.add("ann", std::numeric_limits<std::uint64_t>::max(), "c");
    builder.add("ann", std::uint64_t{1} << 32, "b");
    builder.add("ann", (std::uint64_t{2} << 32) + 1, "a");
    builder.add("ann", 0, "a");
    builder.add("ann", std::uint64_t{1} << 32, "a");
    const HistoryIndex index = builder.freeze(1);
    EXPECT_EQ(
        "minCount 1, 64 bits, 4 transactions, 5 occurrences\na 1, b 1, c 1\n"
        "0:a 4294967296:a,b 8589934593:a 18446744073709551615:c",
        textOf(index));
}

TEST(IndexBuilder, TellsTimesApartThatDifferInOneBit) {
    for (std::uint32_t bit = 0; bit < 64; ++bit) {
        const std::uint64_t time = std::uint64_t{1} << bit;
        IndexBuilder builder(TimeWidth::BITS_64);
        builder.add("ann", 0, "a");
        builder.add("ann", time, "b");
        EXPECT_EQ("0:a " + std::to_string(time) + ":b", historiesOf(builder.freeze(1)));
    }
}

TEST(IndexBuilder, IsWithoutRowsAfterFreezingButKeepsItsEntities) {
    IndexBuilder builder;
    builder.add("ann", 1, "a");
    builder.add("bob", 1, "b");
    EXPECT_EQ("1:a | 1:b", historiesOf(builder.freeze(1)));
    EXPECT_EQ(2U, builder.entities().size());
    EXPECT_EQ("minCount 1, 32 bits, 0 transactions, 0 occurrences\n\n | ",
              textOf(builder.freeze(1)));

    builder.add("bob", 7, "a");
    builder.add("cid", 1, "c");
    EXPECT_EQ("minCount 0, 32 bits, 2 transactions, 2 occurrences\na 1, c 1\n | 7:a | 1:c",
              textOf(builder.freeze(0)));
}

/// Freezing ends the row that was begun before.
TEST(IndexBuilder, BeginsItsFirstRowAfterFreezingAnew) {
    IndexBuilder builder;
    builder.add("ann", 1, "a");
    builder.freeze(1);
    builder.beginRow("ann", 1);
    builder.addItem("b");
    EXPECT_EQ("1:b", historiesOf(builder.freeze(1)));
}

class IndexBuilderOfWidth : public testing::TestWithParam<TimeWidth> {};

/// A row of n items has n + 2 words, or n + 3 with wide times, and a block has 65,536 words. With
/// rows of several lengths, blocks end after every kind of word.
TEST_P(IndexBuilderOfWidth, KeepsRowsThatGoOnInANewBlock) {
    constexpr std::size_t number = 200'000;
    constexpr std::uint64_t wide = std::uint64_t{7} << 32;
    const std::uint64_t base = GetParam() == TimeWidth::BITS_64 ? wide : 0;
    IndexBuilder builder(GetParam());
    const auto itemsOfRow = [](std::size_t row) { return row % 4; };
    for (std::size_t row = 0; row < number; ++row) {
        builder.beginRow("e" + std::to_string(row % 100), base + row);
        for (std::size_t item = 0; item < itemsOfRow(row); ++item)
            builder.addItem("i" + std::to_string((row + 3 * item) % 10));
    }
    const HistoryIndex index = builder.freeze(1);
    ASSERT_EQ(100U, index.historyCount());
    ASSERT_EQ(10U, index.itemCount());
    EXPECT_EQ(number, index.transactionCount());
    EXPECT_EQ(number / 4 * (1 + 2 + 3), index.occurrenceCount());
    for (std::size_t history = 0; history < 100; ++history) {
        std::size_t place = index.firstTransaction(HistoryId(history));
        for (std::size_t row = history; row < number; row += 100) {
            if (itemsOfRow(row) == 0)
                continue;
            std::vector<Rank> items;
            for (std::size_t item = 0; item < itemsOfRow(row); ++item)
                items.push_back(Rank((row + 3 * item) % 10));
            std::sort(items.begin(), items.end());
            ASSERT_EQ(base + row, index.time(place));
            ASSERT_TRUE(std::ranges::equal(items, index.items(place))) << "row " << row;
            ++place;
        }
        ASSERT_EQ(index.endTransaction(HistoryId(history)), place);
    }
}

/// A single row has more words than a block.
TEST_P(IndexBuilderOfWidth, KeepsARowThatIsLongerThanABlock) {
    constexpr std::size_t number = 150'000;
    IndexBuilder builder(GetParam());
    builder.beginRow("ann", 1);
    for (std::size_t item = 0; item < number; ++item)
        builder.addItem(std::to_string(item));
    builder.add("ann", 2, "last");
    const HistoryIndex index = builder.freeze(1);
    ASSERT_EQ(2U, index.endTransaction(HistoryId{0}));
    EXPECT_EQ(number, index.items(0).size());
    EXPECT_EQ(1U, index.items(1).size());
    EXPECT_EQ(number + 1, index.itemCount());
}

INSTANTIATE_TEST_SUITE_P(Times, IndexBuilderOfWidth,
                         testing::Values(TimeWidth::BITS_32, TimeWidth::BITS_64),
                         [](const testing::TestParamInfo<TimeWidth>& width) {
                             return width.param == TimeWidth::BITS_32 ? "Of32Bits" : "Of64Bits";
                         });

}  // namespace
}  // namespace quarvis::mining
