// How the values of options with a real number read. Each test gives a minimum lift for a table
// with one rule of lift 8 and one of lift 16.

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

/// Sixteen histories: one has p and then q, two have r and then s.
std::string table() {
    std::string text = "h\ne1\t1\tp\ne1\t2\tq\ne2\t1\tr\ne2\t2\ts\ne3\t1\tr\ne3\t2\ts\n";
    for (int i = 4; i <= 16; ++i)
        text += "e" + std::to_string(i) + "\t1\n";
    return text;
}

const std::string OF_LIFT_16 = "p => q\t1\t1\t0.0625\t1\t16\tinf\t1\tinf";
const std::string OF_LIFT_8 = "r => s\t2\t2\t0.125\t1\t8\tinf\t1\tinf";

Outcome mined(const std::vector<std::string>& rules) {
    return {.out = rulesFile(rules),
            .err = progress(
                {.transactions = 19, .histories = 16, .levels = {4, 2}, .rules = rules.size()})};
}

void expectKept(const std::vector<std::string>& minimums, const std::vector<std::string>& rules) {
    for (const std::string& minimum : minimums)
        expectRun({.args = {"-c1", "-l=" + minimum}, .input = table()}, mined(rules));
}

void expectRejected(const std::vector<std::string>& minimums) {
    for (const std::string& minimum : minimums)
        expectRun({.args = {"-c1", "-l=" + minimum}, .input = table()},
                  rejected("Couldn't parse \"" + minimum + "\".\n"));
}

TEST(RealValue, PlainAndSigned) {
    expectKept({"8", "8.0", "+8", "08", "0", "-0", "0.0", "-12", "-.5", "7.999"},
               {OF_LIFT_16, OF_LIFT_8});
    expectKept({"12", "8.5", "+8.5", "16", "00012.50", "9.999"}, {OF_LIFT_16});
    expectKept({"17", "16.01", "99999999999999999999999999999999999999999"}, {});
}

TEST(RealValue, WithAnExponent) {
    expectKept({"8e0", "0.5e1", ".5e1", "70e-1", "12e-1", "-1e1", "0e5", "1e-60"},
               {OF_LIFT_16, OF_LIFT_8});
    expectKept({"1e1", "1E1", "+1e+1", "12e0", "1.25e1", "120e-1"}, {OF_LIFT_16});
    expectKept({"5e1", "1e3", "0.17e2", "1e39"}, {});
}

TEST(RealValue, ExponentAloneIsAPowerOfTen) {
    expectKept({"e0", "e-2", "-e1", "-e39"}, {OF_LIFT_16, OF_LIFT_8});
    expectKept({"e1", "E1", "+e1", "e+1"}, {OF_LIFT_16});
    expectKept({"e2", "e3"}, {});
    expectRun({.args = {"-c1", "-s", "e3"}, .input = table()}, mined({}));
}

TEST(RealValue, ExponentOfASignAloneIsZero) {
    expectKept({"1e+", "1e-", "8e+"}, {OF_LIFT_16, OF_LIFT_8});
    expectKept({"12e+", "12E-"}, {OF_LIFT_16});
}

TEST(RealValue, PointWithoutAFractionNeedsMoreText) {
    expectKept({"5.e0", "500.e-2", ".e1"}, {OF_LIFT_16, OF_LIFT_8});
    expectKept({"1.e1", "12.e0"}, {OF_LIFT_16});
    expectKept({"5.e1"}, {});
    expectRejected({"5.", ".", "+.", "-.", "0."});
}

TEST(RealValue, SignAloneIsZero) {
    expectKept({"+", "-"}, {OF_LIFT_16, OF_LIFT_8});
}

TEST(RealValue, WordThatBeginsWithIIsInfinity) {
    expectKept({"inf", "INF", "Infinity", "infinity", "i", "I", "iguana", "+iguana", "in 5"}, {});
    expectKept({"-inf", "-i", "-Iguana"}, {OF_LIFT_16, OF_LIFT_8});
    expectRun({.args = {"-c1", "-s", "iguana"}, .input = table()}, mined({}));
    expectRun({.args = {"-c1", "-V", "iguana"}, .input = table()}, mined({OF_LIFT_16, OF_LIFT_8}));
}

TEST(RealValue, NotANumberKeepsNoRule) {
    expectKept({"nan", "NaN", "NAN", "+nan", "-nan"}, {});
    expectKept({"0e39"}, {});  // zero times infinity
    for (const char* option : {"-C", "-l", "-s", "-V"})
        expectRun({.args = {"-c1", option, "nan"}, .input = table()}, mined({}));
}

TEST(RealValue, AnythingElseDoesNotConvert) {
    expectRejected({"x",     "8x",   " 8",  "8 ",  "8e",    "8E",   "e",   "-e",
                    "8.5e",  "8ex",  "ex",  "e+e", "8e1.5", "nano", "n",   "na",
                    "-nano", "nan ", "0x8", "8,5", "8.5.5", "8..5", "..5", "5.x",
                    "1i",    "1nan", "++8", "+-8", "--8",   "=8",   "_",   "1e2147483648"});
    expectRun({.args = {"-s", ""}}, rejected("Couldn't parse \"\".\n"));
}

}  // namespace
