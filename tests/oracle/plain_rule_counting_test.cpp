#include "plain_rule_counting.hpp"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "table.hpp"

namespace quarvis::rule::plain {
namespace {

using mining_tests::historyOf;
using mining_tests::itemsOf;
using mining_tests::tableOf;
using mining_tests::transactionsOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

Configuration withWindow(std::uint32_t windowSize) {
    Configuration config;
    config.windowSize = windowSize;
    return config;
}

/// Proposals of a => b each, the sides as in `itemsOf`.
RuleProposals proposalsOf(std::initializer_list<std::pair<const char*, const char*>> rules) {
    RuleProposals proposals;
    for (const auto& [antecedent, subsequent] : rules)
        proposals[itemsOf(antecedent)].insert(itemsOf(subsequent));
    return proposals;
}

std::vector<std::string> listed(const RuleHistogram& counts) {
    std::vector<std::string> entries;
    for (const auto& [rule, count] : counts)
        entries.push_back(rule.toString() + ' ' + std::to_string(count));
    return entries;
}

std::vector<std::string> counted(std::initializer_list<const char*> histories,
                                 std::initializer_list<std::pair<const char*, const char*>> rules,
                                 std::uint32_t window = 0) {
    RuleHistogram counts;
    mineRules(withWindow(window), transactionsOf(tableOf(histories)), proposalsOf(rules), counts);
    return listed(counts);
}

/// How often a => b fires in one history.
std::size_t firings(const char* history, const char* antecedent, const char* subsequent,
                    std::uint32_t window = 0) {
    RuleHistogram counts;
    mineRules(withWindow(window), historyOf(tableOf({history}).histories[0]),
              proposalsOf({{antecedent, subsequent}}), counts);
    return counts.empty() ? 0 : counts.begin()->second;
}

TEST(MineRules, FiresWhenTheSubsequentFollowsTheAntecedent) {
    EXPECT_EQ(1U, firings("1:a 2:b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a 2:b", "b", "a"));
}

TEST(MineRules, AnAgeBeyondTheWindowIsTooOld) {
    EXPECT_EQ(0U, firings("1:a 5:b", "a", "b", 3));
}

TEST(MineRules, AnAgeOfExactlyTheWindowIsWithinIt) {
    EXPECT_EQ(1U, firings("1:a 5:b", "a", "b", 4));
}

TEST(MineRules, ItemsOfOneTransactionDoNotImplyEachOther) {
    EXPECT_EQ(0U, firings("1:a,b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a,b", "b", "a"));
}

TEST(MineRules, FiresOnceThoughTheSubsequentRecurs) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:b", "a", "b"));
}

TEST(MineRules, FiresOnceThoughTheWindowForgetsTheFirstTime) {
    EXPECT_EQ(1U, firings("1:a 2:b 11:a 12:b", "a", "b", 5));
}

TEST(MineRules, ASubsequentSeenBeforeTheAntecedentIsNotNew) {
    EXPECT_EQ(0U, firings("1:b 2:a 3:b", "a", "b"));
}

TEST(MineRules, ASubsequentSeenLongBeforeIsNewWithAWindow) {
    EXPECT_EQ(1U, firings("1:b 12:a 13:b", "a", "b", 5));
}

TEST(MineRules, AnAntecedentThatIsCompleteInTheTransactionDoesNotFireThere) {
    EXPECT_EQ(0U, firings("1:a 2:a,b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a,b 2:a,b,c", "a,b", "c"));
}

TEST(MineRules, AnAntecedentThatIsPartlyInTheTransactionFires) {
    EXPECT_EQ(1U, firings("1:a,b 2:b,c", "a,b", "c"));
}

TEST(MineRules, FiresLaterThanAnAttemptThatFailed) {
    EXPECT_EQ(1U, firings("1:a 2:c 3:a,b 14:a 15:b", "a", "b", 5));
}

TEST(MineRules, AntecedentItemsMayComeAtDifferentTimes) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:c", "a,b", "c"));
    EXPECT_EQ(1U, firings("1:b 2:a 3:c", "a,b", "c"));
}

TEST(MineRules, EveryAntecedentItemMustBeWithinTheWindow) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:c", "a,b", "c", 2));
    EXPECT_EQ(0U, firings("1:a 2:b 3:c", "a,b", "c", 1));
    EXPECT_EQ(0U, firings("1:a 3:c", "a,b", "c"));
}

TEST(MineRules, SubsequentItemsMustComeTogether) {
    EXPECT_EQ(1U, firings("1:a 2:b,c", "a", "b,c"));
    EXPECT_EQ(0U, firings("1:a 2:b 3:c", "a", "b,c"));
}

TEST(MineRules, EverySubsequentItemMustBeNew) {
    EXPECT_EQ(0U, firings("1:a,b 2:b,c", "a", "b,c"));
    EXPECT_EQ(0U, firings("1:a,b 3:b,c", "a", "b,c", 2));
    EXPECT_EQ(1U, firings("1:a,b 3:a 5:b,c", "a", "b,c", 2));
}

TEST(MineRules, AnItemIsAsOldAsWhenItWasLastSeen) {
    EXPECT_EQ(1U, firings("1:a 4:a 6:b", "a", "b", 2));
}

TEST(MineRules, ATransactionWithoutItemsChangesNothing) {
    EXPECT_EQ(1U, firings("1:a 2: 3:b", "a", "b"));
    EXPECT_EQ(0U, firings("1:", "a", "b"));
}

TEST(MineRules, TimesAndWindowsTakeTheWholeRange) {
    EXPECT_EQ(1U, firings("0:a 4294967295:b", "a", "b", 4294967295));
    EXPECT_EQ(0U, firings("0:a 4294967295:b", "a", "b", 4294967294));
    EXPECT_EQ(1U, firings("0:a 4294967295:b", "a", "b", 0));
}

TEST(MineRules, CountsHistories) {
    EXPECT_THAT(counted({"1:a 2:b", "7:a 9:b"}, {{"a", "b"}}), ElementsAre("a => b 2"));
    EXPECT_THAT(counted({"1:a 2:b", "7:a", "9:b"}, {{"a", "b"}}), ElementsAre("a => b 1"));
}

TEST(MineRules, WhatOneHistorySawIsUnknownToTheNext) {
    EXPECT_THAT(counted({"1:a", "2:b"}, {{"a", "b"}}), IsEmpty());
    EXPECT_THAT(counted({"1:b", "2:a 3:b"}, {{"a", "b"}}), ElementsAre("a => b 1"));
}

TEST(MineRules, RulesThatFireNowhereHaveNoEntry) {
    EXPECT_THAT(counted({"1:a 2:b"}, {{"a", "b"}, {"b", "a"}, {"a", "c"}}),
                ElementsAre("a => b 1"));
}

TEST(MineRules, RulesThatExtendEachOthersAntecedentAreToldApart) {
    EXPECT_THAT(counted({"1:a,b 2:c,d"}, {{"a,b", "c"}, {"a", "c"}, {"a", "c,d"}, {"a,b", "d"}}),
                ElementsAre("{a,b} => c 1", "{a,b} => d 1", "a => {c,d} 1", "a => c 1"));
}

TEST(MineRules, CountsAddUpOverCalls) {
    RuleHistogram counts;
    const TransactionSet txns = transactionsOf(tableOf({"1:a 2:b", "1:a 2:b,c"}));
    mineRules(Configuration(), txns, proposalsOf({{"a", "b"}}), counts);
    mineRules(Configuration(), txns, proposalsOf({{"a", "b"}, {"a", "c"}}), counts);
    EXPECT_THAT(listed(counts), ElementsAre("a => b 4", "a => c 1"));
}

TEST(MineRules, WithoutProposalsOrHistoriesCountsNothing) {
    EXPECT_THAT(counted({"1:a 2:b"}, {}), IsEmpty());
    EXPECT_THAT(counted({}, {{"a", "b"}}), IsEmpty());
}

class SingleRuleTest : public testing::Test {
  protected:
    void testRule(const char* txn, const char* antecedent, const char* subsequent) {
        mineRules(Configuration(), m_seen, itemsOf(txn), itemsOf(antecedent), itemsOf(subsequent),
                  m_counts, m_mapped);
    }

    LastTime m_seen = {{"a", 1}};
    RuleHistogram m_counts;
    RuleMapped m_mapped;
};

TEST_F(SingleRuleTest, ARuleThatFiresIsCountedAndMapped) {
    testRule("b", "a", "b");
    EXPECT_THAT(listed(m_counts), ElementsAre("a => b 1"));
    ASSERT_THAT(m_mapped, testing::SizeIs(1));
    EXPECT_EQ("a => b", m_mapped.begin()->toString());
}

TEST_F(SingleRuleTest, AMappedRuleIsNotCountedAgain) {
    testRule("b", "a", "b");
    testRule("b", "a", "b");
    EXPECT_THAT(listed(m_counts), ElementsAre("a => b 1"));
}

TEST_F(SingleRuleTest, ARuleThatDoesNotFireLeavesNoTrace) {
    testRule("c", "a", "b");
    testRule("a,b", "a", "b");
    testRule("b", "x", "b");
    m_seen["b"] = 1;
    testRule("b", "a", "b");
    EXPECT_THAT(m_counts, IsEmpty());
    EXPECT_THAT(m_mapped, IsEmpty());
}

TEST_F(SingleRuleTest, TheTransactionIsNotRecorded) {
    testRule("b", "a", "b");
    EXPECT_THAT(m_seen, ElementsAre(Pair("a", 1)));
}

TEST_F(SingleRuleTest, EveryProposalIsTestedAtATransaction) {
    mineRules(Configuration(), m_seen, itemsOf("b,c"),
              proposalsOf({{"a", "b"}, {"a", "c"}, {"a", "b,c"}, {"b", "c"}}), m_counts, m_mapped);
    EXPECT_THAT(listed(m_counts), ElementsAre("a => {b,c} 1", "a => b 1", "a => c 1"));
    EXPECT_THAT(m_mapped, testing::SizeIs(3));
}

LastTime cleared(LastTime seen, std::uint32_t window, History::Time time) {
    clearLastTimes(withWindow(window), seen, ItemSet(), time);
    return seen;
}

TEST(ClearLastTimes, WithoutAWindowNothingIsForgotten) {
    EXPECT_THAT(cleared({{"a", 0}, {"b", 9}}, 0, 4294967295),
                ElementsAre(Pair("a", 0), Pair("b", 9)));
}

TEST(ClearLastTimes, OnlyAgesBeyondTheWindowAreForgotten) {
    EXPECT_THAT(cleared({{"a", 5}, {"b", 6}, {"c", 7}}, 4, 10),
                ElementsAre(Pair("b", 6), Pair("c", 7)));
}

TEST(ClearLastTimes, NeighboursAreForgottenTogether) {
    EXPECT_THAT(cleared({{"a", 1}, {"b", 1}, {"c", 9}, {"d", 1}, {"e", 1}}, 3, 10),
                ElementsAre(Pair("c", 9)));
    EXPECT_THAT(cleared({{"a", 1}, {"b", 2}}, 3, 10), IsEmpty());
}

TEST(ClearLastTimes, TheItemsOfTheTransactionDoNotMatter) {
    LastTime seen = {{"a", 1}, {"b", 9}};
    clearLastTimes(withWindow(3), seen, itemsOf("a"), 10);
    EXPECT_THAT(seen, ElementsAre(Pair("b", 9)));
}

TEST(ClearLastTimes, AgesAreUnsigned) {
    EXPECT_THAT(cleared({{"a", 0}}, 4294967294, 4294967295), IsEmpty());
    EXPECT_THAT(cleared({{"a", 0}}, 4294967295, 4294967295), ElementsAre(Pair("a", 0)));
    EXPECT_THAT(cleared({{"later", 2}}, 4294967294, 1), IsEmpty());
}

TEST(UpdateLastTimes, EveryItemIsSeenNow) {
    LastTime seen = {{"a", 1}, {"b", 2}};
    updateLastTimes(withWindow(1), seen, itemsOf("b,c"), 9);
    EXPECT_THAT(seen, ElementsAre(Pair("a", 1), Pair("b", 9), Pair("c", 9)));
}

TEST(UpdateLastTimes, ATransactionWithoutItemsIsNotSeen) {
    LastTime seen = {{"a", 1}};
    updateLastTimes(withWindow(1), seen, ItemSet(), 9);
    EXPECT_THAT(seen, ElementsAre(Pair("a", 1)));
}

}  // namespace
}  // namespace quarvis::rule::plain
