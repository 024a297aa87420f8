#include <quarvis/rule_set.hpp>

#include <cstddef>
#include <iostream>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"
#include "rule_files.hpp"
#include "support/error_output.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleOrder;
using quarvis::rule::RuleSet;
using quarvis::test::INF;
using quarvis::test::NOT_A_NUMBER;
using quarvis::test::setOf;
using support::ErrorOutput;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_same_v<RuleSet::Map, std::map<Rule, RuleSet::Stats, RuleOrder>>);
static_assert(std::is_same_v<RuleSet::Iterator, RuleSet::Map::iterator>);
static_assert(std::is_same_v<RuleSet::ConstIterator, RuleSet::Map::const_iterator>);
static_assert(!std::is_polymorphic_v<RuleSet>);
static_assert(std::is_same_v<decltype(RuleSet::Stats::count), std::size_t>);
static_assert(std::is_same_v<decltype(RuleSet::Stats::icount), std::size_t>);

static_assert(noexcept(std::declval<RuleSet&>().begin()));
static_assert(noexcept(std::declval<RuleSet&>().end()));
static_assert(noexcept(std::declval<const RuleSet&>().begin()));
static_assert(noexcept(std::declval<const RuleSet&>().end()));

const Rule RULE(setOf({"ab"}), Item("cd"));

/// Count 3, support 0.25, confidence 0.75, lift 1.5 and conviction 2. Filtering ignores the rest.
RuleSet::Stats plainStats() {
    return {3, 0, 0.25, 0.75, 1.5, 2, NOT_A_NUMBER, NOT_A_NUMBER};
}

std::vector<std::string> textsOf(const RuleSet& rules) {
    std::vector<std::string> texts;
    for (const auto& [rule, stats] : rules)
        texts.push_back(rule.toString());
    return texts;
}

TEST(RuleSetStats, AreZeroByDefaultInTheOrderOfTheColumns) {
    const RuleSet::Stats none;
    EXPECT_EQ(none.count, 0U);
    EXPECT_EQ(none.icount, 0U);
    for (const double measure : {none.support, none.confidence, none.lift, none.conviction,
                                 none.probability, none.certainty})
        EXPECT_EQ(measure, 0.0);
    const RuleSet::Stats stats = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(stats.count, 1U);
    EXPECT_EQ(stats.icount, 2U);
    EXPECT_EQ(stats.support, 3.0);
    EXPECT_EQ(stats.confidence, 4.0);
    EXPECT_EQ(stats.lift, 5.0);
    EXPECT_EQ(stats.conviction, 6.0);
    EXPECT_EQ(stats.probability, 7.0);
    EXPECT_EQ(stats.certainty, 8.0);
}

TEST(RuleSet, IsEmptyByDefault) {
    const RuleSet rules;
    EXPECT_EQ(rules.size(), 0U);
    EXPECT_THAT(textsOf(rules), IsEmpty());
}

TEST(RuleSet, ANewRuleHasStatisticsOfZero) {
    RuleSet rules;
    const RuleSet::Stats& stats = rules[RULE];
    EXPECT_EQ(stats.count, 0U);
    EXPECT_EQ(stats.icount, 0U);
    EXPECT_EQ(stats.certainty, 0.0);
    EXPECT_EQ(rules.size(), 1U);
}

TEST(RuleSet, StatisticsAreAssignedAndReplacedAsAWhole) {
    RuleSet rules;
    rules[RULE] = {1, 2, 3, 4, 5, 6, 7, 8};
    rules[RULE] = {8, 7, 6, 5, 4, 3, 2, 1};
    EXPECT_EQ(rules.size(), 1U);
    EXPECT_EQ(rules[RULE].count, 8U);
    EXPECT_EQ(rules[RULE].certainty, 1.0);
}

TEST(RuleSet, AtGivesTheStatistics) {
    RuleSet rules;
    rules[RULE] = plainStats();
    rules.at(RULE).count = 9;
    const RuleSet& constant = rules;
    EXPECT_EQ(constant.at(RULE).count, 9U);
    EXPECT_EQ(constant.at(RULE).lift, 1.5);
}

TEST(RuleSet, AtThrowsOutOfRangeForAnAbsentRule) {
    RuleSet rules;
    rules[RULE] = plainStats();
    const RuleSet& constant = rules;
    EXPECT_THROW(rules.at(Rule()), std::out_of_range);
    EXPECT_THROW(constant.at(Rule(setOf({"ab"}), setOf({"cd", "ef"}))), std::out_of_range);
    EXPECT_EQ(rules.size(), 1U);
}

TEST(RuleSet, IteratesByAntecedentsAndThenBySubsequents) {
    const Rule shorter(setOf({"ab"}), Item("xx"));
    const Rule longer(setOf({"ab", "cd"}), Item("yy"));
    for (const bool shorterFirst : {true, false}) {
        RuleSet rules;
        rules[shorterFirst ? shorter : longer].count = 1;
        rules[shorterFirst ? longer : shorter].count = 1;
        rules[Rule(setOf({"ab"}), setOf({"xx", "zz"}))].count = 1;
        rules[Rule(ItemSet(), Item("aa"))].count = 1;
        EXPECT_THAT(textsOf(rules),
                    ElementsAre("{ab,cd} => yy", "ab => {xx,zz}", "ab => xx", "{} => aa"));
        EXPECT_EQ(rules.at(shorter).count, 1U);
        EXPECT_EQ(rules.at(longer).count, 1U);
    }
}

TEST(RuleSetFilter, AnEmptySetStaysEmptyAndWritesNothing) {
    const ErrorOutput errors;
    RuleSet rules;
    rules.filter(0, 0, 0, 0, INF);
    EXPECT_EQ(rules.size(), 0U);
    EXPECT_EQ(errors.text(), "");
}

TEST(RuleSetFilter, OpenThresholdsKeepEveryRuleWhoseMeasuresAreNumbers) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[Rule(setOf({"ab"}), Item("cd"))] = plainStats();
    rules[Rule(setOf({"ab", "cd"}), Item("ef"))] = {0, 0, 0, 0, 0, INF, 0, 0};
    rules[Rule(ItemSet(), setOf({"gh", "ij"}))] = {1, 1, 1.0 / 3, 1e-7, 1234567, 0, 0, 0};
    rules[Rule(setOf({"kl"}), Item("mn"))] = {1, 1, NOT_A_NUMBER, 0, 0, 0, 0, 0};
    rules.filter(0, 0, 0, 0, INF);
    EXPECT_THAT(textsOf(rules), ElementsAre("{ab,cd} => ef", "ab => cd", "{} => {gh,ij}"));
    EXPECT_EQ(errors.text(),
              "{ab,cd} => ef: 0,0,0,0\n"
              "ab => cd: 0.25,0,0.75,1.5\n"
              "{} => {gh,ij}: 0.333333,0,1e-07,1.23457e+06\n");
}

TEST(RuleSetFilter, TheTraceHoldsTheThresholdOfTheSupport) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[RULE] = plainStats();
    rules.filter(1, 0.125, 0.5, 1, 4);
    EXPECT_EQ(errors.text(), "ab => cd: 0.25,0.125,0.75,1.5\n");
}

TEST(RuleSetFilter, TheTraceHasTheFormattingOfStandardError) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[RULE] = {3, 0, 1.0 / 3, 0.75, 2.0 / 3, 2, 0, 0};
    const std::streamsize precision = std::cerr.precision(2);
    rules.filter(0, 0, 0, 0, INF);
    std::cerr.precision(precision);
    EXPECT_EQ(errors.text(), "ab => cd: 0.33,0,0.75,0.67\n");
}

TEST(RuleSetFilter, EqualityWithEveryThresholdKeepsTheRule) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[RULE] = plainStats();
    rules.filter(3, 0.25, 0.75, 1.5, 2);
    EXPECT_THAT(textsOf(rules), ElementsAre("ab => cd"));
    EXPECT_EQ(errors.text(), "ab => cd: 0.25,0.25,0.75,1.5\n");
}

TEST(RuleSetFilter, EachThresholdAloneRemovesTheRule) {
    struct Row {
        const char* threshold;
        std::size_t minCount;
        double minSupport, minConfidence, minLift, maxConviction;
    };
    const std::vector<Row> rows = {
        {"count", 4, 0.25, 0.75, 1.5, 2},
        {"support", 3, 0.2500001, 0.75, 1.5, 2},
        {"confidence", 3, 0.25, 0.7500001, 1.5, 2},
        {"lift", 3, 0.25, 0.75, 1.5000001, 2},
        {"conviction", 3, 0.25, 0.75, 1.5, 1.9999999},
        {"count beyond int", 0xFFFFFFFF00000000U, 0.25, 0.75, 1.5, 2},
    };
    for (const Row& row : rows) {
        const ErrorOutput errors;
        RuleSet rules;
        rules[RULE] = plainStats();
        rules.filter(row.minCount, row.minSupport, row.minConfidence, row.minLift,
                     row.maxConviction);
        EXPECT_EQ(rules.size(), 0U) << row.threshold;
        EXPECT_EQ(errors.text(), "") << row.threshold;
    }
}

TEST(RuleSetFilter, AMeasureThatIsNoNumberRemovesTheRule) {
    for (double RuleSet::Stats::*const measure :
         {&RuleSet::Stats::support, &RuleSet::Stats::confidence, &RuleSet::Stats::lift,
          &RuleSet::Stats::conviction}) {
        const ErrorOutput errors;
        RuleSet rules;
        rules[RULE] = plainStats();
        rules[RULE].*measure = NOT_A_NUMBER;
        rules.filter(0, -INF, -INF, -INF, INF);
        EXPECT_EQ(rules.size(), 0U);
        EXPECT_EQ(errors.text(), "");
    }
}

TEST(RuleSetFilter, AThresholdThatIsNoNumberRemovesEveryRule) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[RULE] = plainStats();
    rules.filter(0, 0, 0, 0, NOT_A_NUMBER);
    EXPECT_EQ(rules.size(), 0U);
}

TEST(RuleSetFilter, AnInfiniteConvictionPassesOnlyAnInfiniteBound) {
    const ErrorOutput errors;
    RuleSet rules;
    rules[RULE] = plainStats();
    rules[RULE].conviction = INF;
    rules.filter(0, 0, 0, 0, INF);
    EXPECT_EQ(rules.size(), 1U);
    rules.filter(0, 0, 0, 0, std::numeric_limits<double>::max());
    EXPECT_EQ(rules.size(), 0U);
}

TEST(RuleSetFilter, ErasingDoesNotDisturbTheWalk) {
    for (unsigned int kept = 0; kept < 16; ++kept) {
        const ErrorOutput errors;
        RuleSet rules;
        std::vector<std::string> expected;
        std::string trace;
        for (unsigned int i = 0; i < 4; ++i) {
            const Rule rule(setOf({std::string("r") + std::to_string(i)}), Item("xx"));
            rules[rule].count = kept >> i & 1;
            if ((kept >> i & 1) != 0) {
                expected.push_back(rule.toString());
                trace += rule.toString() + ": 0,0,0,0\n";
            }
        }
        rules.filter(1, 0, 0, 0, INF);
        EXPECT_EQ(textsOf(rules), expected);
        EXPECT_EQ(errors.text(), trace);
    }
}

}  // namespace
