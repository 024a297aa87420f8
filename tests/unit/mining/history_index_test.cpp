#include "history_index.hpp"

#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "oracle/table.hpp"
#include "support/conversion.hpp"

namespace quarvis::rule {
namespace {

using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;
using support::transactionsOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// An index and the transactions that it refers to.
struct Indexed {
    Indexed(const Table& table, std::size_t minCount)
        : txns(transactionsOf(table)), index(txns, minCount) {}
    Indexed(const Indexed&) = delete;
    Indexed& operator=(const Indexed&) = delete;

    const TransactionSet txns;
    const HistoryIndex index;
};

std::vector<std::string> namesOf(const HistoryIndex& index) {
    std::vector<std::string> names;
    for (Rank item = 0; item < index.itemCount(); ++item)
        names.push_back(index.name(item));
    return names;
}

TEST(HistoryIndex, OfNoHistoriesIsEmpty) {
    const Indexed made(Table(), 1);
    EXPECT_EQ(0U, made.index.historyCount());
    EXPECT_EQ(0U, made.index.itemCount());
}

TEST(HistoryIndex, RanksItemsInByteOrder) {
    const Indexed made(tableOf({"5:b,\x80,aa", "1:a,B", "1:\x7f,10,2"}), 1);
    EXPECT_THAT(namesOf(made.index), ElementsAre("10", "2", "B", "a", "aa", "b", "\x7f", "\x80"));
}

TEST(HistoryIndex, CountsHistoriesNotTransactions) {
    const Indexed made(tableOf({"1:a 2:a 3:a,b", "7:a"}), 1);
    EXPECT_EQ(2U, made.index.count(0));
    EXPECT_EQ(1U, made.index.count(1));
}

TEST(HistoryIndex, HasItemsOfAHistoryAndHistoriesOfAnItemAscending) {
    const Indexed made(tableOf({"1:c 2:a,b", "1:b", "1:a,c"}), 1);
    EXPECT_THAT(made.index.items(0), ElementsAre(0, 1, 2));
    EXPECT_THAT(made.index.items(1), ElementsAre(1));
    EXPECT_THAT(made.index.items(2), ElementsAre(0, 2));
    EXPECT_THAT(made.index.histories(0), ElementsAre(0, 2));
    EXPECT_THAT(made.index.histories(1), ElementsAre(0, 1));
    EXPECT_THAT(made.index.histories(2), ElementsAre(0, 2));
}

TEST(HistoryIndex, LeavesInfrequentItemsOut) {
    const Indexed made(tableOf({"1:a,b,d", "1:b,c,d", "1:b,e"}), 2);
    EXPECT_THAT(namesOf(made.index), ElementsAre("b", "d"));
    EXPECT_THAT(made.index.items(0), ElementsAre(0, 1));
    EXPECT_THAT(made.index.items(1), ElementsAre(0, 1));
    EXPECT_THAT(made.index.items(2), ElementsAre(0));
    EXPECT_THAT(made.index.histories(1), ElementsAre(0, 1));
    EXPECT_THAT(made.index.times(made.index.entry(1, 1)), ElementsAre(1));
}

TEST(HistoryIndex, MinCount0KeepsEveryItem) {
    EXPECT_THAT(namesOf(Indexed(tableOf({"1:a,b", "1:b"}), 0).index), ElementsAre("a", "b"));
}

TEST(HistoryIndex, MinCountAboveTheHistoriesLeavesNoItem) {
    const Indexed made(tableOf({"1:a", "1:a"}), 3);
    EXPECT_EQ(2U, made.index.historyCount());
    EXPECT_EQ(0U, made.index.itemCount());
    EXPECT_THAT(made.index.items(0), IsEmpty());
}

TEST(HistoryIndex, KeepsAHistoryWithoutItems) {
    const Indexed made(tableOf({"1:", "3:a", "1: 2:", "4:a"}), 1);
    EXPECT_EQ(4U, made.index.historyCount());
    EXPECT_THAT(made.index.items(0), IsEmpty());
    EXPECT_THAT(made.index.items(2), IsEmpty());
    EXPECT_THAT(made.index.histories(0), ElementsAre(1, 3));
    EXPECT_THAT(made.index.times(made.index.entry(0, 3)), ElementsAre(4));
}

TEST(HistoryIndex, AnItemInSeveralTransactionsOfAHistoryIsOneEntryWithTheirTimes) {
    const Indexed made(tableOf({"9:a 1:a,b 4294967295:a 5:b", "0:a"}), 1);
    EXPECT_EQ(0U, made.index.entry(0, 0));
    EXPECT_EQ(1U, made.index.entry(0, 1));
    EXPECT_EQ(2U, made.index.entry(1, 0));
    EXPECT_THAT(made.index.times(0), ElementsAre(1, 9, 4294967295));
    EXPECT_THAT(made.index.times(1), ElementsAre(0));
    EXPECT_THAT(made.index.times(2), ElementsAre(1, 5));
}

/// A table of `histories` histories, all of which have the item "all", and the last of which alone
/// has the item "rare".
Table withRareItem(std::size_t histories) {
    Table table;
    table.histories.assign(histories, {{1, {"all"}}});
    table.histories.back()[2].insert("rare");
    return table;
}

TEST(HistoryIndex, GivesABitmapToItemsInMoreThanA128thOfTheHistories) {
    const Indexed frequent(withRareItem(127), 1);
    EXPECT_TRUE(frequent.index.hasBitmap(0));
    EXPECT_TRUE(frequent.index.hasBitmap(1));
    EXPECT_TRUE(frequent.index.inBitmap(1, 126));
    EXPECT_FALSE(frequent.index.inBitmap(1, 62));

    const Indexed rare(withRareItem(128), 1);
    EXPECT_TRUE(rare.index.hasBitmap(0));
    EXPECT_FALSE(rare.index.hasBitmap(1));
    EXPECT_EQ(128U, rare.index.entry(1, 127));
}

/// What the index of a table holds, read off the table.
struct Model {
    struct Item {
        std::vector<HistoryId> histories;
        std::vector<std::vector<HistoryIndex::Time>> times;  // in each of them
    };
    std::map<std::string, Item> items;

    Model(const Table& table, std::size_t minCount) {
        for (HistoryId history = 0; history < table.histories.size(); ++history)
            for (const auto& [time, names] : table.histories[history])
                for (const std::string& name : names) {
                    Item& item = items[name];
                    if (item.histories.empty() || item.histories.back() != history) {
                        item.histories.push_back(history);
                        item.times.emplace_back();
                    }
                    item.times.back().push_back(static_cast<std::uint32_t>(time));
                }
        std::erase_if(items,
                      [minCount](const auto& i) { return i.second.times.size() < minCount; });
    }
};

void expectIndexOf(const Table& table, std::size_t minCount) {
    const Model model(table, minCount);
    const Indexed made(table, minCount);
    const HistoryIndex& index = made.index;
    ASSERT_EQ(model.items.size(), index.itemCount());
    ASSERT_EQ(table.histories.size(), index.historyCount());
    std::vector<std::vector<Rank>> itemsOfHistory(index.historyCount());
    Rank rank = 0;
    for (const auto& [name, item] : model.items) {
        ASSERT_EQ(name, index.name(rank));
        ASSERT_EQ(item.histories.size(), index.count(rank));
        ASSERT_THAT(index.histories(rank), testing::ElementsAreArray(item.histories)) << name;
        for (std::size_t i = 0; i < item.histories.size(); ++i) {
            itemsOfHistory[item.histories[i]].push_back(rank);
            ASSERT_THAT(index.times(index.entry(rank, item.histories[i])),
                        testing::ElementsAreArray(item.times[i]))
                << name << " in history " << item.histories[i];
        }
        if (index.hasBitmap(rank)) {
            std::vector<HistoryId> histories;
            for (HistoryId history = 0; history < index.historyCount(); ++history)
                if (index.inBitmap(rank, history))
                    histories.push_back(history);
            ASSERT_EQ(item.histories, histories) << name;
        }
        ++rank;
    }
    for (HistoryId history = 0; history < index.historyCount(); ++history)
        ASSERT_THAT(index.items(history), testing::ElementsAreArray(itemsOfHistory[history]));
}

TEST(HistoryIndex, HoldsEveryOccurrenceOfARandomTable) {
    for (const TableShape& shape : oracle::tableShapes())
        for (std::uint64_t seed = 0; seed < 30; ++seed)
            ASSERT_NO_FATAL_FAILURE(expectIndexOf(randomTable(shape, seed), seed % 4))
                << shape << ", seed " << seed;
}

/// Items of all frequencies, so some with a bitmap and some without.
TEST(HistoryIndex, HoldsEveryOccurrenceOfManyHistories) {
    TableShape shape{"Skewed", {}, 1500, 3, 3, 9};
    for (std::size_t item = 0; item < 10; ++item)
        shape.items.insert(shape.items.end(), std::size_t{1} << item, "i" + std::to_string(item));
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const Table table = randomTable(shape, seed);
        ASSERT_NO_FATAL_FAILURE(expectIndexOf(table, 1)) << "seed " << seed;
        ASSERT_NO_FATAL_FAILURE(expectIndexOf(table, 5)) << "seed " << seed;
    }
}

TEST(HistoryIndex, TakesTheMemoryThatItTells) {
    Table table;
    table.histories.assign(6400, {{1, {"a", "b"}}, {2, {"b"}}});
    const std::size_t entries = std::size_t{6400} * 2;
    const std::size_t occurrences = std::size_t{6400} * 3;
    const Indexed made(table, 1);
    const std::size_t bitmaps = std::size_t{2} * 6400 / 64 * 12;
    EXPECT_GE(made.index.memory(), 12 * entries + 4 * occurrences + bitmaps);
    EXPECT_LE(made.index.memory(), 12 * entries + 4 * occurrences + bitmaps + 6400 * 8 + 1000);
}

}  // namespace
}  // namespace quarvis::rule
