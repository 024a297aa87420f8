#include <quarvis/mining/shards.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/index_bytes.hpp>

#include "indexed_tables.hpp"
#include "oracle/draws.hpp"
#include "oracle/mine.hpp"
#include "oracle/random_table.hpp"
#include "shard_cuts.hpp"
#include "support/same_result.hpp"
#include "support/sanitized.hpp"
#include "table_series.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::cut;
using mining_tests::indexed;
using mining_tests::itemNames;
using mining_tests::optionsLike;
using mining_tests::outcomeOf;
using mining_tests::Series;
using oracle::RandomCase;
using oracle::Table;
using oracle::tableOf;
using oracle::tableShapes;
using support::differenceOf;

/// Shards that begin at the histories `begins`; the last one ends with the index.
std::vector<HistoryIndex> cutAt(const HistoryIndex& index, std::vector<std::size_t> begins) {
    std::vector<HistoryIndex> shards;
    begins.push_back(index.historyCount());
    for (std::size_t i = 0; i + 1 < begins.size(); ++i)
        shards.push_back(index.slice(HistoryId{static_cast<std::uint32_t>(begins[i])},
                                     HistoryId{static_cast<std::uint32_t>(begins[i + 1])}));
    return shards;
}

/// One shard at the beginning is empty, one at the end is, and most in between.
std::vector<HistoryIndex> cutWithEmptyOnes(const HistoryIndex& index) {
    const std::size_t all = index.historyCount();
    return cutAt(index, {0, 0, all / 2, all / 2, all / 2, all, all});
}

std::vector<HistoryIndex> cutAtRandom(const HistoryIndex& index, std::uint64_t seed) {
    oracle::Draws draws(seed);
    std::vector<std::size_t> begins = {0};
    for (int shard = 0; shard < 4; ++shard)
        begins.push_back(draws.upTo(index.historyCount()));
    std::sort(begins.begin(), begins.end());
    return cutAt(index, begins);
}

std::vector<HistoryIndex> throughBytes(const std::vector<HistoryIndex>& shards) {
    std::vector<HistoryIndex> read;
    for (const HistoryIndex& shard : shards)
        read.push_back(indexFromBytes(indexToBytes(shard)));
    return read;
}

struct Cut {
    const char* name;
    std::vector<HistoryIndex> shards;
};

std::vector<Cut> cutsOf(const HistoryIndex& index, std::uint64_t seed) {
    return {{"one", cut(index, 1)},
            {"two", cut(index, 2)},
            {"three", cut(index, 3)},
            {"seven", cut(index, 7)},
            {"one a history", cut(index, std::max<std::size_t>(index.historyCount(), 1))},
            {"some of them empty", cutWithEmptyOnes(index)},
            {"at random, through bytes", throughBytes(cutAtRandom(index, seed))}};
}

/// Whether each cut yields what the whole does, in one thread and in several.
testing::AssertionResult agree(const HistoryIndex& index, MiningOptions options,
                               std::uint64_t seed) {
    Observer observer;
    const Result expected = mine(index, options, observer);
    for (const Cut& cut : cutsOf(index, seed))
        for (const unsigned threads : {1U, 3U}) {
            options.threads = threads;
            const std::string difference =
                differenceOf(expected, mineShards(cut.shards, options, observer));
            if (!difference.empty())
                return testing::AssertionFailure() << "seed " << seed << ", shards: " << cut.name
                                                   << ", " << threads << " threads: " << difference;
        }
    return testing::AssertionSuccess();
}

testing::AssertionResult agree(const Table& table, const oracle::Settings& settings,
                               std::uint64_t seed) {
    const HistoryIndex index = indexed(table, settings.minCount);
    Observer observer;
    const oracle::Outcome expected = oracle::mine(settings, table);
    const oracle::Outcome found =
        outcomeOf(index, mineShards(cut(index, 3), optionsLike(settings), observer));
    if (expected.rules != found.rules || expected.itemSets != found.itemSets)
        return testing::AssertionFailure()
               << "seed " << seed << " with " << settings << ": " << found.itemSets.size()
               << " item sets and " << found.rules.size() << " rules instead of "
               << expected.itemSets.size() << " and " << expected.rules.size() << ", or others";
    return agree(index, optionsLike(settings), seed);
}

/// Neither the rule nor the set reaches the least count in any one shard.
TEST(Shards, CountTogetherWhatIsRareInEach) {
    const HistoryIndex index =
        indexed(tableOf({"1:a 2:b", "1:a", "1:a 2:b", "1:b", "1:a 5:b", "1:c"}), 2);
    MiningOptions options;
    options.minCount = 3;
    Observer observer;
    const oracle::Outcome found = outcomeOf(index, mineShards(cut(index, 6), options, observer));
    // Of 6 histories, a is in 4, b is in 4, and both are in 3, where b comes after a.
    ASSERT_EQ(1U, found.rules.size());
    EXPECT_EQ("a => b", found.rules[0].text);
    EXPECT_EQ(3U, found.rules[0].count);
    EXPECT_EQ(3U, found.rules[0].icount);
    EXPECT_DOUBLE_EQ(0.5, found.rules[0].support);
    EXPECT_DOUBLE_EQ(0.75, found.rules[0].confidence);
    EXPECT_THAT(found.itemSets, testing::ElementsAre(oracle::Outcome::ItemSet{"{a,b}", 3},
                                                     oracle::Outcome::ItemSet{"{a}", 4},
                                                     oracle::Outcome::ItemSet{"{b}", 4}));
}

/// Two histories meet {a,b,c} => d, each in a shard of its own.
TEST(Shards, FollowRulesThatAreRareInEach) {
    const Table table = tableOf({"1:a 2:b 3:c 4:d", "1:a 3:b 5:c 9:d", "1:d 2:a 3:b"});
    oracle::Settings settings;
    settings.minCount = 2;
    settings.allSplits = true;
    EXPECT_TRUE(agree(table, settings, 0));
    const HistoryIndex index = indexed(table);
    Observer observer;
    const oracle::Outcome found =
        outcomeOf(index, mineShards(cut(index, 3), optionsLike(settings), observer));
    EXPECT_THAT(found.ruleTexts(), testing::Contains("{a,b,c} => d"));
}

class RandomTablesInShards : public testing::TestWithParam<std::size_t> {};

/// Half of the tables are mined with every split, the others by runs.
TEST_P(RandomTablesInShards, AreMinedAsTheWhole) {
    std::size_t withRules = 0;
    const std::size_t tables = ADDRESS_SANITIZED ? 10 : 60;
    for (std::size_t i = 0; i < tables; ++i) {
        const std::uint64_t seed = GetParam() + i * tableShapes().size();
        RandomCase drawn = oracle::randomCase(seed);
        drawn.settings.allSplits = i % 2 == 1;
        ASSERT_TRUE(agree(drawn.table, drawn.settings, seed));
        withRules += oracle::mine(drawn.settings, drawn.table).rules.empty() ? 0 : 1;
    }
    EXPECT_GE(withRules, tables / 10);
}

/// Least counts from 0, where sets that no history holds count too, to more than there are
/// histories. The index then has more items than the run.
TEST_P(RandomTablesInShards, AreMinedAsTheWholeForEveryLeastCountAndSize) {
    const oracle::TableShape& shape = tableShapes()[GetParam()];
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 1 : 3); ++seed) {
        const HistoryIndex index = indexed(oracle::randomTable(shape, seed), 0);
        const auto most =
            static_cast<std::uint32_t>(std::min<std::size_t>(index.historyCount(), 8));
        for (std::uint32_t minCount = shape.leastMinCount; minCount <= most + 1; ++minCount)
            for (std::uint32_t maxSize = 0; maxSize <= 5; ++maxSize) {
                MiningOptions options;
                options.minCount = minCount;
                options.maxSize = maxSize;
                options.window = seed * (1 + shape.lastTime / 4);
                options.splits = maxSize % 2 == 0 ? Splits::ALL : Splits::RUNS;
                ASSERT_TRUE(agree(index, options, seed))
                    << "least count " << minCount << ", size " << maxSize;
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTablesInShards,
                         testing::Range(std::size_t{0}, tableShapes().size()),
                         [](const testing::TestParamInfo<std::size_t>& shape) {
                             return tableShapes()[shape.param].name;
                         });

class LargeTablesInShards : public testing::TestWithParam<Series> {};

TEST_P(LargeTablesInShards, AreMinedAsTheWhole) {
    const oracle::TableShape& shape = GetParam().shape;
    const std::size_t tables = ADDRESS_SANITIZED ? 2 : GetParam().tables;
    std::size_t withRules = 0;
    for (std::uint64_t seed = 0; seed < tables; ++seed) {
        oracle::Settings settings;
        settings.minCount = shape.leastMinCount;
        settings.windowSize = seed % 3 * shape.lastTime / 6;
        settings.allSplits = seed % 2 == 0;
        const Table table = oracle::randomTable(shape, seed);
        ASSERT_TRUE(agree(table, settings, seed));
        withRules += oracle::mine(settings, table).rules.empty() ? 0 : 1;
    }
    EXPECT_GE(withRules, (tables + 1) / 2);
}

/// Histories, transactions, items of a transaction, last time, least count.
INSTANTIATE_TEST_SUITE_P(
    Shapes, LargeTablesInShards,
    testing::Values(Series{{"MoreMomentsThanAWord", itemNames(6), 8, 300, 2, 2000, 2}, 12},
                    Series{{"AlikeHistories", itemNames(4), 1500, 2, 2, 3, 3}, 8},
                    Series{{"PresentAntecedents", itemNames(6), 60, 30, 5, 60, 4}, 12},
                    Series{{"LongAndShortHistories", itemNames(5), 40, 90, 2, 100, 3}, 12},
                    Series{{"ManyItems", itemNames(60), 200, 12, 6, 40, 8}, 6},
                    Series{{"DenseHistories", itemNames(9), 90, 6, 6, 20, 5}, 10}),
    [](const testing::TestParamInfo<Series>& series) { return series.param.shape.name; });

TEST(Shards, OfTimesThatAreWideOrNotAreMinedTogether) {
    const Table table = tableOf({"1:a 2:b", "1:a 3:b", "1:b 2:a", "5:a,b"});
    const HistoryIndex narrow = indexed(table, 1, TimeWidth::BITS_32);
    const HistoryIndex wide = indexed(table, 1, TimeWidth::BITS_64);
    MiningOptions options;
    options.minCount = 1;
    Observer observer;
    const std::vector<HistoryIndex> shards = {narrow.slice(HistoryId{0}, HistoryId{2}),
                                              wide.slice(HistoryId{2}, HistoryId{4})};
    EXPECT_EQ("",
              differenceOf(mine(narrow, options, observer), mineShards(shards, options, observer)));
}

TEST(Shards, InAnyOrderAreMinedAsTheWhole) {
    for (std::uint64_t seed = 0; seed < 33; ++seed) {
        const RandomCase drawn = oracle::randomCase(seed);
        const HistoryIndex index = indexed(drawn.table, drawn.settings.minCount);
        const MiningOptions options = optionsLike(drawn.settings);
        Observer observer;
        std::vector<HistoryIndex> shards = cut(index, 4);
        std::reverse(shards.begin(), shards.end());
        EXPECT_EQ(
            "", differenceOf(mine(index, options, observer), mineShards(shards, options, observer)))
            << "seed " << seed;
    }
}

TEST(Shards, WithoutHistoriesHaveNothing) {
    MiningOptions options;
    Observer observer;
    const Result result = mineShards(std::vector<HistoryIndex>(3), options, observer);
    EXPECT_EQ(0U, result.itemSets.size());
    EXPECT_TRUE(result.rules.empty());
}

class RefusedShards : public testing::Test {
  protected:
    static void expectRefusal(const std::vector<HistoryIndex>& shards, const char* message,
                              const MiningOptions& options = {}) {
        Observer observer;
        EXPECT_THAT([&] { mineShards(shards, options, observer); },
                    testing::ThrowsMessage<std::invalid_argument>(message));
    }

    const HistoryIndex m_index = indexed(tableOf({"1:a 2:b", "1:a 2:b"}), 1);
};

TEST_F(RefusedShards, AreNone) {
    expectRefusal({}, "a run needs one shard at least");
}

TEST_F(RefusedShards, HaveOtherItems) {
    const char* const message = "shards of different items";
    for (const HistoryIndex& other :
         {indexed(tableOf({"1:a 2:c", "1:a 2:c"}), 1), indexed(tableOf({"1:a 2:b", "1:a"}), 1),
          indexed(tableOf({"1:a", "1:a"}), 1), indexed(tableOf({"1:a 2:b,c", "1:a 2:b"}), 1),
          indexed(tableOf({"1:a 2:b", "1:a 2:b"}), 2), HistoryIndex()}) {
        expectRefusal({m_index, other}, message);
        expectRefusal({other, m_index, m_index}, message);
    }
}

TEST_F(RefusedShards, LackItemsOfTheRun) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "1:a 2:b"}), 2);
    MiningOptions options;
    options.minCount = 1;
    for (const std::size_t number : {1U, 2U})
        expectRefusal(cut(index, number), "the index lacks items that are frequent enough",
                      options);
}

TEST_F(RefusedShards, HaveNoThread) {
    MiningOptions options;
    options.threads = 0;
    for (const std::size_t number : {1U, 2U})
        expectRefusal(cut(m_index, number), "a run needs one thread at least", options);
}

}  // namespace
}  // namespace quarvis::mining
