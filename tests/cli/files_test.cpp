// Files that do not exist, cannot be written, or are not regular files.

#include <string>

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

TEST(InputFile, MissingReadsAsEmpty) {
    expectRun({.args = {"-c1", "missing"}},
              {.out = rulesFile({}), .err = progress({.input = "missing"})});
    expectRun({.args = {"-c1", "no/such/dir", "out", "sets"}},
              {.err = progress({.input = "no/such/dir", .itemSets = "sets"}),
               .files = {{"out", rulesFile({})}, {"sets", itemSetFile({})}}});
}

TEST(InputFile, DirectoryReadsAsEmpty) {
    const tool::Files files = {{"dir/", ""}, {"dir/in", TABLE}};
    expectRun({.args = {"-c1", "dir"}, .files = files},
              {.out = rulesFile({}), .err = progress({.input = "dir"}), .files = files});
    expectRun({.args = {"-c1", "."}}, {.out = rulesFile({}), .err = progress({.input = "."})});
}

TEST(InputFile, EmptyReadsAsEmpty) {
    expectRun({.args = {"-c1", "in"}, .files = {{"in", ""}}},
              {.out = rulesFile({}), .err = progress({.input = "in"}), .files = {{"in", ""}}});
    expectRun({.args = {"-c1"}}, {.out = rulesFile({}), .err = progress({})});
}

TEST(InputFile, HeaderAloneReadsAsEmpty) {
    for (const char* header : {"\n", "id\ttime\titem\n", "id\ttime\titem", "h\r\n", "\"h\n"})
        expectRun({.args = {"-c1"}, .input = header}, {.out = rulesFile({}), .err = progress({})});
}

TEST(OutputFile, MissingDirectoryWritesNothingAndRaisesNothing) {
    expectRun({.args = {"-c1", "-", "no/rules"}, .input = TABLE}, {.err = mined("-")});
    expectRun({.args = {"-c1", "-", "-", "no/sets"}, .input = TABLE},
              {.out = RULES, .err = mined("-", "no/sets")});
    expectRun({.args = {"-c1", "-", "no/rules", "no/sets"}, .input = TABLE},
              {.err = mined("-", "no/sets")});
}

TEST(OutputFile, DirectoryIsNotWritten) {
    expectRun({.args = {"-c1", "-", "dir", "dir"}, .input = TABLE, .files = {{"dir/", ""}}},
              {.err = mined("-", "dir"), .files = {{"dir/", ""}}});
}

TEST(OutputFile, OldContentIsReplaced) {
    const std::string old(1000, 'x');
    expectRun({.args = {"-c1", "-", "out", "sets"},
               .input = TABLE,
               .files = {{"out", old}, {"sets", old}}},
              {.err = mined("-", "sets"), .files = {{"out", RULES}, {"sets", SETS}}});
}

TEST(OutputFile, MayBeTheInput) {
    expectRun({.args = {"-c1", "table", "table"}, .files = {{"table", TABLE}}},
              {.err = mined("table"), .files = {{"table", RULES}}});
}

TEST(OutputFile, ItemSetsReplaceRulesOfTheSameName) {
    expectRun({.args = {"-c1", "-", "both", "both"}, .input = TABLE},
              {.err = mined("-", "both"), .files = {{"both", SETS}}});
}

TEST(OutputFile, NoRulesLeavesTheHeaderAlone) {
    expectRun({.args = {"-c1", "-s2", "-", "out"}, .input = TABLE},
              {.err = progress({.transactions = 2, .histories = 1, .levels = {2, 1}}),
               .files = {{"out", rulesFile({})}}});
}

}  // namespace
