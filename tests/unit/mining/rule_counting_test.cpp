#include "rule_counting.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "oracle/table.hpp"
#include "plain_proposals.hpp"
#include "plain_rule_counting.hpp"
#include "plain_search.hpp"
#include "searched.hpp"
#include "support/conversion.hpp"

namespace quarvis::rule {
namespace {

using mining_tests::Searched;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

Configuration settings(std::uint32_t minCount, std::uint32_t window) {
    Configuration config;
    config.minCount = minCount;
    config.windowSize = window;
    return config;
}

/// Counts the rules of every level there is.
RuleHistogram countedIn(const Searched& all, std::uint32_t minCount, std::uint32_t window) {
    RuleHistogram counts;
    for (std::size_t size = 2; size <= all.sets.levels(); ++size)
        mineRules(settings(minCount, window), all.index, all.sets, size, counts);
    return counts;
}

/// The rules of a table, as "a => b,c 2".
std::vector<std::string> rulesOf(const Table& table, std::uint32_t minCount,
                                 std::uint32_t window = 0) {
    const Searched all(table, minCount);
    std::vector<std::string> texts;
    for (const CountedRule& rule : countedIn(all, minCount, window).rules)
        texts.push_back(all.textOf(rule));
    return texts;
}

TEST(ProposedRules, NumberOfRunsOtherThanTheWhole) {
    EXPECT_EQ(2U, proposeRules(1, 2));
    EXPECT_EQ(5U, proposeRules(1, 3));
    EXPECT_EQ(9U, proposeRules(1, 4));
    EXPECT_EQ(27U, proposeRules(3, 4));
    EXPECT_EQ(0U, proposeRules(0, 5));
    EXPECT_EQ(2484U, proposeRules(1, 70));
    EXPECT_EQ(2'000'000'000'000U, proposeRules(1'000'000'000'000, 2));
}

TEST(CountedRule, NamesItsSetAndTheRunOfItsAntecedent) {
    const Searched all(tableOf({"1:b 2:a,c,d"}), 1);
    const RuleHistogram counts = countedIn(all, 1, 0);
    ASSERT_FALSE(counts.rules.empty());
    // Of {a,b,c,d}, the only set of its size.
    const CountedRule& rule = counts.rules.back();
    EXPECT_EQ(0U, rule.set);
    EXPECT_EQ(4U, rule.size);
    EXPECT_EQ(1U, rule.first);
    EXPECT_EQ(1U, rule.last);
    EXPECT_EQ(1U, rule.count);
    EXPECT_EQ("b => a,c,d 1", all.textOf(rule));
}

TEST(RuleCounting, OfASetInEachDirection) {
    EXPECT_THAT(rulesOf(tableOf({"1:a 2:b", "1:b 2:a", "1:a 2:b"}), 1),
                ElementsAre("a => b 2", "b => a 1"));
}

TEST(RuleCounting, OnlyRunsOfNeighboursAreAntecedents) {
    // {a,c} => b is no rule.
    EXPECT_THAT(rulesOf(tableOf({"1:a,c 2:b"}), 1), ElementsAre("a => b 1", "c => b 1"));
    EXPECT_THAT(rulesOf(tableOf({"1:b 2:a,c"}), 1),
                UnorderedElementsAre("b => a 1", "b => c 1", "b => a,c 1"));
}

TEST(RuleCounting, OfSeveralLevels) {
    EXPECT_THAT(rulesOf(tableOf({"1:a 2:b 3:c"}), 1),
                UnorderedElementsAre("a => b 1", "a => c 1", "b => c 1", "a,b => c 1"));
    EXPECT_THAT(rulesOf(tableOf({"3:a 2:b 1:c"}), 1),
                UnorderedElementsAre("b => a 1", "c => a 1", "c => b 1", "b,c => a 1"));
}

/// Which rules of a and b hold in one history.
TEST(RuleCounting, WithinAWindow) {
    struct Row {
        const char* history;
        std::uint32_t window;
        std::vector<std::string> rules;
    };
    const std::string ab = "a => b 1";
    const std::string ba = "b => a 1";
    const Row rows[] = {
        {"1:a 2:b", 0, {ab}},
        {"1:a,b", 0, {}},
        {"1:a,b", 1, {}},
        // An age of the window is within it.
        {"1:a 5:b", 3, {}},
        {"1:a 5:b", 4, {ab}},
        {"1:a 5:b", 5, {ab}},
        // Once a history.
        {"1:a 2:b 3:b", 0, {ab}},
        {"1:a 2:b 10:a 11:b", 1, {ab}},
        // The subsequent must be new within the window.
        {"1:b 2:a 3:b", 0, {ba}},
        {"1:b 2:a 3:b", 1, {ab, ba}},
        {"1:b 2:a 3:b", 2, {ba}},
        {"1:b 3:a 5:b", 2, {ab, ba}},
        {"1:b 3:a 5:b", 3, {ab, ba}},
        {"1:b 3:a 5:b", 4, {ba}},
        // The antecedent must not be in the transaction as well, but may be later.
        {"1:a 2:a,b", 0, {}},
        {"1:a 2:a,b", 5, {}},
        {"1:a 2:a,b 8:b", 5, {}},
        {"1:a 2:a,b 8:b", 6, {}},
        {"1:a 2:a,b 7:a 8:b", 5, {ab}},
        {"1:a 2:a,b 7:a 8:b", 6, {}},
        // The last time counts, not the first.
        {"1:a 4:a 6:b", 2, {ab}},
        {"1:b 4:b 5:a 6:b", 2, {ba}},
        // The ends of time.
        {"0:a 4294967295:b", 0, {ab}},
        {"0:a 4294967295:b", 4294967294, {}},
        {"0:a 4294967295:b", 4294967295, {ab}},
        {"0:b 1:a 4294967295:b", 4294967295, {ba}},
        {"4294967294:a 4294967295:b", 1, {ab}},
        // Transactions without items.
        {"0: 1:a 2: 3:b 4:", 2, {ab}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.rules, rulesOf(tableOf({row.history}), 1, row.window))
            << row.history << ", window " << row.window;
}

TEST(RuleCounting, AnAntecedentThatIsPartlyInTheTransactionCounts) {
    EXPECT_THAT(rulesOf(tableOf({"1:a,b 2:b,c"}), 1),
                UnorderedElementsAre("a => c 1", "a,b => c 1"));
}

/// An antecedent of two items is wholly in one of the transactions with d, that of three in none.
TEST(RuleCounting, OfASetWhoseSmallerSetsHaveNone) {
    EXPECT_THAT(rulesOf(tableOf({"1:a,b,c 2:a,b,d", "1:a,b,c 2:b,c,d", "1:a,b,c 2:a,c,d"}), 3),
                ElementsAre("a,b,c => d 3"));
}

/// The prefix {a,b} of each has no rule at all.
TEST(RuleCounting, OfASetWhoseLastItemIsAloneOnOneSide) {
    EXPECT_THAT(rulesOf(tableOf({"1:a,b 2:c"}), 1),
                UnorderedElementsAre("a => c 1", "b => c 1", "a,b => c 1"));
    EXPECT_THAT(rulesOf(tableOf({"1:c 2:a,b"}), 1),
                UnorderedElementsAre("c => a 1", "c => b 1", "c => a,b 1"));
    EXPECT_THAT(rulesOf(tableOf({"1:a,b,c 2:d"}), 1),
                testing::IsSupersetOf({"a,b,c => d 1", "a,c => d 1"}));
    EXPECT_THAT(rulesOf(tableOf({"1:d 2:a,b,c"}), 1),
                testing::IsSupersetOf({"d => a,b,c 1", "d => a,c 1"}));
}

TEST(RuleCounting, KeepsThoseThatHoldInEnoughHistories) {
    const Table table = tableOf({"1:a 2:b", "1:a 2:b", "1:b 2:a", "1:a 2:b", "1:a,b"});
    EXPECT_THAT(rulesOf(table, 1), ElementsAre("a => b 3", "b => a 1"));
    EXPECT_THAT(rulesOf(table, 2), ElementsAre("a => b 3"));
    EXPECT_THAT(rulesOf(table, 3), ElementsAre("a => b 3"));
    EXPECT_THAT(rulesOf(table, 4), IsEmpty());
}

TEST(RuleCounting, KeepsNoneThatHoldsNowhereAtMinCount0) {
    EXPECT_THAT(rulesOf(tableOf({"1:a 2:b", "1:c"}), 0), ElementsAre("a => b 1"));
}

/// The visits to the histories of a set stop when its rules are out of reach, and not before.
TEST(RuleCounting, CountsARuleThatIsReachedInTheLastHistories) {
    EXPECT_THAT(rulesOf(tableOf({"1:a,b", "1:a,b", "1:a 2:b", "1:a 2:b"}), 2),
                ElementsAre("a => b 2"));
    EXPECT_THAT(rulesOf(tableOf({"1:a,b", "1:a,b", "1:a,b", "1:a 2:b"}), 2), IsEmpty());
    EXPECT_THAT(rulesOf(tableOf({"1:a,b", "1:a 2:b", "1:a,b", "1:b 2:a", "1:a 2:b"}), 2),
                ElementsAre("a => b 2"));
}

TEST(RuleCounting, CountsOnAfterTheLeastCountIsReached) {
    EXPECT_THAT(rulesOf(tableOf({"1:a 2:b", "1:a 2:b", "1:a,b", "1:b 2:a", "1:a 2:b"}), 2),
                ElementsAre("a => b 3"));
}

TEST(RuleCounting, AddToWhatIsCounted) {
    const Searched all(tableOf({"1:a 2:b"}), 1);
    RuleHistogram counts;
    counts.rules.push_back({7, 2, 0, 0, 5});
    mineRules(settings(1, 0), all.index, all.sets, 2, counts);
    EXPECT_THAT(counts.rules, testing::SizeIs(2));
    EXPECT_EQ(7U, counts.rules.front().set);
}

TEST(LiveSets, HaveARuleThatIsMetInEnoughHistories) {
    // {a,b}, {a,c}, {b,c}; {a,b,c}.
    const Searched all(tableOf({"1:a,b 2:c", "1:a,b 2:a,b,c", "1:a 2:b", "1:c"}), 2);
    RuleHistogram counts;
    mineRules(settings(2, 0), all.index, all.sets, 2, counts);
    EXPECT_THAT(counts.livePairs, ElementsAre(false, true, true));
    EXPECT_EQ(counts.livePairs, counts.liveSets);
    // All of them are met in two histories, and hold in one of these only.
    EXPECT_THAT(counts.rules, IsEmpty());
    mineRules(settings(2, 0), all.index, all.sets, 3, counts);
    EXPECT_THAT(counts.livePairs, ElementsAre(false, true, true));
    EXPECT_THAT(counts.liveSets, ElementsAre(true));
}

TEST(LiveSets, AreNoneOfALevelWithoutSets) {
    const Searched all(tableOf({"1:a 2:b"}), 1, 3);
    const RuleHistogram counts = countedIn(all, 1, 0);
    EXPECT_THAT(counts.livePairs, ElementsAre(true));
    EXPECT_THAT(counts.liveSets, IsEmpty());
}

/// The rules that the plain counting finds in `minCount` histories or more, and in one at least.
std::vector<std::string> plainRules(const TransactionSet& txns, std::uint32_t minCount,
                                    std::uint32_t window, std::size_t sizes) {
    const Configuration config = settings(minCount, window);
    plain::ItemSetSupports all;
    plain::ItemSetSupports level = plain::oneSets(config, txns);
    plain::RuleHistogram counts;
    for (std::size_t size = 2; size <= sizes; ++size) {
        level = plain::aprioriMerge(config, level, all, txns, size);
        plain::mineRules(config, txns, plain::proposeRules(level), counts);
    }
    const auto listed = [](const ItemSet& items) {
        std::string text;
        for (const Item& item : items)
            text += (text.empty() ? "" : ",") + item;
        return text;
    };
    std::vector<std::string> rules;
    for (const auto& [rule, count] : counts)
        if (count >= minCount)
            rules.push_back(listed(rule.antecedent()) + " => " + listed(rule.subsequent()) + ' ' +
                            std::to_string(count));
    return rules;
}

class CountedRules : public testing::TestWithParam<TableShape> {};

TEST_P(CountedRules, AreThoseOfThePlainCounting) {
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
        const auto anyCount = static_cast<std::uint32_t>(seed / 7 % 4);
        const std::uint32_t minCount = std::max(anyCount, GetParam().leastMinCount);
        const std::uint32_t window[] = {
            0, 1, 2, 3, 5, static_cast<std::uint32_t>(GetParam().lastTime / 2), 4294967295U};
        const Searched all(randomTable(GetParam(), seed), minCount, 6);
        std::vector<std::string> counted;
        for (const CountedRule& rule : countedIn(all, minCount, window[seed % 7]).rules)
            counted.push_back(all.textOf(rule));
        ASSERT_THAT(counted, testing::UnorderedElementsAreArray(
                                 plainRules(all.txns, minCount, window[seed % 7], 6)))
            << "seed " << seed;
    }
}

std::vector<TableShape> shapes() {
    // The plain search takes too long over fourteen items.
    std::vector<TableShape> all = oracle::tableShapes();
    std::erase_if(all, [](const TableShape& shape) { return shape.name == "Wide"; });
    return all;
}

INSTANTIATE_TEST_SUITE_P(Shapes, CountedRules, testing::ValuesIn(shapes()),
                         [](const auto& shape) { return shape.param.name; });

/// A set of 70 items, and those that its first items make: all that the counting asks for, while a
/// search would first find more sets than any memory holds.
class LargeSet : public testing::Test {
  protected:
    static constexpr Rank ITEMS = 70;

    static std::string nameOf(Rank item) { return std::to_string(100 + item); }

    /// Item `item` of each history occurs at the times in `times[item]`.
    using Times = std::vector<std::vector<std::uint32_t>>;

    static Table tableAt(const std::vector<Times>& histories) {
        Table table;
        for (const Times& times : histories) {
            table.histories.emplace_back();
            for (Rank item = 0; item < ITEMS; ++item)
                for (const std::uint32_t time : times[item])
                    table.histories.back()[time].insert(nameOf(item));
        }
        return table;
    }

    /// The rules of the set of all items, as the runs of their antecedents and their counts:
    /// "0-34 2".
    static std::vector<std::string> rulesOf(const std::vector<Times>& histories,
                                            std::uint32_t minCount, std::uint32_t window) {
        const TransactionSet txns = support::transactionsOf(tableAt(histories));
        const HistoryIndex index(txns, minCount);
        const auto count = static_cast<std::uint32_t>(histories.size());
        FrequentSets sets;
        Level items;
        for (Rank item = 0; item < ITEMS; ++item)
            items.add(0, item, count);
        sets.add(items, {});
        // The pairs of the first item, then one set a level.
        Level pairs;
        for (Rank item = 1; item < ITEMS; ++item)
            pairs.add(0, item, count);
        std::vector<std::uint32_t> extensions(ITEMS + 1, ITEMS - 1);
        extensions.front() = 0;
        sets.add(pairs, extensions);
        for (Rank item = 2; item < ITEMS; ++item) {
            Level level;
            level.add(0, item, count);
            extensions.assign(sets.level(item).size() + 1, 1);
            extensions.front() = 0;
            sets.add(level, extensions);
        }
        RuleHistogram counts;
        for (std::size_t size = 2; size <= ITEMS; ++size)
            mineRules(settings(minCount, window), index, sets, size, counts);
        std::vector<std::string> rules;
        for (const CountedRule& rule : counts.rules)
            if (rule.size == ITEMS)
                rules.push_back(std::to_string(rule.first) + '-' + std::to_string(rule.last) + ' ' +
                                std::to_string(rule.count));
        return rules;
    }

    /// Times of a history that has the items of the run at `time` and the others at `other`.
    static Times runAt(Rank first, Rank last, std::uint32_t time, std::uint32_t other) {
        Times times(ITEMS, {other});
        std::fill(times.begin() + first, times.begin() + last + 1,
                  std::vector<std::uint32_t>{time});
        return times;
    }
};

TEST_F(LargeSet, HasARuleOfEveryRun) {
    for (const auto& [first, last] : std::vector<std::pair<Rank, Rank>>{{0, 0},
                                                                        {0, 34},
                                                                        {0, 63},
                                                                        {0, 64},
                                                                        {0, 68},
                                                                        {1, 69},
                                                                        {5, 66},
                                                                        {31, 33},
                                                                        {63, 63},
                                                                        {63, 64},
                                                                        {64, 69},
                                                                        {69, 69}}) {
        const std::string run = std::to_string(first) + '-' + std::to_string(last) + ' ';
        EXPECT_THAT(rulesOf({runAt(first, last, 1, 2)}, 1, 0), ElementsAre(run + '1'));
        EXPECT_THAT(rulesOf({runAt(first, last, 1, 2), runAt(first, last, 3, 9)}, 2, 6),
                    ElementsAre(run + '2'));
        EXPECT_THAT(rulesOf({runAt(first, last, 1, 2), runAt(first, last, 3, 9)}, 2, 5), IsEmpty());
    }
}

TEST_F(LargeSet, HasNoRuleOfWhatIsNoRun) {
    Times times = runAt(10, 69, 1, 2);
    times[66] = {2};
    EXPECT_THAT(rulesOf({times}, 1, 0), IsEmpty());
    times = runAt(10, 68, 1, 2);
    times[3] = {1};
    EXPECT_THAT(rulesOf({times}, 1, 0), IsEmpty());
}

TEST_F(LargeSet, HasSeveralRulesInSeveralHistories) {
    const Times low = runAt(0, 40, 1, 2);
    const Times high = runAt(0, 40, 2, 1);
    const Times one = runAt(69, 69, 1, 2);
    EXPECT_THAT(rulesOf({low, high, one, low}, 1, 0),
                UnorderedElementsAre("0-40 2", "41-69 1", "69-69 1"));
    EXPECT_THAT(rulesOf({low, high, one, low}, 2, 0), ElementsAre("0-40 2"));
}

TEST_F(LargeSet, HasNoRuleWhoseAntecedentIsInTheTransactionToo) {
    Times times = runAt(2, 69, 1, 2);
    for (Rank item = 2; item < ITEMS; ++item)
        times[item].push_back(2);
    EXPECT_THAT(rulesOf({times}, 1, 0), IsEmpty());
    times[67].pop_back();
    EXPECT_THAT(rulesOf({times}, 1, 0), ElementsAre("2-69 1"));
}

}  // namespace
}  // namespace quarvis::rule
