#include "mine.hpp"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/mine.hpp"
#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"
#include "support/conversion.hpp"
#include "support/engine.hpp"
#include "support/error_output.hpp"

namespace {

using oracle::Outcome;
using oracle::Settings;
using oracle::Table;
using oracle::tableOf;
using support::mined;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr double INF = std::numeric_limits<double>::infinity();

Settings settingsOf(std::uint32_t minCount, std::uint32_t maxOrder = 0,
                    std::uint32_t windowSize = 0) {
    Settings settings;
    settings.minCount = minCount;
    settings.maxOrder = maxOrder;
    settings.windowSize = windowSize;
    return settings;
}

/// The messages in the format that the mining prints.
std::string messagesOf(std::initializer_list<const char*> lines) {
    std::string messages;
    for (const char* line : lines)
        messages += std::string("\t ... ") + line + '\n';
    return messages;
}

std::string messages(const Settings& settings, std::initializer_list<const char*> histories) {
    return mined(settings, tableOf(histories)).messages;
}

std::vector<std::string> rules(const Settings& settings,
                               std::initializer_list<const char*> histories) {
    return mined(settings, tableOf(histories)).ruleTexts();
}

/// The item sets of the histories, with their counts, as texts.
std::vector<std::string> itemSets(const Settings& settings,
                                  std::initializer_list<const char*> histories) {
    std::vector<std::string> sets;
    for (const Outcome::ItemSet& items : mined(settings, tableOf(histories)).itemSets)
        sets.push_back(items.text + ' ' + std::to_string(items.count));
    return sets;
}

TEST(MineLevels, AnEmptyTransactionSetHasNoRulesOfOrderOne) {
    const Outcome outcome = mined(settingsOf(1), Table());
    EXPECT_EQ(messagesOf({"calculated 0 frequent item sets of size 1. ",
                          "calculated 0 frequent item sets of size 2 with 0 proposed rules.",
                          "no rules of order 1 found.", "preparing rules for reporting.",
                          "have 0 rules."}),
              outcome.messages);
    EXPECT_THAT(outcome.rules, IsEmpty());
    EXPECT_THAT(outcome.itemSets, IsEmpty());
}

TEST(MineLevels, MinCountZeroKeepsEverySet) {
    EXPECT_THAT(
        itemSets(settingsOf(0), {"1:a", "1:b 2:c"}),
        ElementsAre("{a,b,c} 0", "{a,b} 0", "{a,c} 0", "{a} 1", "{b,c} 1", "{b} 1", "{c} 1"));
}

TEST(MineLevels, MinCountZeroKeepsNoRuleThatFiresNowhere) {
    EXPECT_THAT(rules(settingsOf(0), {"1:a", "1:b 2:c"}), ElementsAre("b => c"));
}

TEST(MineLevels, MinCountBeyondTheHistoriesEmptiesTheFirstLevel) {
    EXPECT_EQ(messagesOf({"calculated 0 frequent item sets of size 1. ",
                          "calculated 0 frequent item sets of size 2 with 0 proposed rules.",
                          "no rules of order 1 found.", "preparing rules for reporting.",
                          "have 0 rules."}),
              messages(settingsOf(3), {"1:a 2:b", "1:a 2:b"}));
    EXPECT_THAT(itemSets(settingsOf(3), {"1:a 2:b", "1:a 2:b"}), IsEmpty());
}

TEST(MineLevels, AnItemCountsHistoriesNotTransactions) {
    EXPECT_THAT(itemSets(settingsOf(1), {"1:a 2:a 3:a 4:a 5:a"}), ElementsAre("{a} 1"));
}

TEST(MineLevels, NoProposalsAtSizeTwoEndTheSearch) {
    const std::initializer_list<const char*> histories = {"1:a", "1:b"};
    EXPECT_EQ(messagesOf({"calculated 2 frequent item sets of size 1. ",
                          "calculated 0 frequent item sets of size 2 with 0 proposed rules.",
                          "no rules of order 1 found.", "preparing rules for reporting.",
                          "have 0 rules."}),
              messages(settingsOf(1, 5), histories));
    EXPECT_THAT(itemSets(settingsOf(1, 5), histories), ElementsAre("{a} 1", "{b} 1"));
}

TEST(MineLevels, MaxOrderOneMinesPairsOnly) {
    const std::initializer_list<const char*> histories = {"1:a 2:b 3:c"};
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.", "preparing rules for reporting.",
                          "have 3 rules."}),
              messages(settingsOf(1, 1), histories));
    EXPECT_THAT(rules(settingsOf(1, 1), histories), ElementsAre("a => b", "a => c", "b => c"));
    EXPECT_THAT(itemSets(settingsOf(1, 1), histories),
                ElementsAre("{a,b} 1", "{a,c} 1", "{a} 1", "{b,c} 1", "{b} 1", "{c} 1"));
}

TEST(MineLevels, ThreeSetsOfSizeTwoLeadToSizeThree) {
    const std::initializer_list<const char*> histories = {"1:a 2:b 3:c"};
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.",
                          "mining rules until there are no more frequent item sets.",
                          "calculated 1 frequent item sets of size 3 with 5 proposed rules.",
                          "deducing rules of order 2.", "preparing rules for reporting.",
                          "have 4 rules."}),
              messages(settingsOf(1), histories));
    EXPECT_THAT(rules(settingsOf(1), histories),
                ElementsAre("{a,b} => c", "a => b", "a => c", "b => c"));
}

TEST(MineLevels, TwoSetsOfSizeTwoEndTheSearch) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 2 frequent item sets of size 2 with 4 proposed rules.",
                          "deducing rules of order 1.",
                          "mining rules until there are no more frequent item sets.",
                          "preparing rules for reporting.", "have 2 rules."}),
              messages(settingsOf(1), {"1:a 2:b", "1:b 2:c"}));
}

TEST(MineLevels, TwoSetsAreJoinedWhenAnOrderIsAskedFor) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 2 frequent item sets of size 2 with 4 proposed rules.",
                          "deducing rules of order 1.", "rules up to order 2 will be mined.",
                          "calculated 0 frequent item sets of size 3 with 0 proposed rules.",
                          "deducing rules of order 2.", "preparing rules for reporting.",
                          "have 2 rules."}),
              messages(settingsOf(1, 2), {"1:a 2:b", "1:b 2:c"}));
}

TEST(MineLevels, EveryOrderAskedForIsTriedThoughTheSetsRunOut) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.", "rules up to order 5 will be mined.",
                          "calculated 1 frequent item sets of size 3 with 5 proposed rules.",
                          "deducing rules of order 2.",
                          "calculated 0 frequent item sets of size 4 with 0 proposed rules.",
                          "deducing rules of order 3.",
                          "calculated 0 frequent item sets of size 5 with 0 proposed rules.",
                          "deducing rules of order 4.",
                          "calculated 0 frequent item sets of size 6 with 0 proposed rules.",
                          "deducing rules of order 5.", "preparing rules for reporting.",
                          "have 4 rules."}),
              messages(settingsOf(1, 5), {"1:a 2:b 3:c"}));
}

TEST(MineLevels, TheOrderAskedForIsTheLast) {
    EXPECT_THAT(
        itemSets(settingsOf(1, 2), {"1:a,b,c,d"}),
        ElementsAre("{a,b,c} 1", "{a,b,d} 1", "{a,b} 1", "{a,c,d} 1", "{a,c} 1", "{a,d} 1", "{a} 1",
                    "{b,c,d} 1", "{b,c} 1", "{b,d} 1", "{b} 1", "{c,d} 1", "{c} 1", "{d} 1"));
}

TEST(MineLevels, MinSupportDoesNotPruneItemSets) {
    Settings settings = settingsOf(1);
    settings.minSupport = 2;
    EXPECT_THAT(itemSets(settings, {"1:a 2:b"}), ElementsAre("{a,b} 1", "{a} 1", "{b} 1"));
    EXPECT_THAT(rules(settings, {"1:a 2:b"}), IsEmpty());
}

TEST(MineLevels, VerboseChangesNothing) {
    const quarvis::rule::TransactionSet txns = support::transactionsOf(tableOf({"1:a 2:b"}));
    Configuration config;
    config.minCount = 1;
    const Outcome quiet = mined(config, txns);
    config.verbose = true;
    EXPECT_EQ(quiet, mined(config, txns));
}

struct WindowRow {
    const char* history;
    std::uint32_t window;
    std::vector<std::string> rules;
};

/// In two histories a, b and c occur at once. So of the rules of {a,b,c,d} only {a,b,c} => d counts
/// there.
TEST(MineWindows, ARuleCountsWhereNoneOfItsAntecedentAloneDoes) {
    const Outcome outcome =
        mined(settingsOf(1, 3, 10), tableOf({"1:a,b,c 2:d", "1:a,b,c 2:d", "1:a 2:b 3:c 4:d"}));
    EXPECT_THAT(outcome.rules, testing::Contains(testing::AllOf(
                                   testing::Field(&Outcome::Rule::text, "{a,b,c} => d"),
                                   testing::Field(&Outcome::Rule::count, 3U))));
}

TEST(MineWindows, Table) {
    const WindowRow rows[] = {
        {"1:a 2:b", 0, {"a => b"}},
        {"1:a 5:b", 3, {}},
        {"1:a 5:b", 4, {"a => b"}},
        {"1:a,b", 0, {}},
        {"1:a 2:b 3:b", 0, {"a => b"}},
        {"1:b 2:a 3:b", 0, {"b => a"}},
        {"1:b 2:a 3:b", 1, {"a => b", "b => a"}},
        {"1:b 2:a 3:b", 2, {"b => a"}},
        {"1:a 2:a,b", 0, {}},
        {"0:a 4294967295:b", 4294967294, {}},
        {"0:a 4294967295:b", 4294967295, {"a => b"}},
    };
    for (const WindowRow& row : rows)
        EXPECT_EQ(row.rules, rules(settingsOf(1, 0, row.window), {row.history}))
            << row.history << " with window " << row.window;
}

TEST(MineWindows, ARuleThatFiresInTwoHistoriesCountsTwo) {
    const Outcome outcome = mined(settingsOf(1), tableOf({"1:a 2:b", "1:a 2:b 3:a 4:b"}));
    ASSERT_THAT(outcome.ruleTexts(), ElementsAre("a => b"));
    EXPECT_EQ(2U, outcome.rules[0].count);
}

TEST(MineWindows, ItemSetsAreCountedWithoutTheWindow) {
    EXPECT_THAT(itemSets(settingsOf(1, 0, 1), {"1:a 100:b"}),
                ElementsAre("{a,b} 1", "{a} 1", "{b} 1"));
}

TEST(MineRuleOrder, RulesOfTwoTransactions) {
    EXPECT_THAT(rules(settingsOf(1), {"2:c,d 3:a,b"}),
                ElementsAre("{c,d} => {a,b}", "{c,d} => a", "{c,d} => b", "c => {a,b}", "c => a",
                            "c => b", "d => {a,b}", "d => a", "d => b"));
}

TEST(MineMeasures, OfFourHistories) {
    const Outcome outcome = mined(settingsOf(1), tableOf({"1:a 2:s", "1:a,s", "1:s", "1:s"}));
    ASSERT_THAT(outcome.rules, testing::SizeIs(1));
    EXPECT_EQ((Outcome::Rule{.text = "a => s",
                             .count = 1,
                             .icount = 2,
                             .support = 0.25,
                             .confidence = 1.0,
                             .lift = 1.0,
                             .conviction = INF,
                             .probability = 0.5,
                             .certainty = 1.0}),
              outcome.rules[0]);
}

/// n(a) = 4, n(s) = 5, and 3 of 8 histories have both: confidence 3/4, lift 8 * 3 / (4 * 5),
/// conviction (1 - 5/8) / (1 - 3/4), probability 3/5, certainty 3 / (5 - 3).
TEST(MineMeasures, OfSidesThatAreNotEquallyFrequent) {
    const Outcome outcome = mined(
        settingsOf(1), tableOf({"1:a 2:s", "1:a 2:s", "1:a,s", "1:a", "1:s", "1:s", "1:x", "1:x"}));
    ASSERT_THAT(outcome.rules, testing::SizeIs(1));
    EXPECT_EQ((Outcome::Rule{.text = "a => s",
                             .count = 2,
                             .icount = 3,
                             .support = 0.25,
                             .confidence = 0.75,
                             .lift = 1.2,
                             .conviction = 1.5,
                             .probability = 0.6,
                             .certainty = 1.5}),
              outcome.rules[0]);
}

/// a => s counts in 2 of 8 histories: support 0.25, confidence 0.75, lift 1.5, conviction 2.
Table thresholdTable() {
    return tableOf({"1:a 2:s", "1:a 2:s", "1:a,s", "1:a", "1:s", "1:x", "1:x", "1:x"});
}

TEST(MineThresholds, AreInclusive) {
    struct Row {
        const char* threshold;
        void (*set)(Settings& settings, double value);
        double inclusive;
        double exclusive;
    };
    const Row rows[] = {
        {"minCount", [](Settings& c, double v) { c.minCount = static_cast<std::uint32_t>(v); }, 2,
         3},
        {"minSupport", [](Settings& c, double v) { c.minSupport = v; }, 0.25, 0.250001},
        {"minConfidence", [](Settings& c, double v) { c.minConfidence = v; }, 0.75, 0.750001},
        {"minLift", [](Settings& c, double v) { c.minLift = v; }, 1.5, 1.500001},
        {"maxConviction", [](Settings& c, double v) { c.maxConviction = v; }, 2, 1.999999},
    };
    for (const Row& row : rows) {
        Settings settings = settingsOf(1);
        row.set(settings, row.inclusive);
        EXPECT_THAT(mined(settings, thresholdTable()).ruleTexts(), ElementsAre("a => s"))
            << row.threshold;
        row.set(settings, row.exclusive);
        EXPECT_THAT(mined(settings, thresholdTable()).ruleTexts(), IsEmpty()) << row.threshold;
    }
}

TEST(MineThresholds, NoRulePassesOneThatIsNoNumber) {
    const Table table = tableOf({"1:a 2:b", "1:a 2:b", "1:a 2:c"});
    ASSERT_THAT(mined(settingsOf(1), table).ruleTexts(), Not(IsEmpty()));
    for (double Settings::*const threshold : {&Settings::minSupport, &Settings::minConfidence,
                                              &Settings::minLift, &Settings::maxConviction}) {
        Settings settings = settingsOf(1);
        settings.*threshold = std::numeric_limits<double>::quiet_NaN();
        EXPECT_THAT(mined(settings, table).ruleTexts(), IsEmpty());
    }
}

TEST(MineThresholds, ARuleBelowMinCountIsDroppedThoughItsItemsAreFrequent) {
    const Outcome outcome = mined(settingsOf(2), tableOf({"1:a 2:b", "1:a,b"}));
    EXPECT_THAT(outcome.ruleTexts(), IsEmpty());
    EXPECT_THAT(outcome.itemSets, testing::SizeIs(3));
    EXPECT_THAT(outcome.messages, HasSubstr("\t ... have 0 rules.\n"));
}

TEST(MineThresholds, OnlyTheRulesThatPassAreCountedInTheMessage) {
    Settings settings = settingsOf(1);
    settings.minSupport = 0.6;
    const Outcome outcome = mined(settings, tableOf({"1:a 2:b", "1:a 2:b", "1:a,b 2:c"}));
    EXPECT_THAT(outcome.ruleTexts(), ElementsAre("a => b"));
    EXPECT_THAT(outcome.messages, HasSubstr("\t ... have 1 rules.\n"));
}

/// With more than a thousand items, the number by which rules are sorted first has room for ten
/// ranks. Some rules of the last thirteen items differ only after these.
TEST(MineRuleOrder, HoldsForRulesThatAgreeInManyItems) {
    const char* const thirteen = "1:z01,z02,z03,z04,z05,z06,z07,z08,z09,z10 2:z11 3:z12 4:z13";
    Table table = tableOf({thirteen, thirteen});
    for (int item = 0; item < 1100; ++item)
        for (int history = 0; history < 2; ++history)
            table.histories.push_back({{1, {"i" + std::to_string(item)}}});
    const Settings settings = settingsOf(2, 12);
    const std::vector<std::string> expected = oracle::mine(settings, table).ruleTexts();
    EXPECT_EQ(expected, mined(settings, table).ruleTexts());
    // The rule model sorts the rules itself. The tool's files are in the order of the engine.
    const quarvis::mining::HistoryIndex index = support::indexOf(table, settings.minCount);
    quarvis::mining::Observer observer;
    const quarvis::mining::Result result = mine(index, support::optionsOf(settings), observer);
    EXPECT_EQ(expected, support::outcomeOf(index, result).ruleTexts());
}

/// The first item's histories have 39 moments each; another item occurs in few of them. So the
/// moments of the other item are stored as a list of its nonzero words, not as all words.
TEST(MineWindows, ItemsInFewOfManyLongHistoriesAreCountedAsByThePlainMiner) {
    Table table;
    for (std::size_t history = 0; history < 60; ++history) {
        oracle::History& transactions = table.histories.emplace_back();
        for (std::size_t round = 0; round < 40; ++round) {
            transactions[10 * round] = {"a", "b"};
            transactions[10 * round + 1] = {"c"};
        }
        const std::string number = std::to_string(100 + history / 3);
        transactions[10 * (history % 40) + 2] = {"p" + number};
        transactions[10 * (history % 40) + 3] = {"q" + number};
        transactions[10 * (history * 7 % 40) + 4] = {"r" + number, "a"};
    }
    for (const std::uint32_t window : {2U, 3U, 12U}) {
        const Settings settings = settingsOf(3, 3, window);
        EXPECT_EQ(oracle::mine(settings, table), mined(settings, table)) << window;
    }
}

TEST(MiningResult, IsEmptyBeforeMining) {
    const quarvis::rule::MiningResult result;
    EXPECT_EQ(0U, result.rules().size());
    EXPECT_EQ(0U, result.itemSets().size());
}

TEST(MiningResult, HandsOutACopyOfTheItemSets) {
    const support::ErrorOutput ignored;
    const quarvis::rule::MiningResult result = quarvis::rule::MiningResult::mine(
        support::configurationOf(settingsOf(1)), support::transactionsOf(tableOf({"1:a 2:b"})));
    quarvis::rule::ItemSetHistogram copy = result.itemSets();
    copy.erase(copy.begin());
    EXPECT_EQ(2U, copy.size());
    EXPECT_EQ(3U, result.itemSets().size());
}

TEST(MiningResult, IsTheSameWhenMinedAgain) {
    const quarvis::rule::TransactionSet txns = support::transactionsOf(tableOf({"1:a 2:b"}));
    const Configuration config = support::configurationOf(settingsOf(1));
    EXPECT_EQ(mined(config, txns), mined(config, txns));
}

}  // namespace
