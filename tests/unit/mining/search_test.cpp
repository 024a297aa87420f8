#include "search.hpp"

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "oracle/table.hpp"
#include "plain_search.hpp"
#include "searched.hpp"

namespace quarvis::rule {
namespace {

using mining_tests::Searched;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FirstLevel, AreTheItemsAndTheirCounts) {
    const Searched all(tableOf({"1:b 2:b,a", "1:b"}), 1, 1);
    EXPECT_THAT(all.listed(1), ElementsAre("a 1", "b 2"));
}

TEST(FirstLevel, AreNoneWithoutHistories) {
    EXPECT_EQ(0U, Searched(Table(), 0, 1).sets.level(1).size());
}

TEST(NextLevel, FindsPairsOverAllTransactionsOfAHistory) {
    const Searched all(tableOf({"1:a 2:b 9:c", "1:a,b"}), 1, 2);
    EXPECT_THAT(all.listed(2), ElementsAre("a,b 2", "a,c 1", "b,c 1"));
}

TEST(NextLevel, KeepsTheSetsInEnoughHistories) {
    const Searched all(tableOf({"1:a,b,c", "1:a,b,c,d", "1:b,c,d"}), 2, 4);
    EXPECT_THAT(all.listed(1), ElementsAre("a 2", "b 3", "c 3", "d 2"));
    EXPECT_THAT(all.listed(2), ElementsAre("a,b 2", "a,c 2", "b,c 3", "b,d 2", "c,d 2"));
    EXPECT_THAT(all.listed(3), ElementsAre("a,b,c 2", "b,c,d 2"));
    EXPECT_THAT(all.listed(4), IsEmpty());
}

TEST(NextLevel, TellsWhereTheExtensionsOfEachSetBegin) {
    const Searched all(tableOf({"1:a,b,c", "1:a,b,c,d", "1:b,c,d"}), 2, 3);
    EXPECT_THAT(all.sets.level(1).extensions, ElementsAre(0, 2, 4, 5, 5));
    EXPECT_THAT(all.sets.level(2).extensions, ElementsAre(0, 1, 1, 2, 2, 2));
}

TEST(NextLevel, MinCount0KeepsSetsThatNoHistoryContains) {
    const Searched all(tableOf({"1:a,b", "1:c", "1:"}), 0, 4);
    EXPECT_THAT(all.listed(2), ElementsAre("a,b 1", "a,c 0", "b,c 0"));
    EXPECT_THAT(all.listed(3), ElementsAre("a,b,c 0"));
    EXPECT_THAT(all.listed(4), IsEmpty());
}

TEST(NextLevel, OfOneItemOrNoneFindsNothing) {
    for (const Table& table : {Table(), tableOf({"1:"}), tableOf({"1:a"})}) {
        const Searched all(table, 0, 3);
        EXPECT_EQ(3U, all.sets.levels());
        EXPECT_EQ(0U, all.sets.level(2).size());
        EXPECT_EQ(0U, all.sets.level(3).size());
    }
}

/// The sets of every size as the plain search finds them, each level in the order of the ranks.
std::vector<std::vector<std::string>> plainLevels(const TransactionSet& txns,
                                                  std::uint32_t minCount, std::size_t sizes) {
    Configuration config;
    config.minCount = minCount;
    plain::ItemSetSupports all;
    plain::ItemSetSupports level = plain::oneSets(config, txns);
    std::vector<std::vector<std::string>> levels;
    while (true) {
        std::vector<std::string> sets;
        for (const auto& [items, count] : level) {
            std::string text;
            for (const Item& item : items)
                text += (text.empty() ? "" : ",") + item;
            sets.push_back(text + ' ' + std::to_string(count));
        }
        levels.push_back(sets);
        if (levels.size() == sizes)
            return levels;
        level = plain::aprioriMerge(config, level, all, txns, levels.size() + 1);
    }
}

/// Whether the extensions of each set are those that name it as their prefix.
void expectExtensionsInPlace(const FrequentSets& sets, std::size_t size) {
    const Level& below = sets.level(size - 1);
    const Level& level = sets.level(size);
    ASSERT_EQ(below.size() + 1, below.extensions.size());
    ASSERT_EQ(0U, below.extensions.front());
    ASSERT_EQ(level.size(), below.extensions.back());
    for (std::size_t set = 0; set < below.size(); ++set)
        for (std::uint32_t i = below.extensions[set]; i < below.extensions[set + 1]; ++i)
            ASSERT_EQ(set, level.prefix[i]);
}

class EveryLevel : public testing::TestWithParam<TableShape> {};

TEST_P(EveryLevel, IsThatOfThePlainSearch) {
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
        const auto anyCount = static_cast<std::uint32_t>(seed % 6);
        const std::uint32_t minCount = std::max(anyCount, GetParam().leastMinCount);
        const Searched all(randomTable(GetParam(), seed), minCount, 8);
        const std::vector<std::vector<std::string>> expected = plainLevels(all.txns, minCount, 8);
        for (std::size_t size = 1; size <= 8; ++size)
            ASSERT_EQ(expected[size - 1], all.listed(size)) << "seed " << seed;
        for (std::size_t size = 2; size <= 8; ++size)
            ASSERT_NO_FATAL_FAILURE(expectExtensionsInPlace(all.sets, size)) << "seed " << seed;
    }
}

/// Items in nearly all, in some and in few of many histories.
TableShape skewed() {
    TableShape shape{"Skewed", {}, 500, 3, 8, 9, 1};
    for (const std::size_t weight : {100U, 4U, 100U, 1U, 30U, 100U, 10U})
        shape.items.insert(shape.items.end(), weight, std::to_string(shape.items.size()));
    return shape;
}

std::vector<TableShape> shapes() {
    // The plain search takes too long over fourteen items.
    std::vector<TableShape> all = oracle::tableShapes();
    std::erase_if(all, [](const TableShape& shape) { return shape.name == "Wide"; });
    all.push_back(skewed());
    return all;
}

INSTANTIATE_TEST_SUITE_P(Shapes, EveryLevel, testing::ValuesIn(shapes()),
                         [](const auto& shape) { return shape.param.name; });

/// Histories of a few neighbours among `items` items, each item in two histories at least.
Table neighbours(std::size_t items) {
    std::mt19937_64 random(items);
    Table table;
    const auto nameOf = [](std::size_t item) { return std::to_string(10'000 + item); };
    for (std::size_t item = 0; item < items; item += 2) {
        oracle::History history;
        for (std::size_t i = 0; i < 6; ++i)
            history[1].insert(nameOf((item + i) % items));
        history[2].insert(nameOf(random() % items));
        table.histories.push_back(history);
    }
    return table;
}

/// The sets of `size` neighbours in `minCount` histories or more, counted one history after the
/// other.
std::vector<std::string> countedSets(const Searched& all, std::uint32_t minCount,
                                     std::size_t size) {
    std::map<std::vector<Rank>, std::uint32_t> counts;
    for (HistoryId history = 0; history < all.index.historyCount(); ++history) {
        const auto items = all.index.items(history);
        for (unsigned subset = 0; subset < 1U << items.size(); ++subset) {
            std::vector<Rank> set;
            for (std::size_t i = 0; i < items.size(); ++i)
                if ((subset >> i & 1U) != 0)
                    set.push_back(items[i]);
            if (set.size() == size)
                ++counts[set];
        }
    }
    std::vector<std::string> sets;
    for (const auto& [set, count] : counts) {
        if (count < minCount)
            continue;
        std::string text;
        for (const Rank item : set)
            text += (text.empty() ? "" : ",") + all.index.name(item);
        sets.push_back(text + ' ' + std::to_string(count));
    }
    return sets;
}

/// Up to 2,896 items all pairs are counted at once; the counters of more would take too much.
class ManyItems : public testing::TestWithParam<std::size_t> {};

TEST_P(ManyItems, HaveThePairsAndTheTriplesOfTheirHistories) {
    const Table table = neighbours(GetParam());
    for (const std::uint32_t minCount : {1U, 2U, 3U}) {
        const Searched all(table, minCount, 3);
        ASSERT_EQ(GetParam(), all.index.itemCount());
        EXPECT_EQ(countedSets(all, minCount, 2), all.listed(2));
        EXPECT_EQ(countedSets(all, minCount, 3), all.listed(3));
        ASSERT_NO_FATAL_FAILURE(expectExtensionsInPlace(all.sets, 2));
        ASSERT_NO_FATAL_FAILURE(expectExtensionsInPlace(all.sets, 3));
    }
}

TEST_P(ManyItems, HaveAllPairsAtMinCount0) {
    const Searched all(neighbours(GetParam()), 0, 2);
    const std::size_t items = GetParam();
    const Level& pairs = all.sets.level(2);
    ASSERT_EQ(items * (items - 1) / 2, pairs.size());
    ASSERT_NO_FATAL_FAILURE(expectExtensionsInPlace(all.sets, 2));
    std::vector<std::string> counted;
    std::size_t set = 0;
    for (Rank first = 0; first < items; ++first)
        for (Rank last = first + 1; last < items; ++last, ++set) {
            ASSERT_EQ(first, pairs.prefix[set]);
            ASSERT_EQ(last, pairs.last[set]);
            if (pairs.count[set] != 0)
                counted.push_back(all.namesOf(2, set) + ' ' + std::to_string(pairs.count[set]));
        }
    EXPECT_EQ(countedSets(all, 1, 2), counted);
}

INSTANTIATE_TEST_SUITE_P(CountedAtOnceOrByItem, ManyItems, testing::Values(2896, 2897),
                         [](const auto& items) { return std::to_string(items.param); });

}  // namespace
}  // namespace quarvis::rule
