#include <quarvis/rule_set.hpp>

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "io_error.hpp"
#include "items.hpp"
#include "rule_files.hpp"
#include "support/error_output.hpp"
#include "support/temp_dir.hpp"

/// Which rules a rules file preserves.
namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;
using quarvis::test::INF;
using quarvis::test::ioErrorOf;
using quarvis::test::itemsOf;
using quarvis::test::NOT_A_NUMBER;
using quarvis::test::readRules;
using quarvis::test::setOf;
using quarvis::test::written;
using support::ErrorOutput;
using support::fileContent;
using support::TempDir;

using Items = std::vector<Item>;

/// Rules that a file preserves, with measures in every written form.
RuleSet survivingRules() {
    RuleSet rules;
    rules[Rule(setOf({"milk"}), Item("bread"))] = {3, 4, 0.25, 0.75, 1.5, 2, 0.5, 1.0 / 3};
    rules[Rule(setOf({"milk", "tea"}), Item("bread"))] = {1, 1, 1e-7, 1234567, INF, -INF, 0, 1};
    rules[Rule(setOf({"milk", "tea", "salt"}), setOf({"bread", "oil"}))] = {
        18446744073709551615U, 9223372036854775808U, 2.0 / 3, 1.0 / 7, 22.0 / 7, 12345.678, -0.5,
        NOT_A_NUMBER};
    rules[Rule(ItemSet(), setOf({"two words", "100%"}))] = {0, 0, 1e-300, 1e300, 1e6, 1e-5, 1e5, 9};
    rules[Rule(setOf({"o'clock", "x=y", "#1", "mid\"quote", "br{a}ce"}), ItemSet())].count = 5;
    rules[Rule(setOf({"\xC3\xA9t\xC3\xA9", "\x80\xFE"}), Item("\xC3\xA9"))].count = 6;
    rules[Rule()].count = 7;
    return rules;
}

TEST(RuleFileRoundTrip, WritingReadingAndWritingGivesTheSameBytes) {
    const std::string first = written(survivingRules());
    RuleSet again;
    readRules(again, first);
    EXPECT_EQ(again.size(), 7U);
    EXPECT_EQ(written(again), first);
}

TEST(RuleFileRoundTrip, SoDoesAFile) {
    const ErrorOutput errors;
    const TempDir dir;
    survivingRules().write(dir / "first");
    RuleSet again;
    again.readInto(dir / "first", '\t');
    again.write(dir / "second");
    EXPECT_EQ(fileContent(dir / "second"), fileContent(dir / "first"));
    EXPECT_EQ(fileContent(dir / "second"), written(survivingRules()));
}

TEST(RuleFileRoundTrip, MeasuresComeBackRoundedToSixDigitsAndCountsExactly) {
    RuleSet rules;
    const Rule rule(setOf({"milk", "tea"}), Item("bread"));
    rules[rule] = {123456789, 987654321, 1.0 / 3, 2.0 / 3, 1.23456789, 1234567, 0.5, 0.1234564};
    RuleSet again;
    readRules(again, written(rules));
    const RuleSet::Stats& stats = again.at(rule);
    EXPECT_EQ(stats.count, 123456789U);
    EXPECT_EQ(stats.icount, 987654321U);
    EXPECT_DOUBLE_EQ(stats.support, 0.333333);
    EXPECT_DOUBLE_EQ(stats.confidence, 0.666667);
    EXPECT_DOUBLE_EQ(stats.lift, 1.23457);
    EXPECT_DOUBLE_EQ(stats.conviction, 1234570);
    EXPECT_DOUBLE_EQ(stats.probability, 0.5);
    EXPECT_DOUBLE_EQ(stats.certainty, 0.123456);
}

TEST(RuleFileRoundTrip, ASideOfOneCharacterComesBackEmpty) {
    RuleSet rules;
    rules[Rule(setOf({"a"}), Item("b"))].count = 3;
    RuleSet again;
    readRules(again, written(rules));
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again.at(Rule()).count, 3U);
}

TEST(RuleFileRoundTrip, RulesThatBecomeEqualAreLost) {
    RuleSet rules;
    rules[Rule(setOf({"a"}), Item("xx"))].count = 3;
    rules[Rule(setOf({"b"}), Item("xx"))].count = 4;
    RuleSet again;
    readRules(again, written(rules));
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again.at(Rule(ItemSet(), Item("xx"))).count, 4U);
}

TEST(RuleFileRoundTrip, SomeItemsComeBackAsOthers) {
    struct Row {
        Rule rule;
        Items antecedent, subsequent;  ///< As they are read.
    };
    const std::vector<Row> rows = {
        // Single characters.
        {Rule(setOf({"a", "bc"}), Item("de")), {"", "bc"}, {"de"}},
        {Rule(setOf({"a", "b"}), setOf({"c", "de", "f"})), {""}, {"", "de"}},
        {Rule(setOf({"a"}), Item("de")), {}, {"de"}},
        // The empty item.
        {Rule(setOf({""}), Item("de")), {}, {"de"}},
        {Rule(setOf({"", "ab"}), Item("de")), {"ab"}, {"de"}},
        // Blanks at the ends.
        {Rule(setOf({" ab"}), Item("de ")), {"ab"}, {"de"}},
        {Rule(setOf({"ab ", " c"}), Item("de")), {"", "ab"}, {"de"}},
        // Commas, arrows, braces and quotes.
        {Rule(setOf({"ab,cd"}), Item("ef,gh")), {"ab", "cd"}, {"ef", "gh"}},
        {Rule(setOf({"ab=>cd"}), Item("ef")), {"ab"}, {"cd => ef"}},
        {Rule(setOf({"{ab}"}), Item("{cd,ef}")), {"ab"}, {"cd", "ef"}},
        {Rule(setOf({"\"ab\""}), Item("\"cd\"")), {"ab"}, {"cd"}},
        {Rule(setOf({"\"ab", "cd\""}), Item("ef")), {"ab,cd"}, {"ef"}},
        // A carriage return reads as a line feed, which ends the list.
        {Rule(setOf({"ab\rcd", "ef"}), Item("gh\rij")), {"ab"}, {"gh"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule.toString());
        RuleSet rules;
        rules[row.rule] = {1, 2, 3, 4, 5, 6, 7, 8};
        RuleSet again;
        EXPECT_EQ(ioErrorOf([&] { readRules(again, written(rules)); }), "nothing thrown");
        ASSERT_EQ(again.size(), 1U);
        EXPECT_EQ(itemsOf(again.begin()->first.antecedent()), row.antecedent);
        EXPECT_EQ(itemsOf(again.begin()->first.subsequent()), row.subsequent);
        EXPECT_EQ(again.begin()->second.certainty, 8.0);
    }
}

TEST(RuleFileRoundTrip, SomeItemsMakeAFileThatCannotBeRead) {
    struct Row {
        Rule rule;
        std::string error;
    };
    const std::vector<Row> rows = {
        {Rule(setOf({"ab\tcd"}), Item("ef")), "Missing => operator for rule in \"ab\"."},
        {Rule(setOf({"ab"}), Item("cd\tef")), "Excess cells in row."},
        {Rule(setOf({"ab\ncd"}), Item("ef")), "Missing => operator for rule in \"ab\"."},
        {Rule(setOf({"ab"}), Item("cd\nef")), "\"Count\" at column 2 is missing."},
        {Rule(setOf({"ab\xFF", "cd"}), Item("ef")), "Missing => operator for rule in \"{ab\"."},
        {Rule(setOf({"{ab"}), Item("cd")), "Missing trailing brace ('{') in braced form."},
        {Rule(setOf({"ab"}), Item("{cd")), "Missing trailing brace ('{') in braced form."},
    };
    for (const Row& row : rows) {
        RuleSet rules;
        rules[row.rule] = {1, 2, 3, 4, 5, 6, 7, 8};
        RuleSet again;
        EXPECT_EQ(ioErrorOf([&] { readRules(again, written(rules)); }), row.error) << row.rule;
        EXPECT_EQ(again.size(), 0U) << row.rule;
    }
}

}  // namespace
