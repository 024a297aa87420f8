// How the values of options with a whole number read.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::Outcome;
using tool::progress;
using tool::rejected;
using tool::rulesFile;

// One history has x and then y, another only x, a third only z.
const std::string TABLE = "h\ne1\t1\tx\ne1\t2\ty\ne2\t1\tx\ne3\t1\tz\n";
const std::string X_Y = "x => y\t1\t1\t0.333333\t0.5\t1.5\t1.33333\t1\tinf";

/// The outcome of a minimum count: 0 keeps even sets that no history holds, 1 keeps sets in one
/// history, 2 keeps only {x}, and 3 or more keeps none.
Outcome minedWithCount(unsigned count) {
    const std::vector<std::vector<std::size_t>> levels = {{3, 3, 1}, {3, 1}, {1, 0}, {0, 0}};
    const std::vector<std::string> rules =
        count < 2 ? std::vector<std::string>{X_Y} : std::vector<std::string>{};
    return {.out = rulesFile(rules),
            .err = progress({.transactions = 4,
                             .histories = 3,
                             .levels = levels.at(count),
                             .rules = rules.size()})};
}

TEST(WholeNumberValue, ReadsWithItsSign) {
    const std::vector<std::pair<std::string, unsigned>> rows = {
        {"0", 0},   {"1", 1},  {"2", 2},   {"3", 3},  {"+2", 2},
        {"002", 2}, {"-0", 0}, {"+", 0},   {"-", 0},  {"+0", 0},
        {"00", 0},  {"=1", 1}, {"=+1", 1}, {"=-", 0}, {"4294967295", 3},
    };
    for (const auto& [text, count] : rows)
        expectRun({.args = {"-c" + text}, .input = TABLE}, minedWithCount(count));
}

TEST(WholeNumberValue, SignAloneIsZero) {
    expectRun({.args = {"-c+"}, .input = TABLE}, minedWithCount(0));
    expectRun({.args = {"-c", "+"}, .input = TABLE}, minedWithCount(0));
    expectRun({.args = {"--count=-"}, .input = TABLE}, minedWithCount(0));
}

TEST(WholeNumberValue, NegativeWrapsAround) {
    expectRun({.args = {"-c=-5"}, .input = TABLE}, minedWithCount(3));
    expectRun({.args = {"-c-1"}, .input = TABLE}, minedWithCount(3));
    expectRun({.args = {"--count=-4294967295"}, .input = TABLE}, minedWithCount(1));
    expectRun({.args = {"-c-4294967294"}, .input = TABLE}, minedWithCount(2));
}

TEST(WholeNumberValue, OverflowThatWrapsToLessDoesNotConvert) {
    for (const char* text : {"4294967296", "4294967297", "4294967298", "8589934593", "42949672960"})
        expectRun({.args = {"-c", text}, .input = TABLE},
                  rejected("Couldn't parse \"" + std::string(text) + "\".\n"));
}

TEST(WholeNumberValue, OverflowThatWrapsToMoreGoesUnnoticed) {
    // 10000000000 is 1410065408 modulo 2^32. That is greater than 1000000000, the value before the
    // last digit, so the overflow is not noticed.
    const std::string table = "h\ne1\t7\tx\ne1\t1410065415\ty\ne2\t7\tx\ne2\t1410065416\ty\n";
    expectRun({.args = {"-c1", "-w", "10000000000"}, .input = table},
              {.out = rulesFile({"x => y\t1\t2\t0.5\t1\t1\tinf\t1\tinf"}),
               .err = progress({.transactions = 4, .histories = 2, .levels = {2, 1}, .rules = 1})});
}

TEST(WholeNumberValue, AnythingElseDoesNotConvert) {
    for (const char* text :
         {"x", "2x", " 2", "2 ", "0x2", "2.0", "1e0", "++2", "+-2", "2+", "1,000", "\t1", "inf"})
        expectRun({.args = {"-c", text}, .input = TABLE},
                  rejected("Couldn't parse \"" + std::string(text) + "\".\n"));
    expectRun({.args = {"-c--2"}, .input = TABLE}, rejected("Couldn't parse \"--2\".\n"));
}

}  // namespace
