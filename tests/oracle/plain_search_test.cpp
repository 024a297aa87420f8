#include "plain_search.hpp"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "table.hpp"

namespace quarvis::rule::plain {
namespace {

using mining_tests::historyOf;
using mining_tests::itemsOf;
using mining_tests::Table;
using mining_tests::tableOf;
using mining_tests::transactionsOf;
using testing::ElementsAre;
using testing::IsEmpty;

Configuration withMinCount(std::uint32_t minCount) {
    Configuration config;
    config.minCount = minCount;
    return config;
}

std::vector<std::string> listed(const ItemSetSupports& supports) {
    std::vector<std::string> entries;
    for (const auto& [items, count] : supports)
        entries.push_back(items.toString() + ' ' + std::to_string(count));
    return entries;
}

ItemSetSupports supportsOf(const std::vector<std::pair<std::string, std::size_t>>& entries) {
    ItemSetSupports supports;
    for (const auto& [items, count] : entries)
        supports.add(itemsOf(items), count);
    return supports;
}

ItemSetSupports oneSetsOf(const Table& table, std::uint32_t minCount) {
    return oneSets(withMinCount(minCount), transactionsOf(table));
}

/// The sets of size `n` joined from `src`, and what is in `all` then.
struct Joined {
    std::vector<std::string> found;
    std::vector<std::string> all;
};

Joined join(const ItemSetSupports& src, const Table& table, std::uint32_t minCount, std::size_t n,
            ItemSetSupports all = {}) {
    const ItemSetSupports found =
        aprioriMerge(withMinCount(minCount), src, all, transactionsOf(table), n);
    return {listed(found), listed(all)};
}

TEST(OneSetsOfAHistory, EveryItemCountsOnce) {
    ItemSetSupports counts;
    oneSets(Configuration(), historyOf(tableOf({"1:a,b 2:a 7:c,a"}).histories[0]), counts);
    EXPECT_THAT(listed(counts), ElementsAre("{a} 1", "{b} 1", "{c} 1"));
}

TEST(OneSetsOfAHistory, AddToWhatIsThere) {
    ItemSetSupports counts = supportsOf({{"b", 4}, {"x", 2}});
    oneSets(Configuration(), historyOf(tableOf({"1:a,b"}).histories[0]), counts);
    EXPECT_THAT(listed(counts), ElementsAre("{a} 1", "{b} 5", "{x} 2"));
}

TEST(OneSetsOfAHistory, WithoutTransactionsAddsNothing) {
    ItemSetSupports counts;
    oneSets(Configuration(), History(), counts);
    EXPECT_THAT(listed(counts), IsEmpty());
}

TEST(OneSetsOfAHistory, AreNotFilteredYet) {
    ItemSetSupports counts;
    oneSets(withMinCount(5), historyOf(tableOf({"1:a"}).histories[0]), counts);
    EXPECT_THAT(listed(counts), ElementsAre("{a} 1"));
}

TEST(OneSets, CountHistoriesNotTransactions) {
    EXPECT_THAT(listed(oneSetsOf(tableOf({"1:a 2:a 3:a 4:a 5:a"}), 1)), ElementsAre("{a} 1"));
    EXPECT_THAT(listed(oneSetsOf(tableOf({"1:a 2:a,b", "9:a"}), 1)), ElementsAre("{a} 2", "{b} 1"));
}

TEST(OneSets, AreThoseInEnoughHistories) {
    const Table table = tableOf({"1:a,b,c", "1:a,b", "1:a"});
    EXPECT_THAT(listed(oneSetsOf(table, 1)), ElementsAre("{a} 3", "{b} 2", "{c} 1"));
    EXPECT_THAT(listed(oneSetsOf(table, 2)), ElementsAre("{a} 3", "{b} 2"));
    EXPECT_THAT(listed(oneSetsOf(table, 3)), ElementsAre("{a} 3"));
    EXPECT_THAT(listed(oneSetsOf(table, 4)), IsEmpty());
}

TEST(OneSets, MinCountZeroKeepsEverySet) {
    EXPECT_THAT(listed(oneSetsOf(tableOf({"1:a", "1:b"}), 0)), ElementsAre("{a} 1", "{b} 1"));
}

TEST(OneSets, OfNoHistoriesAreNone) {
    EXPECT_THAT(listed(oneSetsOf(Table(), 0)), IsEmpty());
}

TEST(OneSets, OfTransactionsWithoutItemsAreNone) {
    EXPECT_THAT(listed(oneSetsOf(tableOf({"1: 2:"}), 0)), IsEmpty());
}

TEST(FilterCandidates, MinCountIsInclusive) {
    ItemSetSupports sets = supportsOf({{"a", 1}, {"a,b", 2}, {"b", 3}, {"c", 0}});
    filterCandidates(withMinCount(2), sets);
    EXPECT_THAT(listed(sets), ElementsAre("{a,b} 2", "{b} 3"));
}

TEST(FilterCandidates, MinCountZeroKeepsEverySet) {
    ItemSetSupports sets = supportsOf({{"a", 0}, {"b", 1}});
    filterCandidates(withMinCount(0), sets);
    EXPECT_THAT(listed(sets), ElementsAre("{a} 0", "{b} 1"));
}

TEST(FilterCandidates, NeighboursGoTogether) {
    ItemSetSupports sets = supportsOf({{"a", 1}, {"b", 1}, {"c", 9}, {"d", 1}, {"e", 1}});
    filterCandidates(withMinCount(2), sets);
    EXPECT_THAT(listed(sets), ElementsAre("{c} 9"));
}

TEST(FilterCandidates, CountsAreComparedWhole) {
    const std::size_t beyond32Bits = (std::size_t{1} << 32) + 1;
    ItemSetSupports sets = supportsOf({{"a", beyond32Bits}, {"b", 4294967294}, {"c", 4294967295}});
    filterCandidates(withMinCount(4294967295), sets);
    EXPECT_THAT(listed(sets), ElementsAre("{a} 4294967297", "{c} 4294967295"));
}

TEST(FilterCandidates, TheOtherThresholdsDoNotMatter) {
    Configuration config = withMinCount(1);
    config.minSupport = config.minConfidence = config.minLift = 1e9;
    config.maxConviction = -1e9;
    ItemSetSupports sets = supportsOf({{"a", 1}});
    filterCandidates(config, sets);
    EXPECT_THAT(listed(sets), ElementsAre("{a} 1"));
}

TEST(AprioriMerge, PairsAreCountedOverTheHistories) {
    const Joined joined = join(supportsOf({{"a", 3}, {"b", 2}, {"c", 2}}),
                               tableOf({"1:a 2:b", "1:a,b,c", "1:a 4:c"}), 1, 2);
    EXPECT_THAT(joined.found, ElementsAre("{a,b} 2", "{a,c} 2", "{b,c} 1"));
}

TEST(AprioriMerge, MinCountZeroKeepsSetsThatOccurNowhere) {
    const Joined joined = join(supportsOf({{"a", 1}, {"b", 1}}), tableOf({"1:a", "1:b"}), 0, 2);
    EXPECT_THAT(joined.found, ElementsAre("{a,b} 0"));
    EXPECT_THAT(joined.all, ElementsAre("{a,b} 0"));
}

TEST(AprioriMerge, UnionsOfAnotherSizeAreSkipped) {
    const Joined joined =
        join(supportsOf({{"a,b", 1}, {"c,d", 1}, {"d,e", 1}}), tableOf({"1:a,b,c,d,e"}), 1, 3);
    EXPECT_THAT(joined.found, ElementsAre("{c,d,e} 1"));
}

TEST(AprioriMerge, ASetOfSeveralPairsIsThereOnce) {
    const Joined joined = join(supportsOf({{"a,b", 2}, {"a,c", 2}, {"b,c", 2}}),
                               tableOf({"1:a,b,c", "1:a,b,c"}), 1, 3);
    EXPECT_THAT(joined.found, ElementsAre("{a,b,c} 2"));
}

TEST(AprioriMerge, OtherSubsetsNeedNotBeFrequent) {
    const Joined joined = join(supportsOf({{"a,b", 1}, {"b,c", 1}}), tableOf({"1:a,b,c"}), 1, 3);
    EXPECT_THAT(joined.found, ElementsAre("{a,b,c} 1"));
}

TEST(AprioriMerge, InfrequentSetsAreNeitherFoundNorRecorded) {
    const Joined joined = join(supportsOf({{"a", 2}, {"b", 2}, {"c", 2}}),
                               tableOf({"1:a,b", "1:a 2:b,c", "1:c"}), 2, 2);
    EXPECT_THAT(joined.found, ElementsAre("{a,b} 2"));
    EXPECT_THAT(joined.all, ElementsAre("{a,b} 2"));
}

TEST(AprioriMerge, RecordingReplacesACountAndKeepsTheRest) {
    const Joined joined = join(supportsOf({{"a", 1}, {"b", 1}}), tableOf({"1:a,b"}), 1, 2,
                               supportsOf({{"a,b", 7}, {"x", 3}}));
    EXPECT_THAT(joined.all, ElementsAre("{a,b} 1", "{x} 3"));
}

TEST(AprioriMerge, TheSourceMayBeWhereTheSetsAreRecorded) {
    ItemSetSupports all = supportsOf({{"a", 1}, {"b", 1}, {"c", 1}});
    const ItemSetSupports found =
        aprioriMerge(withMinCount(1), all, all, transactionsOf(tableOf({"1:a,b,c"})), 2);
    EXPECT_THAT(listed(found), ElementsAre("{a,b} 1", "{a,c} 1", "{b,c} 1"));
    EXPECT_THAT(listed(all),
                ElementsAre("{a,b} 1", "{a,c} 1", "{a} 1", "{b,c} 1", "{b} 1", "{c} 1"));
}

TEST(AprioriMerge, OneSetJoinsWithNothing) {
    EXPECT_THAT(join(supportsOf({{"a", 1}}), tableOf({"1:a"}), 0, 2).found, IsEmpty());
    EXPECT_THAT(join(ItemSetSupports(), tableOf({"1:a"}), 0, 2).found, IsEmpty());
}

TEST(ToIS, AreTheSetsInOrder) {
    std::vector<std::string> sets;
    for (const ItemSet& items : toIS(supportsOf({{"b", 1}, {"a", 2}, {"a,b", 0}})))
        sets.push_back(items.toString());
    EXPECT_THAT(sets, ElementsAre("{a,b}", "{a}", "{b}"));
}

TEST(ToIS, OfNothingIsEmpty) {
    EXPECT_THAT(toIS(ItemSetSupports()), IsEmpty());
}

}  // namespace
}  // namespace quarvis::rule::plain
