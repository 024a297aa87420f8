#include <quarvis/rule_set.hpp>

#include <filesystem>
#include <iomanip>
#include <ios>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "flush_log.hpp"
#include "items.hpp"
#include "rule_files.hpp"
#include "support/error_output.hpp"
#include "support/temp_dir.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;
using quarvis::test::FlushLog;
using quarvis::test::INF;
using quarvis::test::NOT_A_NUMBER;
using quarvis::test::RULES_HEADER;
using quarvis::test::setOf;
using quarvis::test::written;
using support::ErrorOutput;
using support::fileContent;
using support::TempDir;
using testing::ElementsAre;

RuleSet breakfast() {
    RuleSet rules;
    rules[Rule(setOf({"bread", "milk"}), Item("eggs"))] = {3,   4, 0.25, 0.75,
                                                           1.5, 2, 0.5,  0.333333333};
    return rules;
}

const std::string BREAKFAST =
    RULES_HEADER + "{bread,milk} => eggs\t3\t4\t0.25\t0.75\t1.5\t2\t0.5\t0.333333\n";

TEST(RuleFile, AnEmptySetIsTheHeaderAloneAndReportsZero) {
    const ErrorOutput errors;
    std::ostringstream os;
    RuleSet().write(os);
    EXPECT_EQ(os.str(),
              "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\t"
              "Certainty\n");
    EXPECT_EQ(errors.text(), "0\n");
}

TEST(RuleFile, ARuleIsALineOfItsTextItsCountsAndItsMeasures) {
    EXPECT_EQ(written(breakfast()), BREAKFAST);
}

TEST(RuleFile, TheNumberOfRulesGoesToStandardErrorOnALineOfItsOwn) {
    const ErrorOutput errors;
    std::ostringstream os;
    RuleSet rules;
    for (int i = 10; i < 22; ++i)
        rules[Rule(setOf({std::to_string(i)}), Item("xx"))].count = 1;
    rules.write(os);
    EXPECT_EQ(errors.text(), "12\n");
}

TEST(RuleFile, RulesComeInTheirOrder) {
    RuleSet rules;
    rules[Rule(setOf({"ab"}), Item("xx"))].count = 1;
    rules[Rule(setOf({"ab", "cd"}), Item("yy"))].count = 2;
    rules[Rule(ItemSet(), setOf({"yy", "xx"}))].count = 3;
    EXPECT_EQ(written(rules), RULES_HEADER +
                                  "{ab,cd} => yy\t2\t0\t0\t0\t0\t0\t0\t0\n"
                                  "ab => xx\t1\t0\t0\t0\t0\t0\t0\t0\n"
                                  "{} => {xx,yy}\t3\t0\t0\t0\t0\t0\t0\t0\n");
}

TEST(RuleFile, MeasuresHaveSixSignificantDigits) {
    const std::vector<std::pair<double, std::string>> forms = {
        {0, "0"},
        {-0.0, "-0"},
        {0.5, "0.5"},
        {1.0 / 3, "0.333333"},
        {2.0 / 3, "0.666667"},
        {1, "1"},
        {100000, "100000"},
        {999999.5, "1e+06"},
        {1000000, "1e+06"},
        {1234567, "1.23457e+06"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {0.0000001, "1e-07"},
        {-1.5, "-1.5"},
        {1e300, "1e+300"},
        {INF, "inf"},
        {-INF, "-inf"},
        {NOT_A_NUMBER, "nan"},
    };
    for (const auto& [value, text] : forms) {
        RuleSet rules;
        rules[Rule(setOf({"ab"}), Item("cd"))] = {1, 2, value, value, value, value, value, value};
        std::string line = "ab => cd\t1\t2";
        for (int column = 4; column <= 9; ++column)
            line += "\t" + text;
        EXPECT_EQ(written(rules), RULES_HEADER + line + "\n");
    }
}

TEST(RuleFile, CountsAreUnsigned) {
    RuleSet rules;
    rules[Rule(setOf({"ab"}), Item("cd"))] = {
        18446744073709551615U, 9223372036854775808U, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(written(rules), RULES_HEADER +
                                  "ab => cd\t18446744073709551615\t9223372036854775808"
                                  "\t0\t0\t0\t0\t0\t0\n");
}

TEST(RuleFile, TheFormattingIsThatOfTheStreamAndStays) {
    const ErrorOutput errors;
    std::ostringstream three;
    three << std::setprecision(3);
    breakfast().write(three);
    EXPECT_EQ(three.str(), RULES_HEADER +
                               "{bread,milk} => eggs\t3\t4\t0.25\t0.75\t1.5\t2\t0.5"
                               "\t0.333\n");
    EXPECT_EQ(three.precision(), 3);

    std::ostringstream fixed;
    fixed << std::fixed << std::setprecision(2);
    breakfast().write(fixed);
    EXPECT_EQ(fixed.str(), RULES_HEADER +
                               "{bread,milk} => eggs\t3\t4\t0.25\t0.75\t1.50\t2.00"
                               "\t0.50\t0.33\n");
    EXPECT_TRUE((fixed.flags() & std::ios::fixed) != 0);
}

TEST(RuleFile, ItemsAreNeitherQuotedNorEscaped) {
    RuleSet rules;
    rules[Rule(setOf({"a\tb", "c,d"}), Item("\"e\n{"))].count = 1;
    EXPECT_EQ(written(rules), RULES_HEADER + "{a\tb,c,d} => \"e\n{\t1\t0\t0\t0\t0\t0\t0\t0\n");
}

TEST(RuleFile, TheStreamIsFlushedAfterEachLine) {
    const ErrorOutput errors;
    FlushLog log;
    std::ostream os(&log);
    RuleSet rules = breakfast();
    rules[Rule(setOf({"ab"}), Item("cd"))].count = 1;
    rules.write(os);
    EXPECT_THAT(log.pieces(),
                ElementsAre(RULES_HEADER, "ab => cd\t1\t0\t0\t0\t0\t0\t0\t0\n",
                            "{bread,milk} => eggs\t3\t4\t0.25\t0.75\t1.5\t2\t0.5\t0.333333\n"));
    EXPECT_EQ(log.rest(), "");
}

TEST(RuleFilePath, AFileIsCreatedOrReplaced) {
    const ErrorOutput errors;
    const TempDir dir;
    breakfast().write(dir / "new");
    EXPECT_EQ(fileContent(dir / "new"), BREAKFAST);
    const std::string old = dir.write("old", std::string(1000, 'x'));
    breakfast().write(old);
    EXPECT_EQ(fileContent(old), BREAKFAST);
    EXPECT_EQ(errors.text(), "1\n1\n");
}

TEST(RuleFilePath, WritingIntoAMissingDirectoryWritesNothingButTheCount) {
    const ErrorOutput errors;
    const TempDir dir;
    EXPECT_NO_THROW(breakfast().write(dir / "missing/rules"));
    EXPECT_NO_THROW(breakfast().write(dir.path().string()));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    EXPECT_EQ(errors.text(), "1\n1\n");
}

}  // namespace
