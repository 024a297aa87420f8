// The text of the rules file and of the item-set file: sides, order, numbers, and items that would
// need quoting.

#include <string>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::itemSetFile;
using tool::progress;
using tool::rulesFile;

const std::string AT_BEST = "\t1\t1\t1\t1\t1\tinf\t1\tinf";

std::string minedOneHistory(std::size_t rules, const std::vector<std::size_t>& levels,
                            const std::string& itemSets = {}) {
    return progress({.transactions = 2,
                     .histories = 1,
                     .levels = levels,
                     .rules = rules,
                     .itemSets = itemSets});
}

TEST(RulesFile, SideOfOneItemIsBareAndOfSeveralBraced) {
    expectRun({.args = {"-c1"}, .input = "h\ne\t1\tbread\tmilk\ne\t2\tsalt\tmilk\n"},
              {.out = rulesFile({"{bread,milk} => salt" + AT_BEST, "bread => salt" + AT_BEST}),
               .err = minedOneHistory(2, {3, 3, 1})});
}

TEST(RulesFile, RuleOfEveryMeasure) {
    // Of eight histories four have bread and milk. Three of these also have salt, but only two of
    // them later. Five histories have salt.
    const std::string table =
        "h\n"
        "e1\t1\tbread\tmilk\ne1\t2\tsalt\n"
        "e2\t1\tbread\tmilk\ne2\t2\tsalt\n"
        "e3\t1\tbread\tmilk\tsalt\n"
        "e4\t1\tbread\tmilk\n"
        "e5\t1\tsalt\n"
        "e6\t1\tsalt\n"
        "e7\t1\n"
        "e8\t1\n";
    expectRun({.args = {"-c1", "-", "-", "-"}, .input = table},
              {.out = rulesFile({
                          "{bread,milk} => salt\t2\t3\t0.25\t0.75\t1.2\t1.5\t0.6\t1.5",
                          "bread => salt\t2\t3\t0.25\t0.75\t1.2\t1.5\t0.6\t1.5",
                          "milk => salt\t2\t3\t0.25\t0.75\t1.2\t1.5\t0.6\t1.5",
                      }) +
                      itemSetFile({"3\t{bread,milk,salt}", "4\t{bread,milk}", "3\t{bread,salt}",
                                   "4\t{bread}", "3\t{milk,salt}", "4\t{milk}", "5\t{salt}"}),
               .err = progress({.transactions = 10,
                                .histories = 8,
                                .levels = {3, 3, 1},
                                .rules = 3,
                                .itemSets = "-"})});
}

TEST(RulesFile, LongerSideComesBeforeItsBeginning) {
    expectRun({.args = {"-c1"}, .input = "h\ne\t1\tab\tb\ne\t2\tcd\tc\n"},
              {.out = rulesFile({
                   "{ab,b} => {c,cd}" + AT_BEST,
                   "{ab,b} => c" + AT_BEST,
                   "{ab,b} => cd" + AT_BEST,
                   "ab => {c,cd}" + AT_BEST,
                   "ab => c" + AT_BEST,
                   "ab => cd" + AT_BEST,
                   "b => {c,cd}" + AT_BEST,
                   "b => c" + AT_BEST,
                   "b => cd" + AT_BEST,
               }),
               .err = minedOneHistory(9, {4, 6, 4, 1})});
}

TEST(RulesFile, ItemsAreOrderedByTheirBytes) {
    expectRun(
        {.args = {"-c1", "-o1"}, .input = "h\ne\t1\tB\ta\t10\t9\tz\t\xC3\xA9\ne\t2\t~\n"},
        {.out = rulesFile({"10 => ~" + AT_BEST, "9 => ~" + AT_BEST, "B => ~" + AT_BEST,
                           "a => ~" + AT_BEST, "z => ~" + AT_BEST, "\xC3\xA9 => ~" + AT_BEST}),
         .err = progress(
             {.transactions = 2, .histories = 1, .levels = {7, 21}, .maxOrder = 1, .rules = 6})});
}

TEST(RulesFile, NothingIsQuotedOrEscaped) {
    expectRun(
        {.args = {"-c1", "-", "-", "-"},
         .input = "h\ne\t1\t\"a\tb\"\tc,d\ne\t2\tx\"y\t\"p\nq => {r}\"\n"},
        {.out = rulesFile({
                    "{a\tb,c,d} => {p\nq => {r},x\"y}" + AT_BEST,
                    "{a\tb,c,d} => p\nq => {r}" + AT_BEST,
                    "{a\tb,c,d} => x\"y" + AT_BEST,
                    "a\tb => {p\nq => {r},x\"y}" + AT_BEST,
                    "a\tb => p\nq => {r}" + AT_BEST,
                    "a\tb => x\"y" + AT_BEST,
                    "c,d => {p\nq => {r},x\"y}" + AT_BEST,
                    "c,d => p\nq => {r}" + AT_BEST,
                    "c,d => x\"y" + AT_BEST,
                }) +
                itemSetFile({"1\t{a\tb,c,d,p\nq => {r},x\"y}", "1\t{a\tb,c,d,p\nq => {r}}",
                             "1\t{a\tb,c,d,x\"y}", "1\t{a\tb,c,d}", "1\t{a\tb,p\nq => {r},x\"y}",
                             "1\t{a\tb,p\nq => {r}}", "1\t{a\tb,x\"y}", "1\t{a\tb}",
                             "1\t{c,d,p\nq => {r},x\"y}", "1\t{c,d,p\nq => {r}}", "1\t{c,d,x\"y}",
                             "1\t{c,d}", "1\t{p\nq => {r},x\"y}", "1\t{p\nq => {r}}", "1\t{x\"y}"}),
         .err = minedOneHistory(9, {4, 6, 4, 1}, "-")});
}

TEST(RulesFile, SixSignificantDigits) {
    // One of 16384 histories has a and then b: support 2^-14, lift 2^14.
    std::string table = "h\ne\t1\ta\ne\t2\tb\n";
    for (int i = 1; i < 16384; ++i)
        table += std::to_string(i) + "\t1\n";
    expectRun({.args = {"-c1"}, .input = table},
              {.out = rulesFile({"a => b\t1\t1\t6.10352e-05\t1\t16384\tinf\t1\tinf"}),
               .err = progress(
                   {.transactions = 16385, .histories = 16384, .levels = {2, 1}, .rules = 1})});
}

TEST(ItemSetFile, CountThenBracedSet) {
    std::string table = "h\n";
    for (int i = 0; i < 7; ++i)
        table += std::to_string(i) + "\t1\tmilk\n";
    expectRun(
        {.args = {"-", "-", "sets"}, .input = table},
        {.out = rulesFile({}),
         .err = progress({.transactions = 7, .histories = 7, .levels = {1, 0}, .itemSets = "sets"}),
         .files = {{"sets", itemSetFile({"7\t{milk}"})}}});
}

TEST(ItemSetFile, LongerSetComesBeforeItsBeginning) {
    expectRun(
        {.args = {"-c1", "-", "-", "sets"}, .input = "h\ne1\t1\tab\tcd\ne2\t1\tb\n"},
        {.out = rulesFile({}),
         .err = progress({.transactions = 2, .histories = 2, .levels = {3, 1}, .itemSets = "sets"}),
         .files = {{"sets", itemSetFile({"1\t{ab,cd}", "1\t{ab}", "1\t{b}", "1\t{cd}"})}}});
}

TEST(ItemSetFile, ThresholdsOfRulesDoNotApply) {
    for (const char* threshold : {"-s2", "-C2", "-l9", "-V0", "-w1"})
        expectRun({.args = {"-c1", threshold, "-", "-", "-"}, .input = "h\ne\t1\ta\ne\t9\tb\n"},
                  {.out = rulesFile({}) + itemSetFile({"1\t{a,b}", "1\t{a}", "1\t{b}"}),
                   .err = minedOneHistory(0, {2, 1}, "-")});
}

}  // namespace
