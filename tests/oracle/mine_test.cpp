#include "oracle/mine.hpp"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/brute_force.hpp"
#include "oracle/random_table.hpp"

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double INFINITE = std::numeric_limits<double>::infinity();

Settings settingsOf(std::uint32_t minCount, std::uint32_t maxOrder = 0, Time window = 0) {
    Settings settings;
    settings.minCount = minCount;
    settings.maxOrder = maxOrder;
    settings.windowSize = window;
    return settings;
}

std::string messagesOf(std::initializer_list<const char*> lines) {
    std::string messages;
    for (const char* line : lines)
        messages += std::string("\t ... ") + line + '\n';
    return messages;
}

TEST(OracleMine, RulesOfTwoTransactions) {
    EXPECT_THAT(mine(settingsOf(1), tableOf({"2:c,d 3:a,b"})).ruleTexts(),
                ElementsAre("{c,d} => {a,b}", "{c,d} => a", "{c,d} => b", "c => {a,b}", "c => a",
                            "c => b", "d => {a,b}", "d => a", "d => b"));
}

TEST(OracleMine, MeasuresOfFourHistories) {
    const Outcome outcome = mine(settingsOf(1), tableOf({"1:a 2:s", "1:a,s", "1:s", "1:s"}));
    EXPECT_THAT(outcome.rules,
                ElementsAre(Outcome::Rule{"a => s", 1, 2, 0.25, 1, 1, INFINITE, 0.5, 1}));
    EXPECT_THAT(outcome.itemSets,
                ElementsAre(Outcome::ItemSet{"{a,s}", 2}, Outcome::ItemSet{"{a}", 2},
                            Outcome::ItemSet{"{s}", 4}));
}

TEST(OracleMine, WithoutHistoriesThereIsNothing) {
    const Outcome outcome = mine(settingsOf(0), Table());
    EXPECT_THAT(outcome.rules, IsEmpty());
    EXPECT_THAT(outcome.itemSets, IsEmpty());
    EXPECT_EQ(messagesOf({"calculated 0 frequent item sets of size 1. ",
                          "calculated 0 frequent item sets of size 2 with 0 proposed rules.",
                          "no rules of order 1 found.", "preparing rules for reporting.",
                          "have 0 rules."}),
              outcome.messages);
}

TEST(OracleMine, MinCountZeroKeepsNoRuleThatCountsNowhere) {
    const Outcome outcome = mine(settingsOf(0), tableOf({"1:a", "1:b 2:c"}));
    EXPECT_THAT(outcome.ruleTexts(), ElementsAre("b => c"));
    EXPECT_THAT(outcome.itemSets, testing::SizeIs(7));
}

TEST(OracleMine, ThreeSetsOfSizeTwoLeadToSizeThree) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.",
                          "mining rules until there are no more frequent item sets.",
                          "calculated 1 frequent item sets of size 3 with 5 proposed rules.",
                          "deducing rules of order 2.", "preparing rules for reporting.",
                          "have 4 rules."}),
              mine(settingsOf(1), tableOf({"1:a 2:b 3:c"})).messages);
}

TEST(OracleMine, TwoSetsOfSizeTwoEndTheSearch) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 2 frequent item sets of size 2 with 4 proposed rules.",
                          "deducing rules of order 1.",
                          "mining rules until there are no more frequent item sets.",
                          "preparing rules for reporting.", "have 2 rules."}),
              mine(settingsOf(1), tableOf({"1:a 2:b", "1:b 2:c"})).messages);
}

TEST(OracleMine, MaxOrderOneMinesPairsOnly) {
    const Outcome outcome = mine(settingsOf(1, 1), tableOf({"1:a 2:b 3:c"}));
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.", "preparing rules for reporting.",
                          "have 3 rules."}),
              outcome.messages);
    EXPECT_THAT(outcome.ruleTexts(), ElementsAre("a => b", "a => c", "b => c"));
}

TEST(OracleMine, EveryOrderAskedForIsTriedThoughTheSetsRunOut) {
    EXPECT_EQ(messagesOf({"calculated 3 frequent item sets of size 1. ",
                          "calculated 3 frequent item sets of size 2 with 6 proposed rules.",
                          "deducing rules of order 1.", "rules up to order 3 will be mined.",
                          "calculated 1 frequent item sets of size 3 with 5 proposed rules.",
                          "deducing rules of order 2.",
                          "calculated 0 frequent item sets of size 4 with 0 proposed rules.",
                          "deducing rules of order 3.", "preparing rules for reporting.",
                          "have 4 rules."}),
              mine(settingsOf(1, 3), tableOf({"1:a 2:b 3:c"})).messages);
}

TEST(OracleMine, AllSplitsOfFourItemsAreFourteenRules) {
    Settings settings = settingsOf(1);
    settings.allSplits = true;
    const Outcome outcome = mine(settings, tableOf({"1:a,c 2:b,d"}));
    EXPECT_THAT(outcome.ruleTexts(),
                ElementsAre("{a,c} => {b,d}", "{a,c} => b", "{a,c} => d", "a => {b,d}", "a => b",
                            "a => d", "c => {b,d}", "c => b", "c => d"));
    EXPECT_EQ(messagesOf({"calculated 4 frequent item sets of size 1. ",
                          "calculated 6 frequent item sets of size 2 with 12 proposed rules.",
                          "deducing rules of order 1.",
                          "mining rules until there are no more frequent item sets.",
                          "calculated 4 frequent item sets of size 3 with 24 proposed rules.",
                          "deducing rules of order 2.",
                          "calculated 1 frequent item sets of size 4 with 14 proposed rules.",
                          "deducing rules of order 3.", "preparing rules for reporting.",
                          "have 9 rules."}),
              outcome.messages);
    // Without b in between {a,c} is a run.
    settings.allSplits = false;
    EXPECT_THAT(mine(settings, tableOf({"1:a,c 2:b,d"})).ruleTexts(),
                ElementsAre("{a,c} => d", "a => {b,d}", "a => b", "a => d", "c => {b,d}", "c => b",
                            "c => d"));
}

/// a => s counts in 2 of 8 histories: support 0.25, confidence 0.75, lift 1.5, conviction 2.
TEST(OracleMine, ThresholdsAreInclusive) {
    struct Row {
        double Settings::*threshold;
        double inclusive;
        double exclusive;
    };
    const Row rows[] = {
        {&Settings::minSupport, 0.25, 0.250001},
        {&Settings::minConfidence, 0.75, 0.750001},
        {&Settings::minLift, 1.5, 1.500001},
        {&Settings::maxConviction, 2, 1.999999},
    };
    const Table table = tableOf({"1:a 2:s", "1:a 2:s", "1:a,s", "1:a", "1:s", "1:x", "1:x", "1:x"});
    for (const Row& row : rows) {
        Settings settings = settingsOf(1);
        settings.*row.threshold = row.inclusive;
        EXPECT_THAT(mine(settings, table).ruleTexts(), ElementsAre("a => s")) << settings;
        settings.*row.threshold = row.exclusive;
        EXPECT_THAT(mine(settings, table).ruleTexts(), IsEmpty()) << settings;
        settings.*row.threshold = std::numeric_limits<double>::quiet_NaN();
        EXPECT_THAT(mine(settings, table).ruleTexts(), IsEmpty()) << settings;
    }
    EXPECT_THAT(mine(settingsOf(2), table).ruleTexts(), ElementsAre("a => s"));
    EXPECT_THAT(mine(settingsOf(3), table).ruleTexts(), IsEmpty());
}

class MinersOfTheOracle : public testing::TestWithParam<std::size_t> {};

TEST_P(MinersOfTheOracle, AgreeOnRandomTables) {
    std::size_t withRules = 0;
    for (std::uint64_t i = 0; i < 1000; ++i) {
        RandomCase drawn = randomCase(GetParam() + i * tableShapes().size());
        drawn.settings.allSplits = i % 2 == 0;
        const Outcome outcome = mine(drawn.settings, drawn.table);
        ASSERT_EQ(bruteForce(drawn.settings, drawn.table), outcome) << drawn.settings << '\n'
                                                                    << drawn.table;
        withRules += outcome.rules.empty() ? 0 : 1;
    }
    // Agreement means little if there is nothing to agree on.
    EXPECT_GT(withRules, 100U);
}

INSTANTIATE_TEST_SUITE_P(Shapes, MinersOfTheOracle,
                         testing::Range(std::size_t{0}, tableShapes().size()),
                         [](const auto& shape) { return tableShapes()[shape.param].name; });

}  // namespace
}  // namespace oracle
