#include "oracle/outcome.hpp"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

Outcome sample() {
    Outcome outcome;
    outcome.rules = {{"{bread,milk} => eggs", 3, 4, 0.25, 0.75, 1.5, 2, 0.5, 1.0 / 3},
                     {"a => b", 1, 1, 1e-7, 1, 1234567, INFINITE, 0, -2}};
    outcome.itemSets = {{"{a,b}", 1}, {"{milk}", 7}};
    outcome.messages = "\t ... have 2 rules.\n";
    return outcome;
}

TEST(OracleOutcome, RulesFileHasSixDigits) {
    EXPECT_EQ(
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
        "{bread,milk} => eggs\t3\t4\t0.25\t0.75\t1.5\t2\t0.5\t0.333333\n"
        "a => b\t1\t1\t1e-07\t1\t1.23457e+06\tinf\t0\t-2\n",
        sample().rulesFile());
}

TEST(OracleOutcome, ItemSetFileHasTheCountFirst) {
    EXPECT_EQ("Count\tItem Set\n1\t{a,b}\n7\t{milk}\n", sample().itemSetFile());
}

TEST(OracleOutcome, FilesOfNothingAreHeaders) {
    EXPECT_EQ(
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n",
        Outcome().rulesFile());
    EXPECT_EQ("Count\tItem Set\n", Outcome().itemSetFile());
}

TEST(OracleOutcome, TextsOfTheRulesAreInTheirOrder) {
    EXPECT_THAT(sample().ruleTexts(), testing::ElementsAre("{bread,milk} => eggs", "a => b"));
}

TEST(OracleOutcome, DifferInAnyFigure) {
    EXPECT_EQ(sample(), sample());
    Outcome other = sample();
    other.rules[1].certainty = -1;
    EXPECT_NE(sample(), other);
    other = sample();
    other.itemSets[0].count = 2;
    EXPECT_NE(sample(), other);
    other = sample();
    other.messages.clear();
    EXPECT_NE(sample(), other);
}

}  // namespace
}  // namespace oracle
