#include "oracle/random_table.hpp"

#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::Each;
using testing::Gt;
using testing::SizeIs;

std::string textOf(const Table& table) {
    std::ostringstream text;
    text << table;
    return text.str();
}

class RandomTable : public testing::TestWithParam<TableShape> {};

TEST_P(RandomTable, IsTheSameForTheSameSeed) {
    EXPECT_EQ(textOf(randomTable(GetParam(), 7)), textOf(randomTable(GetParam(), 7)));
}

TEST_P(RandomTable, DiffersFromSeedToSeed) {
    std::set<std::string> texts;
    for (std::uint64_t seed = 0; seed < 20; ++seed)
        texts.insert(textOf(randomTable(GetParam(), seed)));
    EXPECT_THAT(texts, SizeIs(Gt(15)));
}

TEST_P(RandomTable, KeepsToItsShape) {
    const TableShape& shape = GetParam();
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const Table table = randomTable(shape, seed);
        EXPECT_THAT(table.histories, SizeIs(testing::Le(shape.histories)));
        EXPECT_THAT(table.histories,
                    Each(SizeIs(testing::AllOf(Gt(0), testing::Le(shape.transactions)))));
        for (const History& history : table.histories)
            for (const auto& [time, items] : history) {
                EXPECT_LE(time, shape.lastTime);
                EXPECT_THAT(items, SizeIs(testing::Le(shape.itemsOfTransaction)));
                EXPECT_THAT(items, Each(testing::AnyOfArray(shape.items)));
            }
    }
}

std::string nameOf(const testing::TestParamInfo<TableShape>& shape) {
    return shape.param.name;
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTable, testing::ValuesIn(tableShapes()), nameOf);

TEST(RandomCase, EverySettingIsDrawn) {
    std::set<std::uint32_t> minCounts;
    std::set<std::uint32_t> maxOrders;
    std::set<Time> windows;
    std::set<std::string> shapes;
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        const RandomCase drawn = randomCase(seed);
        minCounts.insert(drawn.settings.minCount);
        maxOrders.insert(drawn.settings.maxOrder);
        windows.insert(drawn.settings.windowSize);
        shapes.insert(drawn.shape);
    }
    EXPECT_THAT(minCounts, testing::ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(maxOrders, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(windows, testing::IsSupersetOf({0U, 1U, 2U, 4U, 4294967295U}));
    EXPECT_THAT(shapes, SizeIs(tableShapes().size()));
}

}  // namespace
}  // namespace oracle
