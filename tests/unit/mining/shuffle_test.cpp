#include <quarvis/mining/shuffle.hpp>

#include <cstdint>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>

#include "index_text.hpp"
#include "oracle/table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::historiesOf;
using mining_tests::itemsOf;
using mining_tests::textOf;
using testing::AnyOf;

HistoryIndex indexOf(const oracle::Table& table, std::uint32_t minCount = 1,
                     TimeWidth width = TimeWidth::BITS_32) {
    return support::indexOf(table, minCount, width);
}

TEST(Shuffle, PutsTransactionsToOtherTimesOfTheirHistory) {
    const HistoryIndex index = indexOf(oracle::tableOf({"1:a,b 5:c", "3:a,b"}));
    for (std::uint64_t seed = 0; seed < 20; ++seed)
        EXPECT_THAT(historiesOf(shuffleTimes(index, seed)),
                    AnyOf("1:a,b 5:c | 3:a,b", "1:c 5:a,b | 3:a,b"))
            << seed;
}

TEST(Shuffle, KeepsItemsCountsAndNumbers) {
    const HistoryIndex index =
        indexOf(oracle::tableOf({"1:a,b 5:c 7:d", "3:a,b 4:c", "9:e"}), 2, TimeWidth::BITS_64);
    const HistoryIndex shuffled = shuffleTimes(index, 7);
    EXPECT_EQ(itemsOf(index), itemsOf(shuffled));
    EXPECT_EQ(2U, shuffled.minCount());
    EXPECT_EQ(TimeWidth::BITS_64, shuffled.timeWidth());
    EXPECT_EQ(index.transactionCount(), shuffled.transactionCount());
    EXPECT_EQ(index.historyCount(), shuffled.historyCount());
}

TEST(Shuffle, GivesEachOrderAboutAsOften) {
    const HistoryIndex index = indexOf(oracle::tableOf({"1:a 2:b 3:c"}));
    std::map<std::string, int> orders;
    for (std::uint64_t seed = 0; seed < 6000; ++seed)
        ++orders[historiesOf(shuffleTimes(index, seed))];
    ASSERT_EQ(6U, orders.size());
    // Each is expected 1000 times, with a standard deviation of 29.
    for (const auto& [order, times] : orders)
        EXPECT_NEAR(1000, times, 5 * 29) << order;
}

TEST(Shuffle, DrawsForEachHistoryByItself) {
    const HistoryIndex index = indexOf(oracle::tableOf({"1:a 2:b", "1:a 2:b"}));
    std::map<std::string, int> orders;
    for (std::uint64_t seed = 0; seed < 4000; ++seed)
        ++orders[historiesOf(shuffleTimes(index, seed))];
    ASSERT_EQ(4U, orders.size());
    for (const auto& [order, times] : orders)
        EXPECT_NEAR(1000, times, 5 * 28) << order;
}

TEST(Shuffle, DependsOnTheSeedAlone) {
    const HistoryIndex index = indexOf(oracle::tableOf({"1:a 2:b 3:c 4:d 5:e", "1:e 2:a 9:c"}));
    EXPECT_EQ(textOf(shuffleTimes(index, 3)), textOf(shuffleTimes(index, 3)));
    EXPECT_NE(textOf(shuffleTimes(index, 3)), textOf(shuffleTimes(index, 4)));
}

TEST(Shuffle, LeavesItemSetsAsTheyAre) {
    const HistoryIndex index = indexOf(oracle::tableOf({"1:a 2:b,c", "1:b 2:a 3:c", "4:c 5:a"}));
    Observer observer;
    MiningOptions options;
    options.minCount = 1;
    const auto sets = [&](const HistoryIndex& of) {
        const ItemSets found = findItemSets(of, options, observer);
        std::string text;
        for (ItemSetCursor cursor(found); cursor.next();) {
            for (const Rank item : cursor.items())
                text += of.name(item);
            text += std::to_string(cursor.count()) + ' ';
        }
        return text;
    };
    EXPECT_EQ(sets(index), sets(shuffleTimes(index, 11)));
}

TEST(Shuffle, TakesAnIndexWithoutHistories) {
    EXPECT_EQ(0U, shuffleTimes(HistoryIndex(), 1).historyCount());
}

}  // namespace
}  // namespace quarvis::mining
