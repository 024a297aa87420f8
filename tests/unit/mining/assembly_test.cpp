#include "assembly.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/table.hpp"
#include "searched.hpp"
#include "support/conversion.hpp"
#include "support/error_output.hpp"

namespace quarvis::rule {
namespace {

using mining_tests::Searched;
using oracle::Table;
using oracle::tableOf;
using support::ErrorOutput;
using testing::ElementsAre;
using testing::IsEmpty;

Rule ruleOf(const char* antecedent, const char* subsequent) {
    return Rule(support::itemSetOf(oracle::itemsOf(antecedent)),
                support::itemSetOf(oracle::itemsOf(subsequent)));
}

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// Settings that let every rule pass.
Configuration unfiltered() {
    Configuration config;
    config.minCount = 0;
    return config;
}

RuleSet::Stats someStats() {
    RuleSet::Stats stats;
    stats.count = 3;
    stats.icount = 3;
    stats.support = 0.25;
    stats.confidence = 0.75;
    stats.lift = 1.5;
    stats.conviction = 2;
    stats.probability = 0.5;
    stats.certainty = 0.5;
    return stats;
}

TEST(Filter, BoundsAreInclusive) {
    struct Row {
        const char* bound;
        void (*set)(Configuration& config, double value);
        double inclusive;
        double exclusive;
    };
    const Row rows[] = {
        {"minCount", [](Configuration& c, double v) { c.minCount = static_cast<std::uint32_t>(v); },
         3, 4},
        {"minSupport", [](Configuration& c, double v) { c.minSupport = v; }, 0.25, 0.2500001},
        {"minConfidence", [](Configuration& c, double v) { c.minConfidence = v; }, 0.75, 0.7500001},
        {"minLift", [](Configuration& c, double v) { c.minLift = v; }, 1.5, 1.5000001},
        {"maxConviction", [](Configuration& c, double v) { c.maxConviction = v; }, 2, 1.9999999},
    };
    for (const Row& row : rows) {
        Configuration config = unfiltered();
        row.set(config, row.inclusive);
        EXPECT_TRUE(filter(config, someStats())) << row.bound;
        row.set(config, row.exclusive);
        EXPECT_FALSE(filter(config, someStats())) << row.bound;
    }
}

TEST(Filter, NotANumberFailsForTheFourMeasuresWithBounds) {
    for (double RuleSet::Stats::*measure : {&RuleSet::Stats::support, &RuleSet::Stats::confidence,
                                            &RuleSet::Stats::lift, &RuleSet::Stats::conviction}) {
        RuleSet::Stats stats = someStats();
        stats.*measure = NOT_A_NUMBER;
        EXPECT_FALSE(filter(unfiltered(), stats));
    }
}

TEST(Filter, NotANumberAsABoundFailsEveryRule) {
    for (double Configuration::*bound : {&Configuration::minSupport, &Configuration::minConfidence,
                                         &Configuration::minLift, &Configuration::maxConviction}) {
        Configuration config = unfiltered();
        config.*bound = NOT_A_NUMBER;
        EXPECT_FALSE(filter(config, someStats()));
    }
}

TEST(Filter, ProbabilityAndCertaintyHaveNoBounds) {
    RuleSet::Stats stats = someStats();
    stats.probability = NOT_A_NUMBER;
    stats.certainty = -INF;
    EXPECT_TRUE(filter(unfiltered(), stats));
}

TEST(Filter, TheCountOfTheUnionHasNoBound) {
    Configuration config = unfiltered();
    config.minCount = 3;
    RuleSet::Stats stats = someStats();
    stats.icount = 0;
    EXPECT_TRUE(filter(config, stats));
}

TEST(Filter, InfiniteConvictionPassesOnlyAnInfiniteBound) {
    RuleSet::Stats stats = someStats();
    stats.conviction = INF;
    Configuration config = unfiltered();
    EXPECT_TRUE(filter(config, stats));
    config.maxConviction = std::numeric_limits<double>::max();
    EXPECT_FALSE(filter(config, stats));
}

TEST(Filter, CountsAreComparedWhole) {
    RuleSet::Stats stats = someStats();
    stats.count = std::size_t{1} << 32;
    Configuration config = unfiltered();
    config.minCount = std::numeric_limits<std::uint32_t>::max();
    EXPECT_TRUE(filter(config, stats));
}

std::vector<std::string> itemSetsOf(const Searched& all) {
    ItemSetHistogram found;
    populateItemSets(found, all.index, all.sets);
    std::vector<std::string> texts;
    for (const auto& [items, count] : found)
        texts.push_back(items.toString() + ' ' + std::to_string(count));
    return texts;
}

TEST(AssembledItemSets, AddsTheSetsOfAllLevelsInTheirOrder) {
    EXPECT_THAT(itemSetsOf(Searched(tableOf({"1:b,a 2:c", "1:a,c", "1:B"}), 1)),
                ElementsAre("{B} 1", "{a,b,c} 1", "{a,b} 1", "{a,c} 2", "{a} 2", "{b,c} 1", "{b} 1",
                            "{c} 2"));
}

TEST(AssembledItemSets, AddsTheSetsThatMinCount0Keeps) {
    EXPECT_THAT(itemSetsOf(Searched(tableOf({"1:a", "1:b"}), 0)),
                ElementsAre("{a,b} 0", "{a} 1", "{b} 1"));
}

TEST(AssembledItemSets, OfOneLevelOnly) {
    EXPECT_THAT(itemSetsOf(Searched(tableOf({"1:a,b"}), 1, 1)), ElementsAre("{a} 1", "{b} 1"));
}

TEST(AssembledItemSets, AddsNoneOfNone) {
    EXPECT_THAT(itemSetsOf(Searched(Table(), 1)), IsEmpty());
    EXPECT_THAT(itemSetsOf(Searched(tableOf({"1:a"}), 2)), IsEmpty());
}

/// The rule set of some counted rules.
RuleSet rulesOf(const Configuration& config, const Searched& all,
                const std::vector<CountedRule>& counted) {
    const ErrorOutput messages;
    RuleHistogram counts;
    counts.rules = counted;
    RuleSet rules;
    populateRuleSet(config, rules, all.index, all.sets, counts, all.txns.size());
    EXPECT_EQ("\t ... preparing rules for reporting.\n", messages.text());
    return rules;
}

std::vector<std::string> textsOf(const RuleSet& rules) {
    std::vector<std::string> texts;
    for (const auto& [rule, stats] : rules)
        texts.push_back(rule.toString());
    return texts;
}

/// Every rule of every set, each with a count of 1.
std::vector<CountedRule> everyRule(const Searched& all) {
    std::vector<CountedRule> rules;
    for (std::uint32_t size = 2; size <= all.sets.levels(); ++size)
        for (std::uint32_t set = 0; set < all.sets.level(size).size(); ++set)
            for (std::uint32_t first = 0; first < size; ++first)
                for (std::uint32_t last = first; last < size; ++last)
                    if (last - first + 1 < size)
                        rules.push_back({set, size, first, last, 1});
    return rules;
}

TEST(AssembledRules, OrdersByAntecedentsThenBySubsequentsEachBeforeItsPrefixes) {
    const Searched all(tableOf({"1:a,b,c"}), 1);
    std::vector<CountedRule> rules = everyRule(all);
    const std::vector<std::string> expected = {"{a,b} => c", "a => {b,c}", "a => b", "a => c",
                                               "{b,c} => a", "b => {a,c}", "b => a", "b => c",
                                               "c => {a,b}", "c => a",     "c => b"};
    EXPECT_EQ(expected, textsOf(rulesOf(unfiltered(), all, rules)));
    std::reverse(rules.begin(), rules.end());
    EXPECT_EQ(expected, textsOf(rulesOf(unfiltered(), all, rules)));
}

TEST(AssembledRules, IsInTheOrderOfTheRuleSet) {
    // Names of which one begins another, and ten of them: not the order of their numbers.
    const Searched all(tableOf({"1:a,aa,ab,b", "1:1,10,2,11,3,\x80"}), 1);
    const std::vector<CountedRule> rules = everyRule(all);
    const RuleSet found = rulesOf(unfiltered(), all, rules);
    EXPECT_EQ(rules.size(), found.size());
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), [](const auto& a, const auto& b) {
        return RuleOrder()(a.first, b.first);
    }));
}

TEST(AssembledRules, TakesTheAntecedentOutOfTheMiddleOfASet) {
    const Searched all(tableOf({"1:a,b,c,d,e"}), 1);
    EXPECT_THAT(textsOf(rulesOf(unfiltered(), all, {{0, 5, 1, 3, 1}})),
                ElementsAre("{b,c,d} => {a,e}"));
    EXPECT_THAT(textsOf(rulesOf(unfiltered(), all, {{0, 5, 0, 1, 1}})),
                ElementsAre("{a,b} => {c,d,e}"));
    EXPECT_THAT(textsOf(rulesOf(unfiltered(), all, {{0, 5, 4, 4, 1}})),
                ElementsAre("e => {a,b,c,d}"));
}

/// Of four histories a and b are in two, and b is in the two others as well.
Table fourHistories() {
    return tableOf({"1:a 2:b", "1:a,b", "1:b", "1:b"});
}

TEST(AssembledRules, SupportIsOfTheRuleAndTheOtherMeasuresOfTheItems) {
    const Searched all(fourHistories(), 1);
    const RuleSet rules = rulesOf(unfiltered(), all, {{0, 2, 0, 0, 1}});
    ASSERT_EQ(1U, rules.size());
    const RuleSet::Stats& stats = rules.at(ruleOf("a", "b"));
    EXPECT_EQ(1U, stats.count);
    EXPECT_EQ(2U, stats.icount);
    EXPECT_EQ(0.25, stats.support);
    EXPECT_EQ(1.0, stats.confidence);
    EXPECT_EQ(1.0, stats.lift);
    EXPECT_EQ(INF, stats.conviction);
    EXPECT_EQ(0.5, stats.probability);
    EXPECT_EQ(1.0, stats.certainty);
}

TEST(AssembledRules, TellsTheSidesApart) {
    const Searched all(fourHistories(), 1);
    const RuleSet rules = rulesOf(unfiltered(), all, {{0, 2, 1, 1, 2}});
    const RuleSet::Stats& stats = rules.at(ruleOf("b", "a"));
    EXPECT_EQ(2U, stats.count);
    EXPECT_EQ(2U, stats.icount);
    EXPECT_EQ(0.5, stats.support);
    EXPECT_EQ(0.5, stats.confidence);
    EXPECT_EQ(1.0, stats.lift);
    EXPECT_EQ(1.0, stats.conviction);
    EXPECT_EQ(1.0, stats.probability);
    EXPECT_EQ(INF, stats.certainty);
}

TEST(AssembledRules, CountsAreThoseOfSetsOfSeveralItems) {
    // {a,b} is in three histories, c in three, all of them in two.
    const Searched all(tableOf({"1:a,b 2:c", "1:a,b,c", "1:a,b", "1:c", "1:a"}), 1);
    const RuleSet rules = rulesOf(unfiltered(), all, {{0, 3, 0, 1, 1}});
    const RuleSet::Stats& stats = rules.at(ruleOf("a,b", "c"));
    EXPECT_EQ(2U, stats.icount);
    EXPECT_EQ(0.2, stats.support);
    EXPECT_DOUBLE_EQ(2.0 / 3, stats.confidence);
    EXPECT_DOUBLE_EQ(2.0 / 3 / (3.0 / 5), stats.lift);
    EXPECT_DOUBLE_EQ((1 - 3.0 / 5) / (1 - 2.0 / 3), stats.conviction);
    EXPECT_DOUBLE_EQ(2.0 / 3, stats.probability);
    EXPECT_DOUBLE_EQ(2.0, stats.certainty);
}

TEST(AssembledRules, DropsRulesThatFailAThreshold) {
    const Searched all(fourHistories(), 1);
    const std::vector<CountedRule> rules = {{0, 2, 0, 0, 1}, {0, 2, 1, 1, 2}};
    Configuration config = unfiltered();
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("a => b", "b => a"));
    config.minSupport = 0.25;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("a => b", "b => a"));
    config.minSupport = 0.2500001;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("b => a"));
    config = unfiltered();
    config.minCount = 2;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("b => a"));
    config = unfiltered();
    config.minConfidence = 0.75;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("a => b"));
    config = unfiltered();
    config.maxConviction = 1;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), ElementsAre("b => a"));
    config.minLift = 1.5;
    EXPECT_THAT(textsOf(rulesOf(config, all, rules)), IsEmpty());
}

TEST(AssembledRules, OfNoRulesIsEmptyAndReportedAllTheSame) {
    EXPECT_EQ(0U, rulesOf(unfiltered(), Searched(Table(), 1), {}).size());
}

}  // namespace
}  // namespace quarvis::rule
