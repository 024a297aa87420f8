#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::itemSetFile;
using tool::progress;
using tool::rulesFile;

const std::string TABLE = "h\ne0\t1\tab\ne0\t2\tcd\n";
const std::string RULES = rulesFile({"ab => cd\t1\t1\t1\t1\t1\tinf\t1\tinf"});
const std::string SETS = itemSetFile({"1\t{ab,cd}", "1\t{ab}", "1\t{cd}"});

std::string mined(const std::string& input, const std::string& itemSets = {}) {
    return progress({.input = input,
                     .transactions = 2,
                     .histories = 1,
                     .levels = {2, 1},
                     .rules = 1,
                     .itemSets = itemSets});
}

TEST(Positionals, InputOnly) {
    expectRun({.args = {"-c1", "in"}, .files = {{"in", TABLE}}},
              {.out = RULES, .err = mined("in"), .files = {{"in", TABLE}}});
}

TEST(Positionals, InputAndOutput) {
    expectRun({.args = {"-c1", "in", "out"}, .files = {{"in", TABLE}}},
              {.err = mined("in"), .files = {{"in", TABLE}, {"out", RULES}}});
}

TEST(Positionals, InputOutputAndItemSets) {
    expectRun(
        {.args = {"-c1", "in", "out", "sets"}, .files = {{"in", TABLE}}},
        {.err = mined("in", "sets"), .files = {{"in", TABLE}, {"out", RULES}, {"sets", SETS}}});
}

TEST(Positionals, FourthAndLaterOnesAreIgnored) {
    expectRun({.args = {"-c1", "in", "out", "sets", "fourth", "-", "--"}, .files = {{"in", TABLE}}},
              {.err = "Got --\n" + mined("in", "sets"),
               .files = {{"in", TABLE}, {"out", RULES}, {"sets", SETS}}});
}

TEST(Positionals, StandBetweenOptions) {
    expectRun(
        {.args = {"in", "-c", "7", "out", "-v", "sets", "--count=1"}, .files = {{"in", TABLE}}},
        {.err = mined("in", "sets"), .files = {{"in", TABLE}, {"out", RULES}, {"sets", SETS}}});
}

TEST(Positionals, HyphenIsAStandardStream) {
    expectRun({.args = {"-c1", "-", "out"}, .input = TABLE},
              {.err = mined("-"), .files = {{"out", RULES}}});
    expectRun({.args = {"-c1", "in", "-"}, .files = {{"in", TABLE}}},
              {.out = RULES, .err = mined("in"), .files = {{"in", TABLE}}});
    expectRun({.args = {"-c1", "-", "out", "-"}, .input = TABLE},
              {.out = SETS, .err = mined("-", "-"), .files = {{"out", RULES}}});
    expectRun({.args = {"-c1", "-", "-", "-"}, .input = TABLE},
              {.out = RULES + SETS, .err = mined("-", "-")});
    expectRun({.args = {"-c1", "-", "-", "sets"}, .input = TABLE},
              {.out = RULES, .err = mined("-", "sets"), .files = {{"sets", SETS}}});
}

TEST(Positionals, NameThatMerelyBeginsWithAHyphenIsAFile) {
    expectRun(
        {.args = {"-c1", "./-", "./-x", "./-c9"}, .files = {{"-", TABLE}}},
        {.err = mined("./-", "./-c9"), .files = {{"-", TABLE}, {"-x", RULES}, {"-c9", SETS}}});
}

TEST(Positionals, TwoHyphensAreAFileAndAreReported) {
    expectRun({.args = {"--", "-c1"}, .files = {{"--", TABLE}}},
              {.out = RULES, .err = "Got --\n" + mined("--"), .files = {{"--", TABLE}}});
    expectRun({.args = {"in", "--", "sets", "-c1"}, .files = {{"in", TABLE}}},
              {.err = "Got --\n" + mined("in", "sets"),
               .files = {{"in", TABLE}, {"--", RULES}, {"sets", SETS}}});
    expectRun({.args = {"-c1", "-", "--", "--"}, .input = TABLE},
              {.err = "Got --\nGot --\n" + mined("-", "--"), .files = {{"--", SETS}}});
}

TEST(Positionals, EmptyItemSetNameWritesNone) {
    expectRun({.args = {"-c1", "-", "-", ""}, .input = TABLE}, {.out = RULES, .err = mined("-")});
}

TEST(Positionals, EmptyInputAndOutputNamesAreFilesThatCannotBeOpened) {
    expectRun({.args = {"-c1", "", ""}, .input = TABLE}, {.err = progress({.input = ""})});
}

TEST(Positionals, NameIsToldAsItWasGiven) {
    const tool::Files files = {{"a dir/", ""}, {"a dir/%s\t\xC3\xA9", TABLE}};
    expectRun({.args = {"-c1", "./a dir//%s\t\xC3\xA9"}, .files = files},
              {.out = RULES, .err = mined("./a dir//%s\t\xC3\xA9"), .files = files});
}

}  // namespace
