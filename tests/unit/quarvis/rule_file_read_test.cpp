#include <quarvis/rule_set.hpp>

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "io_error.hpp"
#include "items.hpp"
#include "rule_files.hpp"
#include "support/open_files.hpp"
#include "support/temp_dir.hpp"

namespace {

using namespace std::string_literals;
using quarvis::rule::Item;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;
using quarvis::test::INF;
using quarvis::test::ioErrorOf;
using quarvis::test::readRules;
using quarvis::test::RULES_HEADER;
using quarvis::test::setOf;
using quarvis::test::written;
using support::openFiles;
using support::TempDir;

const std::string STATS = "\t1\t2\t3\t4\t5\t6\t7\t8";

/// Reads a header and the rows `text`, and returns the rules file of the result, or the error.
std::string reread(const std::string& text) {
    RuleSet rules;
    const std::string error = ioErrorOf([&] { readRules(rules, "header\n" + text); });
    return error == "nothing thrown" ? written(rules).substr(RULES_HEADER.size()) : error;
}

TEST(RuleFileReading, ARowIsARuleWithItsCountsAndMeasures) {
    RuleSet rules;
    readRules(rules, RULES_HEADER + "{ab,cd} => ef\t3\t4\t0.25\t0.75\t1.5\t2\t0.5\t0.125\n");
    ASSERT_EQ(rules.size(), 1U);
    const RuleSet::Stats& stats = rules.at(Rule(setOf({"ab", "cd"}), Item("ef")));
    EXPECT_EQ(stats.count, 3U);
    EXPECT_EQ(stats.icount, 4U);
    EXPECT_DOUBLE_EQ(stats.support, 0.25);
    EXPECT_DOUBLE_EQ(stats.confidence, 0.75);
    EXPECT_DOUBLE_EQ(stats.lift, 1.5);
    EXPECT_EQ(stats.conviction, 2.0);
    EXPECT_DOUBLE_EQ(stats.probability, 0.5);
    EXPECT_DOUBLE_EQ(stats.certainty, 0.125);
}

TEST(RuleFileReading, TheHeaderIsDiscardedWhateverItHolds) {
    RuleSet rules;
    readRules(rules, "ab => cd" + STATS + "\nef => gh" + STATS + "\n");
    EXPECT_EQ(written(rules), RULES_HEADER + "ef => gh" + STATS + "\n");
    readRules(rules, "\"\nef => gh" + STATS + "\n");
    EXPECT_EQ(written(rules), RULES_HEADER + "ef => gh" + STATS + "\n");
}

TEST(RuleFileReading, TheDelimiterIsTheCallers) {
    RuleSet rules;
    readRules(rules, "header\nab => cd;1;2;3;4;5;6;7;8\n", ';');
    EXPECT_EQ(written(rules), RULES_HEADER + "ab => cd" + STATS + "\n");
}

TEST(RuleFileReading, EmptyLinesAreSkipped) {
    EXPECT_EQ(reread("\nab => cd" + STATS + "\n\n\nef => gh" + STATS + "\n\n"),
              "ab => cd" + STATS + "\nef => gh" + STATS + "\n");
}

TEST(RuleFileReading, TheLastRowNeedsNoLineEnd) {
    EXPECT_EQ(reread("ab => cd" + STATS), "ab => cd" + STATS + "\n");
}

TEST(RuleFileReading, ALaterRowReplacesAnEarlierOneOfTheSameRule) {
    EXPECT_EQ(reread("{cd,ab} => ef\t9\t9\t9\t9\t9\t9\t9\t9\nef => gh" + STATS + "\n{ab,cd}=>{ef}" +
                     STATS + "\n"),
              "{ab,cd} => ef" + STATS + "\nef => gh" + STATS + "\n");
}

TEST(RuleFileReading, NumbersAreReadAsFarAsTheyGo) {
    struct Row {
        std::string count, measure;
        std::size_t expectedCount;
        double expectedMeasure;
    };
    const std::vector<Row> rows = {
        {"", "", 0, 0},
        {"x", "x", 0, 0},
        {" 3", " 3", 0, 0},
        {"3 ", "3 ", 3, 3},
        {"3 apples", "0.5apples", 3, 0.5},
        {"+3", "+3", 3, 3},
        {"3.7", "-3", 3, -3},
        {"-1", "1e2", 18446744073709551615U, 100},
        {"18446744073709551615", "5.", 18446744073709551615U, 0},
        {"18446744073709551616", "inf", 0, INF},
        {"\"3\"", "-infinity", 3, -INF},
        {"1e3", "iguana", 1, INF},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.count + " and " + row.measure);
        std::string text = "header\nab => cd";
        for (int column = 2; column <= 3; ++column)
            text += "\t" + row.count;
        for (int column = 4; column <= 9; ++column)
            text += "\t" + row.measure;
        RuleSet rules;
        readRules(rules, text + "\n");
        ASSERT_EQ(rules.size(), 1U);
        const RuleSet::Stats& stats = rules.begin()->second;
        EXPECT_EQ(stats.count, row.expectedCount);
        EXPECT_EQ(stats.icount, row.expectedCount);
        for (const double measure : {stats.support, stats.confidence, stats.lift, stats.conviction,
                                     stats.probability, stats.certainty})
            EXPECT_DOUBLE_EQ(measure, row.expectedMeasure);
    }
}

TEST(RuleFileReading, NanIsReadAsNoNumber) {
    RuleSet rules;
    readRules(rules, "header\nab => cd\t1\t1\tnan\t-nan\tNaN\tnano\t0\t0\n");
    const RuleSet::Stats& stats = rules.at(Rule(setOf({"ab"}), Item("cd")));
    EXPECT_TRUE(std::isnan(stats.support));
    EXPECT_TRUE(std::isnan(stats.confidence));
    EXPECT_TRUE(std::isnan(stats.lift));
    EXPECT_EQ(stats.conviction, 0.0);
}

TEST(RuleFileReading, ARowOfTheRuleAloneMissesItsCount) {
    EXPECT_EQ(reread("ab => cd\n"), "\"Count\" at column 2 is missing.");
}

TEST(RuleFileReading, TheFirstMissingColumnIsTold) {
    const std::vector<std::string> messages = {
        "\"Count\" at column 2 is missing.",       "\"A union S\" at column 3 is missing.",
        "\"Support\" at column 4 is missing.",     "\"Confidence\" at column 5 is missing.",
        "\"Lift\" at column 6 is missing.",        "\"Conviction\" at column 7 is missing.",
        "\"Probability\" at column 8 is missing.", "\"Certainty\" at column 9 is missing.",
    };
    const std::string next = "\nef => gh" + STATS + "\n";
    std::string row = "ab => cd";
    for (const std::string& message : messages) {
        EXPECT_EQ(reread(row + "\n"), message);
        EXPECT_EQ(reread(row), message);
        EXPECT_EQ(reread(row + next), message);
        row += "\t1";
    }
    EXPECT_EQ(reread(row), "ab => cd\t1\t1\t1\t1\t1\t1\t1\t1\n");
}

TEST(RuleFileReading, ACellThatIsEmptyIsNotMissing) {
    EXPECT_EQ(reread("ab => cd\t"), "\"A union S\" at column 3 is missing.");
    EXPECT_EQ(reread("ab => cd\t\t\t\t\t\t\t\t\n"), "ab => cd\t0\t0\t0\t0\t0\t0\t0\t0\n");
}

TEST(RuleFileReading, ATenthCellIsOneTooMany) {
    EXPECT_EQ(reread("ab => cd" + STATS + "\t9\n"), "Excess cells in row.");
    EXPECT_EQ(reread("ab => cd" + STATS + "\t\n"), "Excess cells in row.");
    EXPECT_EQ(reread("ab => cd" + STATS + "\t"), "Excess cells in row.");
}

TEST(RuleFileReading, ARuleTextWithoutArrowIsAnError) {
    EXPECT_EQ(reread("ab" + STATS + "\n"), "Missing => operator for rule in \"ab\".");
    EXPECT_EQ(reread("100%s"), "Missing => operator for rule in \"100%s\".");
}

TEST(RuleFileReading, ABraceThatIsNotClosedIsAnError) {
    EXPECT_EQ(reread("{ab => cd" + STATS + "\n"), "Missing trailing brace ('{') in braced form.");
}

TEST(RuleFileReading, TheCellsAfterAnEmptyFirstOneAreTakenAsARowOfTheirOwn) {
    EXPECT_EQ(reread("\t\tab\t1\n"), "Missing => operator for rule in \"ab\".");
    EXPECT_EQ(reread("\"\"\tab\t1\n"), "Missing => operator for rule in \"ab\".");
    EXPECT_EQ(reread("\"\"\tab => cd" + STATS + "\n"), "ab => cd" + STATS + "\n");
    EXPECT_EQ(reread("\"\"\nab => cd" + STATS + "\n"), "ab => cd" + STATS + "\n");
}

TEST(RuleFileReading, ARowThatBeginsWithTheDelimiterLosesItsEmptyFirstCell) {
    EXPECT_EQ(reread("\tab => cd" + STATS + "\n"), "ab => cd" + STATS + "\n");
    EXPECT_EQ(reread("\tab" + STATS + "\n"), "Missing => operator for rule in \"ab\".");
}

TEST(RuleFileReading, ACarriageReturnJoinsTheLastCellToTheNextRow) {
    EXPECT_EQ(reread("ab => cd" + STATS + "\r\n"), "ab => cd" + STATS + "\n");
    EXPECT_EQ(reread("ab => cd" + STATS + "\r\nef => gh" + STATS + "\r\n"), "Excess cells in row.");
}

TEST(RuleFileReading, TheRuleMayBeQuoted) {
    EXPECT_EQ(reread("\"ab\t => \ncd\"" + STATS + "\n"), "ab => cd" + STATS + "\n");
}

TEST(RuleFileReading, ReadingReplacesTheContentEvenByNothing) {
    for (const std::string& text : {""s, "header"s, "header\n"s, "header\n\n\n"s}) {
        RuleSet rules;
        rules[Rule(setOf({"ab"}), Item("cd"))].count = 1;
        readRules(rules, text);
        EXPECT_EQ(rules.size(), 0U) << text;
    }
    RuleSet rules;
    rules[Rule(setOf({"ab"}), Item("cd"))].count = 1;
    readRules(rules, "header\nef => gh" + STATS + "\n");
    EXPECT_EQ(written(rules), RULES_HEADER + "ef => gh" + STATS + "\n");
}

TEST(RuleFileReading, AnErrorLeavesTheRulesBeforeItAndNothingElse) {
    const std::string before = "ab => cd" + STATS + "\nef => gh" + STATS + "\n";
    const std::string after = "\nmn => op" + STATS + "\n";
    for (const std::string& rest : {"ij\t1" + after, "ij => kl\t1" + after, "{ij => kl\t1" + after,
                                    "ij => kl\t1\t2\t3\t4\t5\t6\t7\t8\t9" + after}) {
        RuleSet rules;
        rules[Rule(setOf({"old"}), Item("old"))].count = 1;
        const std::string rows = before + rest;
        EXPECT_NE(ioErrorOf([&] { readRules(rules, "header\n" + rows); }), "nothing thrown")
            << rest;
        EXPECT_EQ(written(rules), RULES_HEADER + before) << rest;
    }
}

TEST(RuleFileReading, AnErrorInARowOfAKnownRuleLeavesItsStatistics) {
    RuleSet rules;
    const std::string text = "header\nab => cd" + STATS + "\nab => cd\t9\t9\n";
    EXPECT_EQ(ioErrorOf([&] { readRules(rules, text); }), "\"Support\" at column 4 is missing.");
    EXPECT_EQ(written(rules), RULES_HEADER + "ab => cd" + STATS + "\n");
}

TEST(RuleFileReadingPath, ReadsTheFile) {
    const TempDir dir;
    RuleSet rules;
    rules.readInto(dir.write("rules", "header\nab => cd,1,2,3,4,5,6,7,8\n"), ',');
    EXPECT_EQ(written(rules), RULES_HEADER + "ab => cd" + STATS + "\n");
}

TEST(RuleFileReadingPath, AFileThatCannotBeReadEmptiesTheSet) {
    const TempDir dir;
    for (const std::string& path : {dir / "missing", dir / "missing/file", dir.path().string(),
                                    dir.write("empty", ""), ""s}) {
        RuleSet rules;
        rules[Rule(setOf({"ab"}), Item("cd"))].count = 1;
        rules.readInto(path, '\t');
        EXPECT_EQ(rules.size(), 0U) << path;
    }
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
}

TEST(RuleFileReadingPath, AnErrorClosesTheFile) {
    const TempDir dir;
    const std::string path = dir.write("rules", "header\nab => cd" + STATS + "\nef\n");
    const auto before = openFiles();
    RuleSet rules;
    EXPECT_EQ(ioErrorOf([&] { rules.readInto(path, '\t'); }),
              "Missing => operator for rule in \"ef\".");
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(rules.size(), 1U);
}

}  // namespace
