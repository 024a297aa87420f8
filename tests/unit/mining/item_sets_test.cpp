#include <quarvis/mining/item_sets.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "naive_sets.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::CountedSets;
using mining_tests::naiveSets;
using mining_tests::ofSize;
using mining_tests::Set;

constexpr Rank A{0};
constexpr Rank B{1};
constexpr Rank C{2};
constexpr Rank D{3};

Level levelOf(std::vector<std::uint32_t> prefix, std::vector<Rank> last,
              std::vector<std::uint32_t> count) {
    Level level;
    level.prefix = std::move(prefix);
    level.last = std::move(last);
    level.count = std::move(count);
    return level;
}

/// Fills in the extensions of the levels.
ItemSets setsOf(std::vector<Level> levels) {
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const std::vector<std::uint32_t> none;
        const std::vector<std::uint32_t>& prefixes =
            i + 1 < levels.size() ? levels[i + 1].prefix : none;
        for (std::size_t set = 0; set <= levels[i].size(); ++set)
            levels[i].extensions.push_back(static_cast<std::uint32_t>(
                std::count_if(prefixes.begin(), prefixes.end(),
                              [set](std::uint32_t prefix) { return prefix < set; })));
    }
    return ItemSets(std::move(levels));
}

/// {a}, {b}, {c}, {d}; {a,b}, {a,c}, {b,c}, {c,d}; {a,b,c}.
ItemSets nineSets() {
    return setsOf({levelOf({0, 0, 0, 0}, {A, B, C, D}, {9, 8, 7, 6}),
                   levelOf({0, 0, 1, 2}, {B, C, C, D}, {5, 4, 3, 2}), levelOf({0}, {C}, {1})});
}

TEST(ItemSets, HaveNoLevelsAtFirst) {
    const ItemSets sets;
    EXPECT_EQ(0U, sets.levels());
    EXPECT_EQ(0U, sets.size());
    EXPECT_EQ(0U, sets.count(1));
    EXPECT_EQ(ItemSets::NOT_FOUND, sets.find(Set{A}));
}

TEST(ItemSets, AreCountedBySize) {
    const ItemSets sets = nineSets();
    EXPECT_EQ(3U, sets.levels());
    EXPECT_EQ(9U, sets.size());
    EXPECT_EQ(0U, sets.count(0));
    EXPECT_EQ(4U, sets.count(1));
    EXPECT_EQ(4U, sets.count(2));
    EXPECT_EQ(1U, sets.count(3));
    EXPECT_EQ(0U, sets.count(4));
}

TEST(ItemSets, KnowWhereTheirExtensionsBegin) {
    const ItemSets sets = nineSets();
    EXPECT_EQ((std::vector<std::uint32_t>{0, 2, 3, 4, 4}), sets.level(1).extensions);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 1, 1, 1}), sets.level(2).extensions);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 0}), sets.level(3).extensions);
}

TEST(ItemSets, TellTheItemsOfASet) {
    const ItemSets sets = nineSets();
    Set items(3);
    sets.items(3, 0, items.data());
    EXPECT_EQ((Set{A, B, C}), items);
    items.resize(2);
    sets.items(2, 3, items.data());
    EXPECT_EQ((Set{C, D}), items);
    items.resize(1);
    sets.items(1, 1, items.data());
    EXPECT_EQ((Set{B}), items);
}

TEST(ItemSets, AreFoundByTheirItems) {
    const ItemSets sets = nineSets();
    struct Row {
        Set items;
        std::size_t place;
    };
    const Row rows[] = {
        {{A}, 0},
        {{D}, 3},
        {{A, B}, 0},
        {{A, C}, 1},
        {{B, C}, 2},
        {{C, D}, 3},
        {{A, B, C}, 0},
        {{}, ItemSets::NOT_FOUND},
        {{A, D}, ItemSets::NOT_FOUND},
        {{B, D}, ItemSets::NOT_FOUND},
        {{D, D}, ItemSets::NOT_FOUND},
        {{A, B, D}, ItemSets::NOT_FOUND},
        {{B, C, D}, ItemSets::NOT_FOUND},
        {{A, B, C, D}, ItemSets::NOT_FOUND},
        {{Rank{4}}, ItemSets::NOT_FOUND},
        {{A, Rank{4}}, ItemSets::NOT_FOUND},
    };
    for (const auto& [items, place] : rows)
        EXPECT_EQ(place, sets.find(items)) << items.size() << " items";
}

using Listed = std::vector<std::pair<Set, std::uint32_t>>;

Listed listed(const ItemSets& sets) {
    Listed list;
    for (ItemSetCursor cursor(sets); cursor.next();)
        list.emplace_back(Set(cursor.items().begin(), cursor.items().end()), cursor.count());
    return list;
}

TEST(ItemSetCursor, ComesToASetAfterAllThatItBegins) {
    EXPECT_EQ((Listed{{{A, B, C}, 1},
                      {{A, B}, 5},
                      {{A, C}, 4},
                      {{A}, 9},
                      {{B, C}, 3},
                      {{B}, 8},
                      {{C, D}, 2},
                      {{C}, 7},
                      {{D}, 6}}),
              listed(nineSets()));
}

TEST(ItemSetCursor, HasNothingToComeToWithoutSets) {
    EXPECT_EQ(Listed(), listed(ItemSets()));
    EXPECT_EQ(Listed(), listed(setsOf({Level()})));
}

TEST(ItemSetCursor, StaysAtTheEnd) {
    const ItemSets sets = nineSets();
    ItemSetCursor cursor(sets);
    while (cursor.next())
        continue;
    EXPECT_FALSE(cursor.next());
    EXPECT_FALSE(cursor.next());
}

/// The trie of sets, level by level.
ItemSets trieOf(const CountedSets& counted) {
    std::vector<Level> levels;
    CountedSets below = {{{}, 0}};
    for (std::size_t size = 1;; ++size) {
        const CountedSets here = ofSize(counted, size);
        if (here.empty())
            return setsOf(std::move(levels));
        Level level;
        for (const auto& [set, count] : here) {
            const auto prefix = below.find(Set(set.begin(), set.end() - 1));
            level.prefix.push_back(
                static_cast<std::uint32_t>(std::distance(below.begin(), prefix)));
            level.last.push_back(set.back());
            level.count.push_back(count);
        }
        levels.push_back(std::move(level));
        below = here;
    }
}

/// The order of the item-set file: at the first difference the lesser item decides, and a set comes
/// before its prefixes.
bool isListedBefore(const std::pair<Set, std::uint32_t>& a,
                    const std::pair<Set, std::uint32_t>& b) {
    Set left = a.first;
    Set right = b.first;
    left.push_back(Rank{1000});
    right.push_back(Rank{1000});
    return left < right;
}

TEST(ItemSets, OfRandomTablesAreFoundAndListedInOrder) {
    for (std::uint64_t seed = 0; seed < 110; ++seed) {
        const HistoryIndex index = support::indexOf(oracle::randomCase(seed).table, 1);
        const CountedSets counted = naiveSets(index, 1, 4);
        const ItemSets sets = trieOf(counted);
        Listed expected(counted.begin(), counted.end());
        std::sort(expected.begin(), expected.end(), isListedBefore);
        ASSERT_EQ(expected, listed(sets)) << "seed " << seed;
        for (std::size_t size = 1; size <= sets.levels(); ++size) {
            std::size_t place = 0;
            for (const auto& [set, count] : ofSize(counted, size)) {
                ASSERT_EQ(place++, sets.find(set)) << "seed " << seed;
                Set other = set;
                other.back() = Rank(at(other.back()) + 1);
                ASSERT_EQ(counted.contains(other), sets.find(other) != ItemSets::NOT_FOUND);
            }
        }
    }
}

}  // namespace
}  // namespace quarvis::mining
