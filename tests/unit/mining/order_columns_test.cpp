#include "order_columns.hpp"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "oracle/table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::makeStandings;
using oracle::Table;
using oracle::tableOf;

/// The columns of the first item of a table and of all others.
struct Filled {
    explicit Filled(const Table& table)
        : index(support::indexOf(table, 1)),
          standings(
              makeStandings(Shard::whole(index), std::vector<bool>(index.itemCount(), true), 0)),
          columns(standings) {
        std::vector<RuleCounter::Partner> partners;
        for (std::uint32_t item = 1; item < index.itemCount(); ++item)
            partners.push_back({Rank{item}, index.count(Rank{item})});
        filled = columns.fill(Rank{0}, partners);
    }

    /// "2 x a0 b1 c-" for a lane of weight 2 in which a is in the first transaction, b occurs first
    /// at the first moment, and c is missing. Lanes without the first item are left out.
    std::vector<std::string> lanes() const {
        std::vector<std::string> texts;
        for (std::size_t lane = 0; lane < 64 * columns.words(); ++lane) {
            std::string text = std::to_string(columns.weights()[lane / 64]) + " x";
            for (std::uint32_t item = 0; item < index.itemCount(); ++item) {
                const std::uint8_t order =
                    item == 0 ? columns.first()[lane] : columns.of(Rank{item})[lane];
                text += ' ' + std::string(index.name(Rank{item}));
                text += order == ABSENT ? "-" : std::to_string(order);
            }
            if (columns.first()[lane] != ABSENT)
                texts.push_back(text);
        }
        return texts;
    }

    HistoryIndex index;
    Standings standings;
    OrderColumns columns;
    bool filled = false;
};

using Lanes = std::vector<std::string>;

TEST(OrderColumns, TellTheOrderOfFirstOccurrences) {
    EXPECT_EQ((Lanes{"1 x a0 b1 c2", "1 x a2 b1 c0", "1 x a1 b1 c0"}),
              Filled(tableOf({"1:a 2:b 3:c", "1:c 5:b 6:a", "1:c 2:a,b 3:a 4:b"})).lanes());
}

TEST(OrderColumns, LeaveOutHistoriesWithFewerThanTwoPartners) {
    EXPECT_EQ((Lanes{"1 x a0 b1 c1 d-"}),
              Filled(tableOf({"1:a 2:b", "1:a 2:b,c", "1:b 2:c 3:d", "1:a"})).lanes());
}

TEST(OrderColumns, HaveALaneForEachDigitOfAWeight) {
    EXPECT_EQ(
        (Lanes{"1 x a0 b1 c2", "1 x a1 b0 c2", "2 x a0 b1 c2"}),
        Filled(tableOf({"1:a 2:b 3:c", "1:b 2:a 3:c", "1:a 2:b 4:c", "3:a 4:b 5:c"})).lanes());
}

TEST(OrderColumns, TellTheHistoryOfALane) {
    const Filled made(tableOf({"1:b 2:c", "1:a 2:b 3:c"}));
    ASSERT_TRUE(made.filled);
    const Standings::Place& place = made.columns.place(0);
    EXPECT_EQ(1U, place.history);
    EXPECT_EQ(Rank{0}, made.standings.item(place.entry));
}

/// A history with a, then `others` transactions of one item each, and c.
Table longTable(std::size_t others) {
    Table table;
    table.histories.resize(1);
    table.histories[0][0] = {"a"};
    for (std::size_t i = 0; i < others; ++i)
        table.histories[0][i + 1] = {"b" + std::to_string(1000 + i)};
    table.histories[0][others + 1] = {"c"};
    return table;
}

TEST(OrderColumns, HoldHistoriesOfThreeWordsOfMoments) {
    const Filled made(longTable(191));
    ASSERT_TRUE(made.filled);
    EXPECT_EQ(192U, made.columns.of(Rank{192})[0]);
}

TEST(OrderColumns, RefuseHistoriesOfMoreMoments) {
    EXPECT_FALSE(Filled(longTable(192)).filled);
}

/// Each of 200 histories of a has another partner, so a partner would have an order in one lane of
/// 200.
TEST(OrderColumns, RefuseItemsThatMostLanesWouldBeEmptyOf) {
    Table table;
    table.histories.resize(200);
    for (std::size_t history = 0; history < 200; ++history)
        table.histories[history] = {{1, {"a"}}, {history + 2, {"b" + std::to_string(history)}}};
    EXPECT_FALSE(Filled(table).filled);
}

}  // namespace
}  // namespace quarvis::mining
