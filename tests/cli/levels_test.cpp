// The search for frequent item sets, level by level, and where it ends.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::itemSetFile;
using tool::progress;
using tool::rulesFile;

// One history in which every rule counts that can count in a sequence of three transactions.
const std::string SEQUENCE = "h\ne\t1\ta\ne\t2\tb\ne\t3\tc\n";
const std::string SEQUENCE_RULES = rulesFile({
    "{a,b} => c\t1\t1\t1\t1\t1\tinf\t1\tinf",
    "a => b\t1\t1\t1\t1\t1\tinf\t1\tinf",
    "a => c\t1\t1\t1\t1\t1\tinf\t1\tinf",
    "b => c\t1\t1\t1\t1\t1\tinf\t1\tinf",
});

// Two histories: {a,b} is in one, {b,c} in the other, and {a,c} in neither.
const std::string TWO_PAIRS = "h\ne1\t1\ta\ne1\t2\tb\ne2\t1\tb\ne2\t2\tc\n";
const std::string TWO_PAIRS_RULES = rulesFile({
    "a => b\t1\t1\t0.5\t1\t1\tinf\t0.5\t1",
    "b => c\t1\t1\t0.5\t0.5\t1\t1\t1\tinf",
});

TEST(Levels, EmptyTransactionSet) {
    expectRun({.args = {"-c0", "-", "-", "sets"}, .input = "h\n"},
              {.out = rulesFile({}),
               .err = "Read - with 0 transaction(s) over 0 history record(s).\n"
                      "\t ... calculated 0 frequent item sets of size 1. \n"
                      "\t ... calculated 0 frequent item sets of size 2 with 0 proposed rules.\n"
                      "\t ... no rules of order 1 found.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 0 rules.\n"
                      "0\n"
                      "sets\n",
               .files = {{"sets", itemSetFile({})}}});
}

TEST(Levels, WithoutAPairTheFrequentItemsRemain) {
    for (const char* order : {"-o0", "-o1", "-o2", "-o7"})
        expectRun({.args = {"-c1", order, "-", "-", "sets"}, .input = "h\ne1\t1\ta\ne2\t1\tb\n"},
                  {.out = rulesFile({}),
                   .err = progress(
                       {.transactions = 2, .histories = 2, .levels = {2, 0}, .itemSets = "sets"}),
                   .files = {{"sets", itemSetFile({"1\t{a}", "1\t{b}"})}}});
}

TEST(Levels, MinimumCountOfZeroKeepsSetsThatNoHistoryHolds) {
    expectRun({.args = {"-c0", "-", "-", "sets"},
               .input = "h\ne1\t1\ta\ne2\t1\tb\ne3\t1\tc\ne4\t1\td\ne5\t1\td\n"},
              {.out = rulesFile({}),
               .err = progress(
                   {.transactions = 5, .histories = 5, .levels = {4, 6, 4, 1}, .itemSets = "sets"}),
               .files = {{"sets", itemSetFile({"0\t{a,b,c,d}", "0\t{a,b,c}", "0\t{a,b,d}",
                                               "0\t{a,b}", "0\t{a,c,d}", "0\t{a,c}", "0\t{a,d}",
                                               "1\t{a}", "0\t{b,c,d}", "0\t{b,c}", "0\t{b,d}",
                                               "1\t{b}", "0\t{c,d}", "1\t{c}", "2\t{d}"})}}});
}

TEST(Levels, MinimumCountAboveTheHistoriesEmptiesTheFirst) {
    expectRun({.args = {"-c2"}, .input = SEQUENCE},
              {.out = rulesFile({}), .err = progress({.transactions = 3, .histories = 1})});
}

TEST(Levels, ItemInFiveTransactionsOfOneHistoryCountsOne) {
    const std::string table = "h\ne\t1\ta\ne\t2\ta\ne\t3\ta\ne\t4\ta\ne\t5\ta\n";
    expectRun(
        {.args = {"-c1", "-", "-", "sets"}, .input = table},
        {.out = rulesFile({}),
         .err = progress({.transactions = 5, .histories = 1, .levels = {1, 0}, .itemSets = "sets"}),
         .files = {{"sets", itemSetFile({"1\t{a}"})}}});
    expectRun({.args = {"-c2"}, .input = table},
              {.out = rulesFile({}), .err = progress({.transactions = 5, .histories = 1})});
}

TEST(Levels, OrderOneMinesPairsAndAnnouncesNoOrder) {
    expectRun({.args = {"-c1", "-o1"}, .input = SEQUENCE},
              {.out = rulesFile({"a => b\t1\t1\t1\t1\t1\tinf\t1\tinf",
                                 "a => c\t1\t1\t1\t1\t1\tinf\t1\tinf",
                                 "b => c\t1\t1\t1\t1\t1\tinf\t1\tinf"}),
               .err = "Read - with 3 transaction(s) over 1 history record(s).\n"
                      "\t ... calculated 3 frequent item sets of size 1. \n"
                      "\t ... calculated 3 frequent item sets of size 2 with 6 proposed rules.\n"
                      "\t ... deducing rules of order 1.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 3 rules.\n"
                      "3\n"
                      "\n"});
}

TEST(Levels, OrderTwoMinesTriples) {
    expectRun(
        {.args = {"-c1", "-o2"}, .input = SEQUENCE},
        {.out = SEQUENCE_RULES,
         .err = progress(
             {.transactions = 3, .histories = 1, .levels = {3, 3, 1}, .maxOrder = 2, .rules = 4})});
}

TEST(Levels, OrderAboveTheDataTriesEverySize) {
    expectRun({.args = {"-c1", "-o5"}, .input = SEQUENCE},
              {.out = SEQUENCE_RULES,
               .err = "Read - with 3 transaction(s) over 1 history record(s).\n"
                      "\t ... calculated 3 frequent item sets of size 1. \n"
                      "\t ... calculated 3 frequent item sets of size 2 with 6 proposed rules.\n"
                      "\t ... deducing rules of order 1.\n"
                      "\t ... rules up to order 5 will be mined.\n"
                      "\t ... calculated 1 frequent item sets of size 3 with 5 proposed rules.\n"
                      "\t ... deducing rules of order 2.\n"
                      "\t ... calculated 0 frequent item sets of size 4 with 0 proposed rules.\n"
                      "\t ... deducing rules of order 3.\n"
                      "\t ... calculated 0 frequent item sets of size 5 with 0 proposed rules.\n"
                      "\t ... deducing rules of order 4.\n"
                      "\t ... calculated 0 frequent item sets of size 6 with 0 proposed rules.\n"
                      "\t ... deducing rules of order 5.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 4 rules.\n"
                      "4\n"
                      "\n"});
}

TEST(Levels, OrderFarAboveTheDataTriesEverySize) {
    std::vector<std::size_t> levels = {3, 3, 1};
    levels.resize(1001);
    expectRun(
        {.args = {"-c1", "-o1000"}, .input = SEQUENCE},
        {.out = SEQUENCE_RULES,
         .err = progress(
             {.transactions = 3, .histories = 1, .levels = levels, .maxOrder = 1000, .rules = 4})});
}

TEST(Levels, WithoutAnOrderTwoSetsEndTheSearch) {
    expectRun({.args = {"-c1"}, .input = TWO_PAIRS},
              {.out = TWO_PAIRS_RULES,
               .err = progress({.transactions = 4, .histories = 2, .levels = {3, 2}, .rules = 2})});
}

TEST(Levels, WithAnOrderTwoSetsAreJoined) {
    expectRun(
        {.args = {"-c1", "-o2"}, .input = TWO_PAIRS},
        {.out = TWO_PAIRS_RULES,
         .err = progress(
             {.transactions = 4, .histories = 2, .levels = {3, 2, 0}, .maxOrder = 2, .rules = 2})});
}

TEST(Levels, WithoutAnOrderThreeSetsAreJoined) {
    expectRun(
        {.args = {"-c1"}, .input = SEQUENCE},
        {.out = SEQUENCE_RULES,
         .err = progress({.transactions = 3, .histories = 1, .levels = {3, 3, 1}, .rules = 4})});
    expectRun({.args = {"-c1"}, .input = "h\ne1\t1\ta\tb\ne2\t1\ta\tc\ne3\t1\tb\tc\n"},
              {.out = rulesFile({}),
               .err = progress({.transactions = 3, .histories = 3, .levels = {3, 3, 0}})});
}

TEST(Levels, ProposedRulesGrowWithTheSize) {
    expectRun({.args = {"-c1"}, .input = "h\ne\t1\ta\tb\tc\td\te\n"},
              {.out = rulesFile({}),
               .err = "Read - with 1 transaction(s) over 1 history record(s).\n"
                      "\t ... calculated 5 frequent item sets of size 1. \n"
                      "\t ... calculated 10 frequent item sets of size 2 with 20 proposed rules.\n"
                      "\t ... deducing rules of order 1.\n"
                      "\t ... mining rules until there are no more frequent item sets.\n"
                      "\t ... calculated 10 frequent item sets of size 3 with 50 proposed rules.\n"
                      "\t ... deducing rules of order 2.\n"
                      "\t ... calculated 5 frequent item sets of size 4 with 45 proposed rules.\n"
                      "\t ... deducing rules of order 3.\n"
                      "\t ... calculated 1 frequent item sets of size 5 with 14 proposed rules.\n"
                      "\t ... deducing rules of order 4.\n"
                      "\t ... preparing rules for reporting.\n"
                      "\t ... have 0 rules.\n"
                      "0\n"
                      "\n"});
}

TEST(Levels, CountsAreHistoriesThatHoldTheSetAtSomeTimeOrOther) {
    // The items of a set need not be in one transaction. e3 lacks c, and e4 lacks a and b.
    expectRun({.args = {"-c2", "-s2", "-", "-", "sets"},
               .input = "h\ne1\t1\ta\ne1\t9\tb\tc\ne2\t3\tc\tb\ta\ne3\t1\tb\ne3\t2\ta\n"
                        "e4\t1\tc\tx\n"},
              {.out = rulesFile({}),
               .err = progress(
                   {.transactions = 6, .histories = 4, .levels = {3, 3, 1}, .itemSets = "sets"}),
               .files = {{"sets", itemSetFile({"2\t{a,b,c}", "3\t{a,b}", "2\t{a,c}", "3\t{a}",
                                               "2\t{b,c}", "3\t{b}", "3\t{c}"})}}});
}

}  // namespace
