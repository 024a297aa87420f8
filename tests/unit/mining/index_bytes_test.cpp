#include <quarvis/mining/index_bytes.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "index_file.hpp"
#include "indexed_tables.hpp"
#include "oracle/random_table.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::indexed;
using mining_tests::IndexFile;
using oracle::Table;
using oracle::tableOf;

/// The bytes that hexadecimal digits stand for; blanks are skipped.
std::string bytesOf(const std::string& digits) {
    std::string bytes;
    bool isUpper = true;
    int upper = 0;
    for (const char digit : digits) {
        if (digit == ' ')
            continue;
        const int value = digit <= '9' ? digit - '0' : digit - 'a' + 10;
        if (isUpper)
            upper = value;
        else
            bytes += static_cast<char>(16 * upper + value);
        isUpper = !isUpper;
    }
    return bytes;
}

HistoryIndex twoHistories() {
    IndexBuilder builder;
    builder.add("history 0", 5, "a");
    builder.add("history 0", 7, "b");
    builder.add("history 0", 7, "cd");
    builder.add("history 1", 5, "b");
    builder.beginRow("history 1", 9);
    return builder.freeze(1);
}

/// Whether all that they tell is the same.
testing::AssertionResult areSame(const HistoryIndex& a, const HistoryIndex& b) {
    if (a.historyCount() != b.historyCount() || a.itemCount() != b.itemCount() ||
        a.occurrenceCount() != b.occurrenceCount() || a.timeWidth() != b.timeWidth() ||
        a.transactionCount() != b.transactionCount() || a.minCount() != b.minCount())
        return testing::AssertionFailure() << "they differ in a number";
    for (std::uint32_t item = 0; item < a.itemCount(); ++item)
        if (a.name(Rank{item}) != b.name(Rank{item}) || a.count(Rank{item}) != b.count(Rank{item}))
            return testing::AssertionFailure() << "they differ in item " << item;
    for (std::uint32_t history = 0; history < a.historyCount(); ++history) {
        const HistoryId id{history};
        if (a.firstTransaction(id) != b.firstTransaction(id) ||
            a.endTransaction(id) != b.endTransaction(id))
            return testing::AssertionFailure() << "they differ in history " << history;
        for (std::size_t place = a.firstTransaction(id); place < a.endTransaction(id); ++place)
            if (a.time(place) != b.time(place) ||
                !std::equal(a.items(place).begin(), a.items(place).end(), b.items(place).begin(),
                            b.items(place).end()))
                return testing::AssertionFailure() << "they differ in transaction " << place;
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult comesBack(const HistoryIndex& index) {
    const std::string bytes = indexToBytes(index);
    const HistoryIndex back = indexFromBytes(bytes);
    if (indexToBytes(back) != bytes)
        return testing::AssertionFailure() << "its bytes are others";
    return areSame(index, back);
}

TEST(IndexBytes, OfASmallIndex) {
    const std::string bytes = bytesOf(
        // The letters, the version, the bytes of a time, the least count, transactions read.
        "5156494e44455800 0100000000000000 0400000000000000 0100000000000000 0400000000000000"
        // Items, bytes of names, histories, transactions, occurrences.
        "0300000000000000 0400000000000000 0200000000000000 0300000000000000 0400000000000000"
        // Where names begin, and the names.
        "0000000000000000 0100000000000000 0200000000000000 0400000000000000"
        "61 62 6364 00000000"
        // The counts of a, b and cd.
        "01000000 02000000 01000000 00000000"
        // Where the transactions of histories begin.
        "00000000 02000000 03000000 00000000"
        // The times.
        "05000000 07000000 05000000 00000000"
        // Where the items of transactions begin, and the items.
        "00000000 01000000 03000000 04000000"
        "00000000 01000000 02000000 01000000"
        // The checksum.
        "8ef80ecfd54a26e7");
    EXPECT_EQ(208U, bytes.size());
    EXPECT_EQ(bytes, indexToBytes(twoHistories()));
    EXPECT_EQ(bytes, IndexFile().bytes());
    EXPECT_TRUE(areSame(twoHistories(), indexFromBytes(bytes)));
}

TEST(IndexBytes, OfWideTimes) {
    const std::string bytes = bytesOf(
        "5156494e44455800 0100000000000000 0800000000000000 0000000000000000 0100000000000000"
        "0100000000000000 0100000000000000 0100000000000000 0100000000000000 0100000000000000"
        "0000000000000000 0100000000000000 78 00000000000000"
        "01000000 00000000"
        "00000000 01000000"
        "0200000000010000"
        "00000000 01000000 00000000 00000000"
        "734fa9fb5d5ac180");
    IndexBuilder builder(TimeWidth::BITS_64);
    builder.add("e", (std::uint64_t{1} << 40) + 2, "x");
    EXPECT_EQ(bytes, indexToBytes(builder.freeze(0)));
    EXPECT_EQ((std::uint64_t{1} << 40) + 2, indexFromBytes(bytes).time(0));
}

TEST(IndexBytes, OfTheEmptyIndex) {
    const std::string bytes = bytesOf(
        "5156494e44455800 0100000000000000 0400000000000000 0000000000000000 0000000000000000"
        "0000000000000000 0000000000000000 0000000000000000 0000000000000000 0000000000000000"
        "0000000000000000 00000000 00000000 00000000 00000000"
        "2f4f2f83b68de1de");
    EXPECT_EQ(bytes, indexToBytes(HistoryIndex()));
    EXPECT_TRUE(areSame(HistoryIndex(), indexFromBytes(bytes)));
}

TEST(IndexBytes, OfHistoriesWithoutItemsComeBack) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "3:", "4:c"}), 2);
    EXPECT_EQ(0U, index.itemCount());
    EXPECT_EQ(3U, index.historyCount());
    EXPECT_EQ(4U, index.transactionCount());
    EXPECT_TRUE(comesBack(index));
}

/// Names whose length is a multiple of 8, or is not.
TEST(IndexBytes, OfAnyNamesComeBack) {
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    Table table;
    for (const std::string& name : {std::string(), std::string(1, '\0'), std::string(7, '\xff'),
                                    std::string("12345678"), std::string(1000, 'x'), everyByte}) {
        table.histories.push_back({{1, {name}}});
        EXPECT_TRUE(comesBack(indexed(table))) << table.histories.size() << " names";
    }
}

TEST(IndexBytes, OfSlicesComeBack) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "3:", "4:c 5:a,b,c", "9:b"}));
    for (std::uint32_t begin = 0; begin <= 4; ++begin)
        for (std::uint32_t end = begin; end <= 4; ++end)
            EXPECT_TRUE(comesBack(index.slice(HistoryId{begin}, HistoryId{end})))
                << begin << " to " << end;
}

/// Bytes depend on the index alone, not on how it was made.
TEST(IndexBytes, OfASliceOfAllAreThoseOfTheIndex) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "4:c 5:a,b,c"}));
    EXPECT_EQ(indexToBytes(index), indexToBytes(index.slice(HistoryId{0}, HistoryId{2})));
}

TEST(IndexBytes, OfRandomTablesComeBack) {
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 110 : 1100); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        for (const TimeWidth width : {TimeWidth::BITS_32, TimeWidth::BITS_64}) {
            const HistoryIndex index = indexed(drawn.table, drawn.settings.minCount, width);
            ASSERT_TRUE(comesBack(index)) << "seed " << seed;
            const auto half = static_cast<std::uint32_t>(index.historyCount() / 2);
            ASSERT_TRUE(comesBack(index.slice(HistoryId{0}, HistoryId{half}))) << "seed " << seed;
        }
    }
}

}  // namespace
}  // namespace quarvis::mining
