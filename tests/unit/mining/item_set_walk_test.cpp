#include "item_set_walk.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/index_builder.hpp>

#include "free_step.hpp"
#include "naive_sets.hpp"
#include "oracle/draws.hpp"
#include "support/engine.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::CountedSets;
using mining_tests::itemsOfHistories;
using mining_tests::makeBaskets;
using mining_tests::naiveSets;
using mining_tests::ofSize;
using mining_tests::Set;
using mining_tests::setsOf;

using WalkSet = std::vector<WalkItem>;

/// Sets as the walk has them, in the order of their walk items.
std::map<WalkSet, std::uint32_t> inWalkOrder(const CountedSets& sets, const WalkOrder& order) {
    std::map<WalkSet, std::uint32_t> walked;
    for (const auto& [set, count] : sets) {
        WalkSet items;
        for (const Rank item : set)
            items.push_back(order.item(item));
        std::sort(items.begin(), items.end());
        walked[items] = count;
    }
    return walked;
}

/// The sets of at most `size` items, as an earlier walk would have found them.
FoundSets knownSets(const CountedSets& sets, const WalkOrder& order, std::size_t size) {
    FoundSets known;
    std::map<WalkSet, std::size_t> places;
    for (std::uint32_t item = 0; item < order.size(); ++item)
        places[{WalkItem{item}}] = item;
    const auto walked = inWalkOrder(sets, order);
    for (std::size_t here = 2; here <= size; ++here)
        for (const auto& [set, count] : walked)
            if (set.size() == here) {
                places[set] = known.count(here);
                known.add(here, places.at(WalkSet(set.begin(), set.end() - 1)), set.back(), count);
            }
    known.link(order.size());
    return known;
}

/// What the walk finds besides the sets of at most `knownSize` items.
CountedSets walked(const HistoryIndex& index, std::uint32_t minCount, const CountedSets& sets,
                   std::size_t knownSize, std::size_t maxSize) {
    const WalkOrder order(index, minCount);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    FoundSets all = knownSets(sets, order, knownSize);
    const ItemSetWalk::Scope scope{&all, knownSize, maxSize};
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    ItemSetWalk walk(baskets, minCount, scope, work);
    FoundSets found;
    for (std::uint32_t item = 0; item < order.size(); ++item)
        walk.walk(WalkItem{item}, found);
    FoundSets whole = all;
    whole.append({{&found, {}, found.sizes()}}, 1, step);
    return setsOf(std::move(whole).ordered(order, 1, step));
}

CountedSets upTo(const CountedSets& sets, std::size_t maxSize) {
    CountedSets chosen;
    for (const auto& [set, count] : sets)
        if (set.size() <= maxSize)
            chosen[set] = count;
    return chosen;
}

/// Each known set of `size` items and the last item of each later set that shares all items but the
/// last.
std::vector<WalkSet> candidates(const CountedSets& sets, const WalkOrder& order, std::size_t size) {
    std::vector<WalkSet> known;
    for (const auto& [set, count] : inWalkOrder(sets, order))
        if (set.size() == size)
            known.push_back(set);
    std::vector<WalkSet> made;
    for (std::size_t i = 0; i < known.size(); ++i)
        for (std::size_t j = i + 1;
             j < known.size() && std::equal(known[i].begin(), known[i].end() - 1, known[j].begin());
             ++j) {
            made.push_back(known[i]);
            made.back().push_back(known[j].back());
        }
    return made;
}

std::uint32_t holders(const std::vector<std::set<Rank>>& histories, const WalkSet& set,
                      const WalkOrder& order) {
    return static_cast<std::uint32_t>(
        std::count_if(histories.begin(), histories.end(), [&](const std::set<Rank>& history) {
            return std::all_of(set.begin(), set.end(),
                               [&](WalkItem item) { return history.contains(order.rank(item)); });
        }));
}

void expectCandidatesCounted(const HistoryIndex& index, std::uint32_t minCount,
                             const CountedSets& sets, std::size_t knownSize) {
    const WalkOrder order(index, minCount);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    const FoundSets known = knownSets(sets, order, knownSize);
    const ItemSetWalk::Scope scope{&known, knownSize, knownSize + 1};
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    ItemSetWalk walk(baskets, minCount, scope, work);
    std::vector<std::uint32_t> counts;
    for (std::uint32_t item = 0; item < order.size(); ++item)
        walk.count(WalkItem{item}, counts);

    const std::vector<std::set<Rank>> histories = itemsOfHistories(index);
    std::vector<std::uint32_t> expected;
    for (const WalkSet& set : candidates(sets, order, knownSize))
        expected.push_back(holders(histories, set, order));
    ASSERT_EQ(expected, counts) << knownSize << " known";
}

/// Tables of histories of a few kinds. How likely an item is depends on the kind of a history, so
/// some items go together and others avoid each other.
struct Shape {
    const char* name;
    std::size_t histories;
    std::size_t items;
    std::vector<std::uint64_t>
        shares;  ///< To draw from: in how many of a thousand histories of a kind an item is.
    std::uint32_t minCount;
    std::size_t maxSize = 64;
};

std::ostream& operator<<(std::ostream& os, const Shape& shape) {
    return os << shape.name;
}

HistoryIndex indexOf(const Shape& shape, std::uint64_t seed) {
    oracle::Draws draws(seed);
    constexpr std::size_t kinds = 4;
    std::vector<std::uint64_t> shares;
    for (std::size_t i = 0; i < kinds * shape.items; ++i)
        shares.push_back(shape.shares[draws.upTo(shape.shares.size() - 1)]);
    Dictionary names;
    for (std::size_t item = 0; item < shape.items; ++item)
        names.add(std::to_string(100'000 + item));
    std::vector<std::uint32_t> entities;
    std::vector<std::uint32_t> items;
    for (std::uint32_t history = 0; history < shape.histories; ++history) {
        const std::size_t kind = draws.upTo(kinds - 1);
        for (std::uint32_t item = 0; item < shape.items; ++item)
            if (draws.upTo(999) < shares[kind * shape.items + item]) {
                entities.push_back(history);
                items.push_back(item);
            }
    }
    const std::vector<std::uint32_t> times(items.size(), 1);
    return indexColumns(entities, times, items, shape.histories, names,
                        std::min<std::uint32_t>(shape.minCount, 1));
}

class ItemSetWalkOf : public testing::TestWithParam<Shape> {};

TEST_P(ItemSetWalkOf, FindsTheSetsOfANaiveSearch) {
    const Shape& shape = GetParam();
    const std::uint64_t seeds = ADDRESS_SANITIZED ? 1 : 3;
    for (std::uint64_t seed = 0; seed < seeds; ++seed) {
        const HistoryIndex index = indexOf(shape, seed);
        const CountedSets sets = naiveSets(index, shape.minCount, shape.maxSize);
        ASSERT_FALSE(ofSize(sets, 2).empty()) << "seed " << seed;
        for (const std::size_t known : {1U, 2U, 3U, 4U})
            for (const std::size_t maxSize :
                 {std::size_t{known + 1}, std::size_t{known + 2}, std::size_t{7}, shape.maxSize}) {
                if (maxSize <= known || maxSize > shape.maxSize || ofSize(sets, known).empty())
                    continue;
                const CountedSets found = walked(index, shape.minCount, sets, known, maxSize);
                ASSERT_TRUE(upTo(sets, maxSize) == found)
                    << "seed " << seed << ", " << known << " known, up to " << maxSize;
            }
    }
}

TEST_P(ItemSetWalkOf, CountsTheCandidatesOfANaiveSearch) {
    const Shape& shape = GetParam();
    const HistoryIndex index = indexOf(shape, 1);
    const CountedSets sets = naiveSets(index, shape.minCount, 4);
    for (const std::size_t known : {1U, 2U, 3U})
        if (!ofSize(sets, known).empty())
            expectCandidatesCounted(index, shape.minCount, sets, known);
}

const std::vector<std::uint64_t> EVEN = {500};
const std::vector<std::uint64_t> DENSE = {700, 900, 1000};
const std::vector<std::uint64_t> MIXED = {20, 500, 950};
const std::vector<std::uint64_t> SHUNNING = {0, 10, 900};
const std::vector<std::uint64_t> SPARSE = {2, 20, 150};

INSTANTIATE_TEST_SUITE_P(
    Shapes, ItemSetWalkOf,
    testing::Values(Shape{"AFewHistories", 7, 8, EVEN, 1}, Shape{"AllInAll", 5, 8, {1000}, 5},
                    Shape{"NothingNeeded", 9, 7, MIXED, 0}, Shape{"H63", 63, 9, DENSE, 3},
                    Shape{"H64", 64, 9, DENSE, 30}, Shape{"H65", 65, 9, DENSE, 1},
                    Shape{"H128", 128, 9, MIXED, 2}, Shape{"H129", 129, 9, DENSE, 40},
                    Shape{"H1000", 1000, 10, MIXED, 5}, Shape{"H4096", 4096, 9, MIXED, 10},
                    Shape{"H4097", 4097, 9, SHUNNING, 1}, Shape{"H6000", 6000, 14, SHUNNING, 20, 6},
                    Shape{"ManyItemsSeldom", 300, 200, SPARSE, 3, 4},
                    Shape{"ManyItemsHardlyTogether", 1000, 100, SPARSE, 12, 4}),
    [](const testing::TestParamInfo<Shape>& shape) { return std::string(shape.param.name); });

/// Items x and y are each in thousands of histories but together only in a few. The class of {x,y}
/// has so many members that its bitmaps are rebuilt over these few.
TEST(ItemSetWalk, FindsTheSetsOfFewAmongManyHistories) {
    for (const std::size_t both : {1U, 63U, 64U, 65U, 100U, 128U, 129U, 200U}) {
        oracle::Draws draws(both);
        Dictionary names;
        names.add("x");
        names.add("y");
        for (const char name : {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'})
            names.add(std::string(1, name));
        constexpr std::size_t alone = 3000;
        const std::size_t histories = 2 * alone + both;
        std::vector<std::uint32_t> entities;
        std::vector<std::uint32_t> items;
        for (std::uint32_t history = 0; history < histories; ++history) {
            // The histories with both are spread among those with x.
            const bool hasX = history < alone + both;
            const bool hasY = history >= alone + both || history * both / (alone + both) !=
                                                             (history + 1) * both / (alone + both);
            for (std::uint32_t item = 0; item < names.size(); ++item)
                if (item == 0 ? hasX : item == 1 ? hasY : draws.upTo(9) < 7) {
                    entities.push_back(history);
                    items.push_back(item);
                }
        }
        const std::vector<std::uint32_t> times(items.size(), 1);
        const auto minCount = static_cast<std::uint32_t>(std::max<std::size_t>(both / 4, 1));
        const HistoryIndex index = indexColumns(entities, times, items, histories, names, minCount);
        const CountedSets sets = naiveSets(index, minCount, 5);
        for (const std::size_t known : {1U, 3U})
            EXPECT_TRUE(sets == walked(index, minCount, sets, known, 5))
                << both << " with both, " << known << " known";
    }
}

/// Item y is in the last `least` of the histories of x and in no others. After all the histories
/// that it may be missing from, it can still be frequent.
TEST(ItemSetWalk, FindsAPartnerThatIsInTheLastHistoriesAlone) {
    for (const std::uint32_t least : {1U, 8U, 9U, 40U, 100U})
        for (const std::uint32_t spare : {0U, 1U, 7U, 8U, 9U, 60U, 300U}) {
            oracle::Table table;
            const auto addHistories = [&table](std::uint32_t number, const oracle::Items& items) {
                table.histories.insert(table.histories.end(), number, {{1, items}});
            };
            addHistories(spare, {"f", "x"});
            addHistories(least, {"x", "y"});
            addHistories(least + spare, {"g", "y"});
            const HistoryIndex index = support::indexOf(table, least);
            const CountedSets sets = naiveSets(index, least);
            EXPECT_EQ(least,
                      sets.at(Set{Rank(index.itemCount() - 2), Rank(index.itemCount() - 1)}));
            EXPECT_TRUE(sets == walked(index, least, sets, 1, 64))
                << least << " and " << spare << " more";
        }
}

TEST(ItemSetWalk, FindsNothingForAnItemWithoutLaterOnes) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a,b", "1:a,b"}), 1);
    const WalkOrder order(index, 1);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    ItemSetWalk walk(baskets, 1, {}, work);
    FoundSets found;
    walk.walk(WalkItem{1}, found);
    EXPECT_EQ(1U, found.maxSize());
    walk.walk(WalkItem{0}, found);
    EXPECT_EQ((std::vector<std::size_t>{1}), found.sizes());
    EXPECT_EQ(2U, found.level(2).count[0]);
}

/// The walks of one object do not affect each other, whatever their order.
TEST(ItemSetWalk, GoesThroughItemsInAnyOrder) {
    const Shape shape{"", 300, 8, MIXED, 4};
    const HistoryIndex index = indexOf(shape, 5);
    const WalkOrder order(index, shape.minCount);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    ItemSetWalk shared(baskets, shape.minCount, {}, work);
    for (std::uint32_t item = static_cast<std::uint32_t>(order.size()); item-- > 0;) {
        FoundSets found;
        shared.walk(WalkItem{item}, found);
        FoundSets alone;
        ItemSetWalk(baskets, shape.minCount, {}, work).walk(WalkItem{item}, alone);
        EXPECT_EQ(alone.sizes(), found.sizes());
        for (std::size_t size = 2; size <= found.maxSize(); ++size)
            EXPECT_EQ(alone.level(size).count, found.level(size).count);
    }
}

}  // namespace
}  // namespace quarvis::mining
