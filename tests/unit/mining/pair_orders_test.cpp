#include "pair_orders.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "oracle/table.hpp"
#include "searched.hpp"

namespace quarvis::rule {
namespace {

using mining_tests::Searched;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;

/// The histories in which `a` first occurs before `b`, or after it, whichever are more; told by the
/// transactions.
std::uint32_t mostOneWay(const Searched& all, Rank a, Rank b) {
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    for (const auto& [key, history] : all.txns) {
        bool metA = false;
        bool metB = false;
        for (const auto& [time, items] : history) {
            const bool nowA = items.contains(all.index.name(a));
            const bool nowB = items.contains(all.index.name(b));
            before += metA && !metB && nowB ? 1 : 0;
            after += metB && !metA && nowA ? 1 : 0;
            metA = metA || nowA;
            metB = metB || nowB;
        }
    }
    return std::max(before, after);
}

/// Holds the orders of the frequent pairs against their transactions. The number of pairs that were
/// counted.
std::size_t expectOrders(const Searched& all) {
    const PairOrders orders(all.index, all.sets, 1);
    const Level& pairs = all.sets.level(2);
    std::size_t counted = 0;
    for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
        const Rank a = pairs.prefix[pair];
        const Rank b = pairs.last[pair];
        // No pair can come so often, so one that may was not counted.
        const bool known = !orders.mayReach(pairs.count[pair] + 1, a, b);
        counted += known ? 1 : 0;
        const std::uint32_t most = mostOneWay(all, a, b);
        EXPECT_TRUE(orders.mayReach(most, a, b));
        EXPECT_EQ(!orders.mayReach(most + 1, a, b), known) << all.namesOf(2, pair);
    }
    return counted;
}

TEST(PairOrders, CountTheHistoriesInWhichOneItemComesFirst) {
    const Searched all(
        tableOf({"1:a,c,d 2:b", "1:a 2:a,b,c,d", "3:b 4:a,c,d 5:b", "1:a,b,c,d 2:b", "7:a,b,c,d"}),
        1);
    const PairOrders orders(all.index, all.sets, 1);
    EXPECT_TRUE(orders.mayReach(2, 0, 1));
    EXPECT_FALSE(orders.mayReach(3, 0, 1));
}

TEST(PairOrders, AreThoseOfTheTransactions) {
    std::size_t counted = 0;
    std::size_t pairs = 0;
    for (const TableShape& shape : oracle::tableShapes())
        for (std::uint64_t seed = 0; seed < 20; ++seed) {
            const Searched all(randomTable(shape, seed), std::max(1U, shape.leastMinCount), 2);
            pairs += all.sets.level(2).size();
            counted += expectOrders(all);
        }
    EXPECT_GT(counted, pairs / 10);
    EXPECT_LT(counted, pairs);
}

TEST(PairOrders, AreThoseOfMoreHistoriesThanAreTakenAtATime) {
    for (const std::size_t histories : {2047U, 2048U, 2049U, 5000U}) {
        std::mt19937_64 random(histories);
        Table table;
        for (std::size_t i = 0; i < histories; ++i) {
            oracle::History history;
            for (int item = 0; item < 10; ++item)
                history[static_cast<std::uint32_t>(random() % 4)].insert(
                    std::string(1, static_cast<char>('a' + random() % 5)));
            table.histories.push_back(history);
        }
        EXPECT_EQ(expectOrders(Searched(table, 1, 2)), 10U) << histories;
    }
}

/// The last item is frequent with one other item only, but would be compared with all.
TEST(PairOrders, AreNotCountedWhereVisitsAreLessWork) {
    oracle::History all;
    oracle::History most;
    oracle::History lastTwo;
    for (std::size_t item = 0; item < 60; ++item) {
        const std::string name = std::to_string(100 + item);
        all[1].insert(name);
        (item < 58 ? most : lastTwo)[1].insert(name);
    }
    const Searched searched(Table{{all, most, lastTwo}}, 2, 2);
    const PairOrders orders(searched.index, searched.sets, 1);
    EXPECT_TRUE(orders.mayReach(1, 58, 59));
    EXPECT_FALSE(orders.mayReach(1, 0, 1));
}

}  // namespace
}  // namespace quarvis::rule
