#include "candidates.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>

#include "free_step.hpp"
#include "indexed_tables.hpp"
#include "item_set_walk.hpp"
#include "oracle/random_table.hpp"
#include "support/same_result.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::indexed;
using mining_tests::makeBaskets;
using testing::ElementsAre;
using testing::IsEmpty;

struct Block {
    std::size_t begin;
    std::size_t end;
    std::size_t count;

    bool operator==(const Block&) const = default;
};

void PrintTo(const Block& block, std::ostream* os) {
    *os << block.begin << " to " << block.end << ": " << block.count;
}

/// All blocks; none of their candidates is kept.
std::vector<Block> blocksOf(Candidates& candidates) {
    std::vector<Block> blocks;
    while (candidates.next()) {
        blocks.push_back({candidates.begin(), candidates.end(), candidates.count()});
        candidates.prune(std::vector<std::uint32_t>(candidates.count()));
    }
    return blocks;
}

/// The candidates of one first item.
FoundSets items(std::size_t number) {
    FoundSets found;
    found.link(number);
    return found;
}

LargeVector<WalkItem> lastItemsOf(const FoundSets& found, std::size_t size) {
    return found.level(size).last;
}

TEST(Candidates, PairsAreOfEachItemAndEachLaterOne) {
    FoundSets found = items(4);
    Candidates candidates(found, 4, 1);
    EXPECT_EQ(2U, candidates.size());
    EXPECT_THAT(blocksOf(candidates), ElementsAre(Block{0, 4, 6}));
    EXPECT_FALSE(candidates.finish());
    EXPECT_EQ(1U, found.maxSize());
}

TEST(Candidates, ABlockEndsWithTheFirstItemThatFillsIt) {
    for (const auto& [block, expected] : std::vector<std::pair<std::size_t, std::vector<Block>>>{
             {1, {{0, 1, 3}, {1, 2, 2}, {2, 3, 1}, {3, 4, 0}}},
             {3, {{0, 1, 3}, {1, 3, 3}, {3, 4, 0}}},
             {4, {{0, 2, 5}, {2, 4, 1}}},
             {6, {{0, 3, 6}, {3, 4, 0}}},
             {7, {{0, 4, 6}}}}) {
        FoundSets found = items(4);
        Candidates candidates(found, 4, 1, block);
        EXPECT_EQ(expected, blocksOf(candidates)) << "blocks of " << block;
    }
}

TEST(Candidates, ThereIsNoBlockWithoutItems) {
    FoundSets found = items(0);
    Candidates candidates(found, 0, 0);
    EXPECT_THAT(blocksOf(candidates), IsEmpty());
    EXPECT_FALSE(candidates.finish());
}

/// Items 0 to 3 have the pairs 01, 02, 03, 12 and 23. Only pairs with the same first item make
/// triples.
TEST(Candidates, LargerOnesAreOfSetsThatDifferInTheLastItem) {
    FoundSets found = items(4);
    Candidates pairs(found, 4, 2);
    ASSERT_TRUE(pairs.next());
    pairs.prune({2, 3, 4, 5, 1, 6});
    ASSERT_FALSE(pairs.next());
    ASSERT_TRUE(pairs.finish());
    EXPECT_THAT(lastItemsOf(found, 2),
                ElementsAre(WalkItem{1}, WalkItem{2}, WalkItem{3}, WalkItem{2}, WalkItem{3}));
    EXPECT_THAT(found.level(2).parent, ElementsAre(0, 0, 0, 1, 2));
    EXPECT_THAT(found.level(2).count, ElementsAre(2, 3, 4, 5, 6));

    Candidates triples(found, 4, 2);
    EXPECT_EQ(3U, triples.size());
    ASSERT_TRUE(triples.next());
    EXPECT_EQ(3U, triples.count());  // 012, 013, 023
    triples.prune({2, 1, 2});
    ASSERT_FALSE(triples.next());
    ASSERT_TRUE(triples.finish());
    EXPECT_THAT(lastItemsOf(found, 3), ElementsAre(WalkItem{2}, WalkItem{3}));
    EXPECT_THAT(found.level(3).parent, ElementsAre(0, 1));

    Candidates larger(found, 4, 2);
    EXPECT_THAT(blocksOf(larger), ElementsAre(Block{0, 4, 0}));
    EXPECT_FALSE(larger.finish());
    EXPECT_EQ(3U, found.maxSize());
}

/// The frequent sets of an index, found level by level in blocks of this size, and the greatest
/// number of blocks of a level.
std::pair<ItemSets, std::size_t> foundInBlocks(const HistoryIndex& index,
                                               const MiningOptions& options, std::size_t block) {
    const WalkOrder order(index, options.minCount);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    const Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    FoundSets found = items(order.size());
    std::size_t mostBlocks = 0;
    for (bool any = true; any;) {
        Candidates candidates(found, order.size(), options.minCount, block);
        const ItemSetWalk::Scope scope{&found, candidates.size() - 1, candidates.size()};
        std::size_t blocks = 0;
        for (; candidates.next(); ++blocks) {
            ItemSetWalk walk(baskets, 0, scope, work);
            std::vector<std::uint32_t> counts;
            for (std::size_t item = candidates.begin(); item < candidates.end(); ++item)
                walk.count(WalkItem{static_cast<std::uint32_t>(item)}, counts);
            EXPECT_EQ(candidates.count(), counts.size());
            candidates.prune(counts);
        }
        mostBlocks = std::max(mostBlocks, blocks);
        any = candidates.finish();
    }
    return {std::move(found).ordered(order, 1, step), mostBlocks};
}

TEST(Candidates, BlocksOfAnySizeFindTheSameSets) {
    std::size_t blocks = 0;
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 55 : 550); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        const HistoryIndex index = indexed(drawn.table);
        MiningOptions options;
        options.minCount = drawn.settings.minCount == 0 ? 1 : drawn.settings.minCount;
        Observer observer;
        const ItemSets expected = findItemSets(index, options, observer);
        for (const std::size_t block : {1U, 2U, 5U, 20U, 1U << 20}) {
            auto [found, most] = foundInBlocks(index, options, block);
            ASSERT_EQ("", support::differenceOf({expected, {}}, {found, {}}))
                << "seed " << seed << ", blocks of " << block;
            blocks = std::max(blocks, most);
        }
    }
    EXPECT_GE(blocks, 7U);
}

}  // namespace
}  // namespace quarvis::mining
