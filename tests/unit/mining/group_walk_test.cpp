#include "group_walk.hpp"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
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
using testing::ElementsAre;
using testing::IsEmpty;

/// The groups of a level, each as its prefix and the last items of its sets.
std::vector<std::string> groupsOf(const Searched& all, std::size_t size, std::size_t least) {
    std::vector<std::string> groups;
    for (GroupWalk walk(all.index, all.sets, size); walk.next(least);) {
        std::string text;
        for (const Rank item : walk.prefixItems())
            text += all.index.name(item);
        text += ':';
        for (std::size_t set = walk.begin(); set < walk.end(); ++set)
            text += all.index.name(all.sets.level(size).last[set]);
        groups.push_back(text);
    }
    return groups;
}

TEST(GroupWalk, GoesThroughTheSetsThatShareAllItemsButTheLast) {
    const Searched all(tableOf({"1:a,b,c,d", "1:c,d,e", "1:b,e"}), 1);
    EXPECT_THAT(groupsOf(all, 2, 1), ElementsAre("a:bcd", "b:cde", "c:de", "d:e"));
    EXPECT_THAT(groupsOf(all, 3, 1), ElementsAre("ab:cd", "ac:d", "bc:d", "cd:e"));
    EXPECT_THAT(groupsOf(all, 4, 1), ElementsAre("abc:d"));
    EXPECT_THAT(groupsOf(all, 5, 1), IsEmpty());
}

TEST(GroupWalk, PassesOverGroupsOfTooFewSets) {
    const Searched all(tableOf({"1:a,b,c,d", "1:c,d,e", "1:b,e"}), 1);
    EXPECT_THAT(groupsOf(all, 2, 2), ElementsAre("a:bcd", "b:cde", "c:de"));
    EXPECT_THAT(groupsOf(all, 2, 3), ElementsAre("a:bcd", "b:cde"));
    EXPECT_THAT(groupsOf(all, 3, 2), ElementsAre("ab:cd"));
    EXPECT_THAT(groupsOf(all, 4, 2), IsEmpty());
}

/// The histories that a cover stands for.
std::vector<HistoryId> historiesOf(const GroupWalk& walk, const Cover& cover) {
    std::vector<HistoryId> histories;
    for (Position at = 0; at < walk.histories().size(); ++at)
        if (cover.isBitmap() && cover.contains(at))
            histories.push_back(walk.histories()[at]);
    for (std::uint32_t i = 0; !cover.isBitmap() && i < cover.count; ++i)
        histories.push_back(walk.histories()[cover.positions[i]]);
    EXPECT_EQ(histories.size(), cover.count);
    return histories;
}

/// The histories that contain all the items.
std::vector<HistoryId> containing(const HistoryIndex& index, const std::vector<Rank>& items) {
    std::vector<HistoryId> histories;
    for (HistoryId history = 0; history < index.historyCount(); ++history)
        if (std::ranges::includes(index.items(history), items))
            histories.push_back(history);
    return histories;
}

/// Walks a level and holds covers against the histories that contain the items; those of about one
/// group in `every`, the others are passed by without a look at theirs.
void expectCovers(const Searched& all, std::size_t size, std::size_t every) {
    std::mt19937_64 random(every);
    const Level& level = all.sets.level(size);
    GroupWalk walk(all.index, all.sets, size);
    while (walk.next(1)) {
        if (random() % every != 0)
            continue;
        const std::vector<Rank> prefix(walk.prefixItems().begin(), walk.prefixItems().end());
        for (std::size_t set = walk.begin(); set < walk.end(); ++set)
            ASSERT_EQ(containing(all.index, {prefix.front(), level.last[set]}),
                      historiesOf(walk, walk.lastCover(set)));
        ASSERT_EQ(containing(all.index, prefix), historiesOf(walk, walk.prefixCover()));
    }
}

class GroupCovers : public testing::TestWithParam<TableShape> {};

TEST_P(GroupCovers, AreTheHistoriesThatContainTheItems) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const std::uint32_t minCount = std::max(1U, GetParam().leastMinCount);
        const Searched all(randomTable(GetParam(), seed), minCount);
        for (std::size_t size = 2; size <= all.sets.levels(); ++size)
            for (const std::size_t every : {1U, 2U, 5U})
                ASSERT_NO_FATAL_FAILURE(expectCovers(all, size, every))
                    << "seed " << seed << ", sets of " << size;
    }
}

/// Two items in most histories, some in many and some in few: with pairs that are kept as bitmaps
/// and pairs that are kept as lists, of items with and without a bitmap in the index.
TableShape frequentAndRare() {
    TableShape shape{"FrequentAndRare", {}, 2000, 3, 6, 9, 2};
    for (const auto& [name, weight] :
         {std::pair{"a", 300}, {"b", 2}, {"c", 100}, {"d", 300}, {"e", 20}, {"f", 1}, {"g", 60}})
        shape.items.insert(shape.items.end(), static_cast<std::size_t>(weight), name);
    return shape;
}

std::vector<TableShape> shapes() {
    std::vector<TableShape> all = oracle::tableShapes();
    all.push_back(frequentAndRare());
    return all;
}

INSTANTIATE_TEST_SUITE_P(Shapes, GroupCovers, testing::ValuesIn(shapes()),
                         [](const auto& shape) { return shape.param.name; });

TEST(GroupCovers, AreOfBothForms) {
    const Searched all(randomTable(frequentAndRare(), 1), 2);
    std::size_t bitmaps = 0;
    std::size_t lists = 0;
    for (std::size_t size = 2; size <= all.sets.levels(); ++size)
        for (GroupWalk walk(all.index, all.sets, size); walk.next(1);) {
            ++(walk.prefixCover().isBitmap() ? bitmaps : lists);
            for (std::size_t set = walk.begin(); set < walk.end(); ++set)
                ++(walk.lastCover(set).isBitmap() ? bitmaps : lists);
        }
    EXPECT_GT(bitmaps, 20U);
    EXPECT_GT(lists, 20U);
}

}  // namespace
}  // namespace quarvis::rule
