#include "frequent_sets.hpp"

#include <initializer_list>
#include <map>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Set {
    std::size_t prefix;
    Rank last;
    std::uint32_t count;
};

Level levelOf(std::initializer_list<Set> sets) {
    Level level;
    for (const Set& set : sets)
        level.add(set.prefix, set.last, set.count);
    return level;
}

/// {0}, {1}, {2} and {3}; {0,1}, {0,3}, {1,3} and {2,3}; {0,1,3}.
FrequentSets threeLevels() {
    FrequentSets sets;
    sets.add(levelOf({{0, 0, 9}, {0, 1, 8}, {0, 2, 7}, {0, 3, 6}}), {});
    sets.add(levelOf({{0, 1, 5}, {0, 3, 4}, {1, 3, 3}, {2, 3, 2}}), {0, 2, 3, 4, 4});
    sets.add(levelOf({{0, 3, 1}}), {0, 1, 1, 1, 1});
    return sets;
}

std::uint32_t countIn(const FrequentSets& sets, const std::vector<Rank>& items) {
    return sets.count(items);
}

std::vector<Rank> itemsIn(const FrequentSets& sets, std::size_t size, std::size_t set) {
    std::vector<Rank> items(size);
    sets.items(size, set, items.data());
    return items;
}

TEST(Level, HoldsItsSetsInTheOrderAdded) {
    const Level level = levelOf({{3, 5, 7}, {4, 6, 8}});
    EXPECT_EQ(2U, level.size());
    EXPECT_THAT(level.prefix, ElementsAre(3, 4));
    EXPECT_THAT(level.last, ElementsAre(5, 6));
    EXPECT_THAT(level.count, ElementsAre(7, 8));
    EXPECT_THAT(level.extensions, IsEmpty());
}

TEST(FrequentSets, AreEmptyAtFirst) {
    EXPECT_EQ(0U, FrequentSets().levels());
}

TEST(FrequentSets, HaveALevelForEachSize) {
    const FrequentSets sets = threeLevels();
    EXPECT_EQ(3U, sets.levels());
    EXPECT_EQ(4U, sets.level(1).size());
    EXPECT_EQ(4U, sets.level(2).size());
    EXPECT_EQ(1U, sets.level(3).size());
}

TEST(FrequentSets, CountALevelWithoutSetsToo) {
    FrequentSets sets = threeLevels();
    EXPECT_EQ(0U, sets.add(Level(), {0, 0}).size());
    EXPECT_EQ(4U, sets.levels());
}

TEST(FrequentSets, ALevelHasItsExtensionsOnceTheNextOneIsThere) {
    const FrequentSets sets = threeLevels();
    EXPECT_THAT(sets.level(1).extensions, ElementsAre(0, 2, 3, 4, 4));
    EXPECT_THAT(sets.level(2).extensions, ElementsAre(0, 1, 1, 1, 1));
    EXPECT_THAT(sets.level(3).extensions, IsEmpty());
}

TEST(FrequentSets, GiveTheItemsOfASetAscending) {
    const FrequentSets sets = threeLevels();
    EXPECT_THAT(itemsIn(sets, 1, 2), ElementsAre(2));
    EXPECT_THAT(itemsIn(sets, 2, 0), ElementsAre(0, 1));
    EXPECT_THAT(itemsIn(sets, 2, 3), ElementsAre(2, 3));
    EXPECT_THAT(itemsIn(sets, 3, 0), ElementsAre(0, 1, 3));
}

TEST(FrequentSets, LookACountUp) {
    const FrequentSets sets = threeLevels();
    EXPECT_EQ(9U, countIn(sets, {0}));
    EXPECT_EQ(6U, countIn(sets, {3}));
    EXPECT_EQ(5U, countIn(sets, {0, 1}));
    EXPECT_EQ(4U, countIn(sets, {0, 3}));
    EXPECT_EQ(3U, countIn(sets, {1, 3}));
    EXPECT_EQ(2U, countIn(sets, {2, 3}));
    EXPECT_EQ(1U, countIn(sets, {0, 1, 3}));
}

TEST(FrequentSets, HaveNoCountOfASetThatIsNotThere) {
    const FrequentSets sets = threeLevels();
    const std::vector<std::vector<Rank>> absent = {
        {4},                                      // an item beyond all
        {0, 2},    {1, 2},    {0, 4},    {2, 4},  // before, between and after the extensions
        {3, 4},                                   // of a set without extensions
        {0, 1, 2}, {0, 1, 4}, {0, 3, 4}, {2, 3, 4}, {0, 1, 3, 4},  // greater than all levels
    };
    for (const std::vector<Rank>& items : absent)
        EXPECT_THROW(countIn(sets, items), std::out_of_range) << testing::PrintToString(items);
}

TEST(FrequentSets, HaveNoCountInALevelWithoutSets) {
    FrequentSets sets = threeLevels();
    sets.add(Level(), {0, 0});
    EXPECT_THROW(countIn(sets, {0, 1, 3, 4}), std::out_of_range);
    EXPECT_THROW(countIn(sets, {0, 1, 3, 4, 5}), std::out_of_range);
}

/// All subsets of `items` items, counted in the order of the levels.
TEST(FrequentSets, FindEverySubsetOfSevenItems) {
    constexpr Rank items = 7;
    FrequentSets sets;
    std::map<std::vector<Rank>, std::uint32_t> expected;
    std::vector<std::vector<Rank>> below = {{}};
    std::uint32_t count = 0;
    for (std::size_t size = 1; size <= items; ++size) {
        Level level;
        std::vector<std::uint32_t> extensions;
        std::vector<std::vector<Rank>> at;
        for (std::size_t prefix = 0; prefix < below.size(); ++prefix) {
            extensions.push_back(static_cast<std::uint32_t>(level.size()));
            for (Rank last = below[prefix].empty() ? 0 : below[prefix].back() + 1; last < items;
                 ++last) {
                at.push_back(below[prefix]);
                at.back().push_back(last);
                expected[at.back()] = ++count;
                level.add(prefix, last, count);
            }
        }
        extensions.push_back(static_cast<std::uint32_t>(level.size()));
        sets.add(level, size == 1 ? std::vector<std::uint32_t>() : extensions);
        for (std::size_t set = 0; set < at.size(); ++set)
            EXPECT_EQ(at[set], itemsIn(sets, size, set));
        below = at;
    }
    EXPECT_EQ(127U, expected.size());
    for (const auto& [set, number] : expected)
        EXPECT_EQ(number, countIn(sets, set)) << testing::PrintToString(set);
}

}  // namespace
}  // namespace quarvis::rule
