// Whole runs, with every byte of the output spelled out.

#include <gtest/gtest.h>

#include "cli/support/run_tool.hpp"

namespace {

using tool::expectRun;

const std::string TWO_ROWS = "id\ttime\titem\titem\ne0\t2\tc\td\ne0\t3\ta\tb\n";

const std::string NINE_RULES =
    "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
    "{c,d} => {a,b}\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "{c,d} => a\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "{c,d} => b\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "c => {a,b}\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "c => a\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "c => b\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "d => {a,b}\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "d => a\t1\t1\t1\t1\t1\tinf\t1\tinf\n"
    "d => b\t1\t1\t1\t1\t1\tinf\t1\tinf\n";

const std::string FIFTEEN_SETS =
    "Count\tItem Set\n"
    "1\t{a,b,c,d}\n"
    "1\t{a,b,c}\n"
    "1\t{a,b,d}\n"
    "1\t{a,b}\n"
    "1\t{a,c,d}\n"
    "1\t{a,c}\n"
    "1\t{a,d}\n"
    "1\t{a}\n"
    "1\t{b,c,d}\n"
    "1\t{b,c}\n"
    "1\t{b,d}\n"
    "1\t{b}\n"
    "1\t{c,d}\n"
    "1\t{c}\n"
    "1\t{d}\n";

/// The messages of mining the two rows, after the first line.
const std::string TWO_ROWS_MINED =
    "\t ... calculated 4 frequent item sets of size 1. \n"
    "\t ... calculated 6 frequent item sets of size 2 with 12 proposed rules.\n"
    "\t ... deducing rules of order 1.\n"
    "\t ... mining rules until there are no more frequent item sets.\n"
    "\t ... calculated 4 frequent item sets of size 3 with 20 proposed rules.\n"
    "\t ... deducing rules of order 2.\n"
    "\t ... calculated 1 frequent item sets of size 4 with 9 proposed rules.\n"
    "\t ... deducing rules of order 3.\n"
    "\t ... preparing rules for reporting.\n"
    "\t ... have 9 rules.\n"
    "9\n";

TEST(WholeRun, TwoRowsGiveNineRulesInOrder) {
    expectRun({.args = {"-c", "1"}, .input = TWO_ROWS},
              {.out = NINE_RULES,
               .err = "Read - with 2 transaction(s) over 1 history record(s).\n" + TWO_ROWS_MINED +
                      "\n"});
}

TEST(WholeRun, RulesAndItemSetsGoToNamedFiles) {
    expectRun(
        {.args = {"-c", "1", "in.txt", "rules.txt", "sets.txt"}, .files = {{"in.txt", TWO_ROWS}}},
        {.err = "Read in.txt with 2 transaction(s) over 1 history record(s).\n" + TWO_ROWS_MINED +
                "sets.txt\n",
         .files = {{"in.txt", TWO_ROWS}, {"rules.txt", NINE_RULES}, {"sets.txt", FIFTEEN_SETS}}});
}

TEST(WholeRun, RulesThenItemSetsGoToStandardOutput) {
    expectRun({.args = {"-c", "1", "-", "-", "-"}, .input = TWO_ROWS},
              {.out = NINE_RULES + FIFTEEN_SETS,
               .err = "Read - with 2 transaction(s) over 1 history record(s).\n" + TWO_ROWS_MINED +
                      "-\n"});
}

TEST(WholeRun, WithoutArgumentsReadsAndWritesTheStandardStreamsAndWantsFiveHistories) {
    std::string four = "id\ttime\titem\n";
    for (const char* key : {"e1", "e2", "e3", "e4"})
        four += std::string(key) + "\t1\tab\n" + key + "\t2\tcd\n";
    expectRun({.input = four},
              {.out = "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\t"
                      "Certainty\n",
               .err = "Read - with 8 transaction(s) over 4 history record(s).\n"
                      "\t ... calculated 0 frequent item sets of size 1. \n"
                      "\t ... calculated 0 frequent item sets of size 2 with 0 proposed rules.\n"
                      "\t ... no rules of order 1 found.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 0 rules.\n"
                      "0\n"
                      "\n"});
    expectRun({.input = four + "e5\t1\tab\ne5\t2\tcd\n"},
              {.out = "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\t"
                      "Certainty\n"
                      "ab => cd\t5\t5\t1\t1\t1\tinf\t1\tinf\n",
               .err = "Read - with 10 transaction(s) over 5 history record(s).\n"
                      "\t ... calculated 2 frequent item sets of size 1. \n"
                      "\t ... calculated 1 frequent item sets of size 2 with 2 proposed rules.\n"
                      "\t ... deducing rules of order 1.\n"
                      "\t ... mining rules until there are no more frequent item sets.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 1 rules.\n"
                      "1\n"
                      "\n"});
}

TEST(WholeRun, OrderIsAnnouncedWhenItIsLimited) {
    expectRun({.args = {"-c1", "-o3", "-s2"}, .input = TWO_ROWS},
              {.out = "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\t"
                      "Certainty\n",
               .err = "Read - with 2 transaction(s) over 1 history record(s).\n"
                      "\t ... calculated 4 frequent item sets of size 1. \n"
                      "\t ... calculated 6 frequent item sets of size 2 with 12 proposed rules.\n"
                      "\t ... deducing rules of order 1.\n"
                      "\t ... rules up to order 3 will be mined.\n"
                      "\t ... calculated 4 frequent item sets of size 3 with 20 proposed rules.\n"
                      "\t ... deducing rules of order 2.\n"
                      "\t ... calculated 1 frequent item sets of size 4 with 9 proposed rules.\n"
                      "\t ... deducing rules of order 3.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 0 rules.\n"
                      "0\n"
                      "\n"});
}

}  // namespace
