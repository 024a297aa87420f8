#include "found_sets.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "naive_sets.hpp"
#include "oracle/draws.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::CountedSets;
using mining_tests::Set;
using mining_tests::setsOf;

ItemSets ordered(FoundSets sets, const WalkOrder& order, unsigned threads = 1) {
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    return std::move(sets).ordered(order, threads, step);
}

/// In walk order: c 2, b 3, a 4; by rank: a, b, c.
HistoryIndex threeItems() {
    return support::indexOf(oracle::tableOf({"1:a,b,c", "1:a,b,c", "1:a,b", "1:a"}), 1);
}

constexpr Rank ITEM_A{0};
constexpr Rank ITEM_B{1};
constexpr Rank ITEM_C{2};

TEST(FoundSets, AreOfOneItemAtFirst) {
    FoundSets sets;
    EXPECT_EQ(1U, sets.maxSize());
    EXPECT_EQ(0U, sets.count(2));
    sets.link(3);
    EXPECT_EQ((LargeVector<std::uint32_t>{0, 0, 0, 0}), sets.pairBegin());
    const HistoryIndex index = threeItems();
    const ItemSets made = ordered(std::move(sets), WalkOrder(index, 1));
    EXPECT_EQ((CountedSets{{{ITEM_A}, 4}, {{ITEM_B}, 3}, {{ITEM_C}, 2}}), setsOf(made));
    EXPECT_EQ(1U, made.levels());
}

TEST(FoundSets, AreOrderedByTheRanksOfTheirItems) {
    FoundSets sets;  // {c,b}, {c,a}, {b,a}; {c,b,a}
    sets.add(2, 0, WalkItem{1}, 2);
    sets.add(2, 0, WalkItem{2}, 2);
    sets.add(2, 1, WalkItem{2}, 3);
    sets.add(3, 0, WalkItem{2}, 2);
    const HistoryIndex index = threeItems();
    const ItemSets made = ordered(std::move(sets), WalkOrder(index, 1));
    ASSERT_EQ(3U, made.levels());
    EXPECT_EQ((std::vector<Rank>{ITEM_A, ITEM_B, ITEM_C}), made.level(1).last);
    EXPECT_EQ((std::vector<std::uint32_t>{4, 3, 2}), made.level(1).count);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 0, 1}), made.level(2).prefix);
    EXPECT_EQ((std::vector<Rank>{ITEM_B, ITEM_C, ITEM_C}), made.level(2).last);
    EXPECT_EQ((std::vector<std::uint32_t>{3, 2, 2}), made.level(2).count);
    EXPECT_EQ((std::vector<std::uint32_t>{0}), made.level(3).prefix);
    EXPECT_EQ((std::vector<Rank>{ITEM_C}), made.level(3).last);
    EXPECT_EQ((std::vector<std::uint32_t>{2}), made.level(3).count);
}

TEST(FoundSets, OfNoItemsAreOrderedToAnEmptyLevel) {
    const ItemSets made = ordered(FoundSets(), WalkOrder(threeItems(), 5));
    EXPECT_EQ(1U, made.levels());
    EXPECT_EQ(0U, made.size());
}

TEST(FoundSets, LinkTellsWhereExtensionsBegin) {
    FoundSets sets;
    sets.add(2, 0, WalkItem{1}, 9);
    sets.add(2, 0, WalkItem{2}, 9);
    sets.add(2, 0, WalkItem{3}, 9);
    sets.add(2, 2, WalkItem{3}, 9);
    sets.add(3, 0, WalkItem{3}, 9);
    sets.add(3, 1, WalkItem{3}, 9);
    sets.link(4);
    EXPECT_EQ((LargeVector<std::uint32_t>{0, 3, 3, 4, 4}), sets.pairBegin());
    EXPECT_EQ((LargeVector<std::uint32_t>{0, 1, 2, 2, 2}), sets.level(2).extensions);
    EXPECT_TRUE(sets.level(3).extensions.empty());
}

TEST(FoundSets, AppendAddsNothingWhenItIsCancelled) {
    FoundSets found;
    found.add(2, 0, WalkItem{1}, 5);
    FoundSets all;
    all.add(2, 0, WalkItem{2}, 4);
    mining_tests::FreeStep free;
    free.step.fail();
    EXPECT_THROW(all.append({{&found, {}, {1}}}, 1, free.step), Cancelled);
    EXPECT_EQ((std::vector<std::size_t>{1}), all.sizes());
    EXPECT_EQ((LargeVector<std::uint32_t>{4}), all.level(2).count);
}

TEST(FoundSets, AddLevelOfTakesTheLargestSets) {
    FoundSets sets;
    sets.add(2, 0, WalkItem{1}, 5);
    FoundSets larger;
    larger.add(3, 0, WalkItem{2}, 4);
    sets.addLevelOf(std::move(larger));
    EXPECT_EQ(3U, sets.maxSize());
    EXPECT_EQ((LargeVector<std::uint32_t>{4}), sets.level(3).count);
}

bool areEqual(const FoundSets& a, const FoundSets& b) {
    if (a.sizes() != b.sizes())
        return false;
    for (std::size_t size = 2; size <= a.maxSize(); ++size)
        if (a.level(size).parent != b.level(size).parent ||
            a.level(size).last != b.level(size).last || a.level(size).count != b.level(size).count)
            return false;
    return true;
}

/// The sets that begin with an item, as a walk finds them: a trie of random shape. Sets of fewer
/// than `begin` items are known, and the parents of the smallest sets here are places among them.
void addRandom(FoundSets& sets, std::size_t item, std::size_t begin, oracle::Draws& draws) {
    std::vector<std::size_t> below = {item};
    for (std::size_t size = begin; size < begin + 4; ++size) {
        std::vector<std::size_t> here;
        for (const std::size_t parent : below)
            for (std::uint64_t n = 0, last = draws.upTo(2); n < last; ++n) {
                here.push_back(sets.count(size));
                sets.add(size, parent, WalkItem{static_cast<std::uint32_t>(n)},
                         static_cast<std::uint32_t>(draws.upTo(99)));
            }
        below = here;
    }
}

/// Several finders take turns with the items. What they find is put together in the order of the
/// items, as if one finder had found it all.
TEST(FoundSets, AppendPutsTogetherWhatSeveralFound) {
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        constexpr std::size_t finders = 3;
        constexpr std::size_t items = 12;
        const std::size_t begin = 2 + seed % 2;
        oracle::Draws turns(seed);
        FoundSets expected;
        FoundSets whole;
        if (begin == 3)
            for (std::uint32_t item = 0; item < items; ++item) {
                expected.add(2, item, WalkItem{item + 1}, 5);
                whole.add(2, item, WalkItem{item + 1}, 5);
            }
        std::vector<FoundSets> found(finders);
        std::vector<FoundSets::Part> parts;
        for (std::size_t item = 0; item < items; ++item) {
            FoundSets& finder = found[turns.upTo(finders - 1)];
            oracle::Draws draws(1000 * seed + item);
            oracle::Draws same(1000 * seed + item);
            addRandom(expected, item, begin, draws);
            parts.push_back({&finder, finder.sizes(), {}});
            addRandom(finder, item, begin, same);
            parts.back().ends = finder.sizes();
        }
        mining_tests::FreeStep free;
        whole.append(parts, static_cast<unsigned>(1 + seed % 5), free.step);
        ASSERT_TRUE(areEqual(expected, whole)) << "seed " << seed;
    }
}

/// The numbers of items and sets are such that sets are sorted by comparing and by counting.
TEST(FoundSets, AreOrderedHoweverManyItemsThereAre) {
    for (const std::size_t items : {5U, 100U, 130U, 20'000U})
        for (const std::size_t pairs : {1U, 20U, 4000U}) {
            oracle::Table table;
            for (std::size_t item = 0; item < items; ++item) {
                // Items of high rank are rare, so the walk takes the items backwards.
                const std::string digits = std::to_string(item);
                const std::string name = std::string(6 - digits.size(), '0') + digits;
                table.histories.resize(3);
                for (std::size_t history = 0; history < 1 + 3 * item / items; ++history)
                    table.histories[2 - history][1].insert(name);
            }
            const HistoryIndex index = support::indexOf(table, 1);
            const WalkOrder order(index, 1);
            oracle::Draws draws(items);
            std::set<std::pair<std::uint32_t, std::uint32_t>> chosen;
            for (std::size_t i = 0; i < pairs; ++i) {
                const auto a = static_cast<std::uint32_t>(draws.upTo(items - 1));
                const auto b = static_cast<std::uint32_t>(draws.upTo(items - 1));
                if (a != b)
                    chosen.insert({std::min(a, b), std::max(a, b)});
            }
            FoundSets sets;
            CountedSets expected;
            for (const auto& [first, last] : chosen) {
                const Rank low = std::min(order.rank(WalkItem{first}), order.rank(WalkItem{last}));
                const Rank high = std::max(order.rank(WalkItem{first}), order.rank(WalkItem{last}));
                const auto count = static_cast<std::uint32_t>(expected.size());
                expected[Set{low, high}] = count;
                sets.add(2, first, WalkItem{last}, count);
            }
            const ItemSets made = ordered(std::move(sets), order, pairs == 20 ? 3 : 1);
            EXPECT_EQ(items, made.count(1));
            ASSERT_EQ(expected.size(), made.count(2));
            std::size_t place = 0;
            for (const auto& [set, count] : expected) {
                Set found(2);
                made.items(2, place, found.data());
                ASSERT_EQ(set, found) << items << " items, pair " << place;
                ASSERT_EQ(count, made.level(2).count[place]);
                ++place;
            }
        }
}

/// All sets of 17 items, found by a walk whose order has nothing to do with the ranks; the count of
/// a set has a bit for the rank of each item. A level has so many sets that each thread ranks some.
TEST(FoundSets, AreOrderedAlikeByAnyNumberOfThreads) {
    constexpr std::uint32_t items = 17;
    std::vector<std::uint32_t> counts;
    for (std::uint32_t rank = 0; rank < items; ++rank)
        counts.push_back(1 + 7 * rank % items);
    const WalkOrder order(counts, 1);
    struct Made {
        std::uint32_t last;
        std::uint32_t count;
    };
    FoundSets sets;
    std::vector<Made> below;
    for (std::uint32_t item = 0; item < items; ++item)
        below.push_back({item, 1U << at(order.rank(WalkItem{item}))});
    for (std::size_t size = 2; size <= items; ++size) {
        std::vector<Made> level;
        for (std::size_t parent = 0; parent < below.size(); ++parent)
            for (std::uint32_t item = below[parent].last + 1; item < items; ++item) {
                level.push_back({item, below[parent].count | 1U << at(order.rank(WalkItem{item}))});
                sets.add(size, parent, WalkItem{item}, level.back().count);
            }
        below.swap(level);
    }
    for (const unsigned threads : {1U, 2U, 3U, 8U, 40U}) {
        const ItemSets made = ordered(sets, order, threads);
        ASSERT_EQ((std::size_t{1} << items) - 1, made.size());
        for (std::size_t size = 2; size <= items; ++size) {
            Set before;
            for (std::size_t set = 0; set < made.count(size); ++set) {
                Set found(size);
                made.items(size, set, found.data());
                ASSERT_LT(before, found) << threads << " threads";
                ASSERT_EQ(set, made.find(found)) << threads << " threads";
                std::uint32_t expected = 0;
                for (const Rank rank : found)
                    expected |= 1U << at(rank);
                ASSERT_EQ(expected, made.level(size).count[set]) << threads << " threads";
                before.swap(found);
            }
        }
    }
}

}  // namespace
}  // namespace quarvis::mining
