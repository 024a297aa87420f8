#include <quarvis/mining/level_run.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/shard_counter.hpp>
#include <quarvis/mining/shuffle.hpp>

#include "index_text.hpp"
#include "indexed_tables.hpp"
#include "oracle/random_table.hpp"
#include "shard_cuts.hpp"
#include "support/same_result.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::cut;
using mining_tests::historiesOf;
using mining_tests::indexed;
using mining_tests::optionsLike;
using oracle::RandomCase;
using oracle::tableOf;
using oracle::tableShapes;
using support::differenceOf;

std::vector<std::uint32_t> countsOf(const HistoryIndex& index) {
    std::vector<std::uint32_t> counts;
    for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
        counts.push_back(index.count(Rank{rank}));
    return counts;
}

LevelRun throughBytes(const std::string& bytes) {
    return LevelRun::fromBytes(bytes);
}

/// Counts the candidates of the next level on the shards, and adds those that are frequent.
void addLevel(LevelRun& run, const std::vector<HistoryIndex>& shards, std::uint64_t most) {
    const Observer observer;
    std::vector<FrequentCandidates> frequent;
    for (const LevelBlock& block : run.candidates(most)) {
        const LevelRun sent = throughBytes(run.bytesForCandidates(block));
        std::vector<std::uint32_t> sums(block.count);
        for (const HistoryIndex& shard : shards)
            ShardCounter(shard, sent, observer).countCandidates(block, sums);
        FrequentCandidates& kept = frequent.emplace_back();
        for (std::uint32_t place = 0; place < sums.size(); ++place)
            if (sums[place] >= run.options().minCount) {
                kept.places.push_back(place);
                kept.counts.push_back(sums[place]);
            }
    }
    run.addLevel(most, frequent);
}

void addRules(LevelRun& run, const std::vector<HistoryIndex>& shards, std::uint64_t most) {
    const Observer observer;
    const LevelRun sent = throughBytes(run.bytesForRules());
    std::vector<RuleTally> met;
    for (const LevelBlock& block : run.rules(most)) {
        std::vector<RuleTally> sum;
        for (const HistoryIndex& shard : shards)
            addTallies(sum, ShardCounter(shard, sent, observer).tallyRules(block));
        for (const RuleTally& tally : sum)
            if (tally.met >= run.options().minCount)
                met.push_back(tally);
    }
    run.addRules(met);
}

Result minedByLevels(const HistoryIndex& index, const std::vector<HistoryIndex>& shards,
                     const MiningOptions& options, std::uint64_t most) {
    LevelRun run(countsOf(index), options);
    while (run.hasCandidates() || run.ruleSize() != 0) {
        if (run.hasCandidates())
            addLevel(run, shards, most);
        if (run.ruleSize() != 0)
            addRules(run, shards, most);
        run = throughBytes(run.bytes());
    }
    return run.result(index.historyCount());
}

class RandomTablesByLevels : public testing::TestWithParam<std::size_t> {};

TEST_P(RandomTablesByLevels, AreMinedAsTheWhole) {
    std::size_t withRules = 0;
    const std::size_t tables = ADDRESS_SANITIZED ? 6 : 40;
    for (std::size_t i = 0; i < tables; ++i) {
        const std::uint64_t seed = GetParam() + i * tableShapes().size();
        RandomCase drawn = oracle::randomCase(seed);
        drawn.settings.allSplits = i % 2 == 1;
        MiningOptions options = optionsLike(drawn.settings);
        options.minCount = std::max<std::uint32_t>(options.minCount, 1);
        const HistoryIndex index = indexed(drawn.table);
        Observer observer;
        const Result expected = mine(index, options, observer);
        for (const std::uint64_t most : std::vector<std::uint64_t>{1, 3, 1000})
            for (const std::size_t shards : std::vector<std::size_t>{1, 2, 5})
                ASSERT_EQ("", differenceOf(expected,
                                           minedByLevels(index, cut(index, shards), options, most)))
                    << "seed " << seed << ", blocks of " << most << ", shards " << shards;
        withRules += expected.rules.empty() ? 0 : 1;
    }
    EXPECT_GE(withRules, tables / 10);
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTablesByLevels,
                         testing::Range(std::size_t{0}, tableShapes().size()),
                         [](const testing::TestParamInfo<std::size_t>& shape) {
                             return tableShapes()[shape.param].name;
                         });

MiningOptions ofCount(std::uint32_t minCount) {
    MiningOptions options;
    options.minCount = minCount;
    return options;
}

TEST(LevelRun, WithoutFrequentPairsIsSoonDone) {
    EXPECT_FALSE(LevelRun({}, ofCount(1)).hasCandidates());
    EXPECT_FALSE(LevelRun({3, 1}, ofCount(2)).hasCandidates());
    LevelRun run({3, 2}, ofCount(2));
    ASSERT_TRUE(run.hasCandidates());
    run.addLevel(1, std::vector<FrequentCandidates>(1));
    EXPECT_FALSE(run.hasCandidates());
    EXPECT_EQ(0U, run.ruleSize());
    EXPECT_EQ(2U, run.result(3).itemSets.size());
}

TEST(LevelRun, RefusesWhatItDidNotAskFor) {
    LevelRun run({3, 3, 3}, ofCount(2));
    ASSERT_EQ(2U, run.candidates(1).size());
    const std::vector<FrequentCandidates> none(1);
    EXPECT_THROW(run.addLevel(1, none), std::invalid_argument);
    const std::vector<FrequentCandidates> tooMany(3);
    EXPECT_THROW(run.addLevel(1, tooMany), std::invalid_argument);
    const std::vector<FrequentCandidates> outOfRange = {{{2}, {2}}, {}};
    EXPECT_THROW(run.addLevel(1, outOfRange), std::invalid_argument);
    EXPECT_THROW(run.addRules({}), std::invalid_argument);
    const std::vector<FrequentCandidates> both = {{{0, 1}, {2, 2}}, {}};
    run.addLevel(1, both);
    ASSERT_EQ(2U, run.ruleSize());
    const std::vector<RuleTally> noSet = {{1, 2, 2, 2}};
    EXPECT_THROW(run.addRules(noSet), std::invalid_argument);
    const std::vector<RuleTally> noSplit = {{3, 0, 2, 2}};
    EXPECT_THROW(run.addRules(noSplit), std::invalid_argument);
}

/// Every cut and every changed byte is detected.
TEST(LevelRun, RefusesDamagedBytes) {
    LevelRun run({3, 3, 3}, ofCount(2));
    const std::vector<FrequentCandidates> all = {{{0, 1, 2}, {3, 2, 2}}};
    run.addLevel(10, all);
    const std::vector<RuleTally> rules = {{1, 0, 2, 2}, {2, 1, 3, 1}};
    run.addRules(rules);
    const std::string bytes = run.bytes();
    EXPECT_EQ(bytes, LevelRun::fromBytes(bytes).bytes());
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(LevelRun::fromBytes(std::span(bytes).first(size)), RunFormatError) << size;
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        std::string changed = bytes;
        changed[place] = static_cast<char>(changed[place] ^ 0x10);
        EXPECT_THROW(LevelRun::fromBytes(changed), RunFormatError) << place;
    }
}

TEST(AddTallies, SumsEqualRulesAndKeepsTheOrder) {
    std::vector<RuleTally> sum = {{1, 0, 1, 1}, {2, 3, 4, 2}};
    const std::vector<RuleTally> more = {{2, 0, 5, 5}, {2, 3, 1, 1}, {1, 7, 2, 0}};
    addTallies(sum, more);
    std::vector<std::vector<std::uint64_t>> rules;
    for (const RuleTally& tally : sum)
        rules.push_back({tally.set, tally.split, tally.met, tally.counted});
    EXPECT_THAT(rules, testing::ElementsAre(
                           testing::ElementsAre(0, 1, 1, 1), testing::ElementsAre(0, 2, 5, 5),
                           testing::ElementsAre(3, 2, 5, 3), testing::ElementsAre(7, 1, 2, 0)));
}

TEST(ShardCounter, RefusesShardsAndBlocksOfOthers) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "1:a,c"}));
    const Observer observer;
    const LevelRun other({1, 1}, ofCount(1));
    EXPECT_THROW(ShardCounter(index, other, observer), std::invalid_argument);
    const LevelRun run({2, 1, 1}, ofCount(1));
    ShardCounter counter(index, run, observer);
    std::vector<std::uint32_t> sums(3);
    EXPECT_THROW(counter.countCandidates({0, 4, 3}, sums), std::invalid_argument);
    EXPECT_THROW(counter.countCandidates({0, 1, 3}, sums), std::invalid_argument);
    EXPECT_THROW(counter.countCandidates({0, 3, 2}, sums), std::invalid_argument);
    EXPECT_THROW(counter.tallyRules({0, 1, 1}), std::invalid_argument);
}

TEST(ShardColumns, KeepItemsThatNobodyHas) {
    Dictionary names;
    for (const char* name : {"b", "a", "c"})
        names.add(name);
    const std::vector<std::uint32_t> entities = {0, 0, 1};
    const std::vector<std::uint32_t> times = {5, 3, 4};
    const std::vector<std::uint32_t> items = {0, 2, 0};
    const HistoryIndex shard = shardColumns(entities, times, items, 3, names);
    EXPECT_EQ("3:c 5:b | 4:b | ", historiesOf(shard));
    EXPECT_THAT(countsOf(shard), testing::ElementsAre(0, 2, 1));
}

/// Item b is infrequent in the whole. The shards are shuffled as slices of the whole without it.
TEST(WithoutRareItems, ShufflesAsTheWhole) {
    const oracle::Table table =
        tableOf({"1:a 2:b 3:c 4:d", "1:a,b 2:c 5:a", "1:d 2:c 3:a", "1:c 7:a 9:d"});
    const HistoryIndex frequent = indexed(table, 3);
    const HistoryIndex all = indexed(table);
    const LevelRun run(countsOf(all), ofCount(3));
    const HistoryIndex whole = shuffleTimes(frequent, 5);
    std::string expected;
    std::string shuffled;
    for (std::uint32_t begin = 0; begin < 4; begin += 2) {
        const HistoryIndex shard = all.slice(HistoryId{begin}, HistoryId{begin + 2});
        expected += historiesOf(whole.slice(HistoryId{begin}, HistoryId{begin + 2})) + '\n';
        shuffled += historiesOf(shuffleTimes(withoutRareItems(shard, run), 5, begin)) + '\n';
    }
    EXPECT_EQ(expected, shuffled);
}

}  // namespace
}  // namespace quarvis::mining
