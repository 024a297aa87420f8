// Which rules fire, that is, count, in one history, with and without a window.

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::progress;
using tool::rulesFile;

/// The transactions of one history: a time, and items of one letter each.
using History = std::vector<std::pair<std::string, std::string>>;
using Rules = std::vector<std::string>;

std::string table(const History& history) {
    std::string text = "h\n";
    for (const auto& [time, items] : history) {
        text += "e\t" + time;
        for (const char item : items)
            text += std::string("\t") + item;
        text += "\n";
    }
    return text;
}

/// Expects these rules from mining the history with the window; "0" means none. Since there is only
/// one history, each measure of a rule has its extreme value.
void expectFires(const History& history, const std::string& window, const Rules& rules,
                 const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    std::set<std::string> times;
    std::set<char> items;
    for (const auto& [time, letters] : history) {
        times.insert(time);
        items.insert(letters.begin(), letters.end());
    }
    const std::vector<std::vector<std::size_t>> levels = {
        {0, 0}, {1, 0}, {2, 1}, {3, 3, 1}, {4, 6, 4, 1}};
    Rules rows;
    for (const std::string& rule : rules)
        rows.push_back(rule + "\t1\t1\t1\t1\t1\tinf\t1\tinf");
    expectRun({.args = {"-c1", "-w", window}, .input = table(history)},
              {.out = rulesFile(rows),
               .err = progress({.transactions = times.size(),
                                .histories = 1,
                                .levels = levels.at(items.size()),
                                .rules = rules.size()})},
              file, line);
}

TEST(RuleFires, WhenTheSubsequentFollowsTheAntecedent) {
    expectFires({{"1", "a"}, {"2", "b"}}, "0", {"a => b"});
    expectFires({{"1", "b"}, {"2", "a"}}, "0", {"b => a"});
    expectFires({{"0", "a"}, {"4294967295", "b"}}, "0", {"a => b"});
}

TEST(RuleFires, ByTheOrderOfTimesNotOfRows) {
    expectFires({{"5", "b"}, {"1", "a"}}, "0", {"a => b"});
    expectFires({{"9", "a"}, {"10", "b"}}, "0", {"a => b"});
    expectFires({{"100", "a"}, {"20", "b"}}, "0", {"b => a"});
}

TEST(RuleFires, NotWithinOneTransaction) {
    expectFires({{"1", "ab"}}, "0", {});
    expectFires({{"1", "a"}, {"1", "b"}}, "0", {});
    expectFires({{"1", "ab"}}, "9", {});
}

TEST(RuleFires, OnceWhenTheSubsequentIsRepeated) {
    expectFires({{"1", "a"}, {"2", "b"}, {"3", "b"}}, "0", {"a => b"});
}

TEST(RuleFires, OnceInAHistoryWhereItQualifiesTwice) {
    expectFires({{"1", "a"}, {"2", "b"}, {"10", "a"}, {"11", "b"}}, "1", {"a => b"});
    expectFires({{"1", "a"}, {"2", "b"}, {"3", "a"}, {"5", "b"}, {"7", "a"}, {"9", "b"}}, "2",
                {"a => b", "b => a"});
}

TEST(RuleFires, OnlyWhenTheSubsequentIsNew) {
    expectFires({{"1", "b"}, {"2", "a"}, {"3", "b"}}, "0", {"b => a"});
    expectFires({{"1", "b"}, {"2", "a"}, {"3", "b"}}, "2", {"b => a"});
    expectFires({{"1", "b"}, {"2", "a"}, {"3", "b"}}, "1", {"a => b", "b => a"});
}

TEST(RuleFires, NotWhereItsAntecedentIsComplete) {
    expectFires({{"1", "a"}, {"2", "ab"}}, "0", {});
    expectFires({{"1", "a"}, {"2", "ab"}, {"9", "a"}, {"10", "b"}}, "1", {"a => b"});
}

TEST(RuleFires, WherePartOfItsAntecedentIsRepeated) {
    expectFires({{"1", "ab"}, {"2", "bc"}}, "0", {"{a,b} => c", "a => c"});
}

TEST(RuleFires, OnlyWhenEverySubsequentItemIsNew) {
    expectFires({{"1", "ab"}, {"2", "bc"}}, "1", {"{a,b} => c", "a => c"});
    expectFires({{"1", "ab"}, {"2", "a"}, {"3", "bc"}}, "1", {"a => {b,c}", "a => b", "a => c"});
}

TEST(RuleFires, WithItsAntecedentGatheredFromSeveralTransactions) {
    expectFires({{"1", "a"}, {"2", "b"}, {"3", "c"}}, "0",
                {"{a,b} => c", "a => b", "a => c", "b => c"});
}

TEST(RuleFires, OnlyForARunOfNeighboursAsItsAntecedent) {
    expectFires({{"1", "ac"}, {"2", "b"}}, "0", {"a => b", "c => b"});
    expectFires({{"1", "b"}, {"2", "ac"}}, "0", {"b => {a,c}", "b => a", "b => c"});
    expectFires({{"1", "bc"}, {"2", "ad"}}, "0",
                {"{b,c} => {a,d}", "{b,c} => a", "{b,c} => d", "b => {a,d}", "b => a", "b => d",
                 "c => {a,d}", "c => a", "c => d"});
    expectFires({{"1", "ad"}, {"2", "bc"}}, "0",
                {"a => {b,c}", "a => b", "a => c", "d => {b,c}", "d => b", "d => c"});
}

TEST(RuleFires, AcrossATransactionWithoutItems) {
    expectFires({{"1", "a"}, {"2", ""}, {"3", "b"}}, "0", {"a => b"});
    expectFires({{"1", "a"}, {"2", ""}, {"3", "b"}}, "1", {});
}

TEST(Window, AgeOfFourNeedsAWindowOfFour) {
    const History history = {{"1", "a"}, {"5", "b"}};
    expectFires(history, "1", {});
    expectFires(history, "3", {});
    expectFires(history, "4", {"a => b"});
    expectFires(history, "5", {"a => b"});
}

TEST(Window, EndsAtItsGreatestValue) {
    const History history = {{"0", "a"}, {"4294967295", "b"}};
    expectFires(history, "4294967294", {});
    expectFires(history, "4294967295", {"a => b"});
    expectRun({.args = {"-c1", "-w-2"}, .input = table(history)},
              {.out = rulesFile({}),
               .err = progress({.transactions = 2, .histories = 1, .levels = {2, 1}})});
    expectRun({.args = {"-c1", "-w-1"}, .input = table(history)},
              {.out = rulesFile({"a => b\t1\t1\t1\t1\t1\tinf\t1\tinf"}),
               .err = progress({.transactions = 2, .histories = 1, .levels = {2, 1}, .rules = 1})});
}

TEST(Window, IsCountedFromTheLastSighting) {
    const History history = {{"1", "a"}, {"3", "a"}, {"5", "b"}};
    expectFires(history, "1", {});
    expectFires(history, "2", {"a => b"});
}

TEST(Window, ForgetsItemsOneByOne) {
    const History history = {{"1", "a"}, {"3", "b"}, {"5", "c"}};
    expectFires(history, "1", {});
    expectFires(history, "2", {"a => b", "b => c"});
    expectFires(history, "3", {"a => b", "b => c"});
    expectFires(history, "4", {"{a,b} => c", "a => b", "a => c", "b => c"});
}

TEST(Window, ForgetsSeveralItemsAtOnce) {
    expectFires({{"1", "abc"}, {"2", "c"}, {"4", "d"}}, "2", {"c => d"});
    expectFires({{"1", "abc"}, {"2", "a"}, {"4", "d"}}, "2", {"a => d"});
    expectFires({{"1", "abc"}, {"2", "b"}, {"4", "d"}}, "2", {"b => d"});
    expectFires({{"1", "abc"}, {"4", "d"}}, "2", {});
}

TEST(Window, ForgottenSubsequentIsNewAgain) {
    expectFires({{"1", "b"}, {"3", "a"}, {"4", "b"}}, "3", {"b => a"});
    expectFires({{"1", "b"}, {"3", "a"}, {"4", "b"}}, "2", {"a => b", "b => a"});
}

TEST(RuleCount, IsANumberOfHistories) {
    expectRun({.args = {"-c1"}, .input = "h\ne1\t1\ta\ne1\t2\tb\ne2\t5\ta\ne2\t9\tb\n"},
              {.out = rulesFile({"a => b\t2\t2\t1\t1\t1\tinf\t1\tinf"}),
               .err = progress({.transactions = 4, .histories = 2, .levels = {2, 1}, .rules = 1})});
}

TEST(RuleCount, IsWindowedWhileTheItemSetCountIsNot) {
    expectRun({.args = {"-c1", "-w3"}, .input = "h\ne1\t1\ta\ne1\t2\tb\ne2\t5\ta\ne2\t9\tb\n"},
              {.out = rulesFile({"a => b\t1\t2\t0.5\t1\t1\tinf\t1\tinf"}),
               .err = progress({.transactions = 4, .histories = 2, .levels = {2, 1}, .rules = 1})});
}

TEST(RuleCount, StartsAfreshInEveryHistory) {
    // The second history has b without a before it.
    expectRun({.args = {"-c1"}, .input = "h\ne1\t1\ta\ne1\t2\tb\ne2\t3\tb\n"},
              {.out = rulesFile({"a => b\t1\t1\t0.5\t1\t1\tinf\t0.5\t1"}),
               .err = progress({.transactions = 3, .histories = 2, .levels = {2, 1}, .rules = 1})});
}

TEST(RuleCount, BothDirectionsAreCountedApart) {
    expectRun({.args = {"-c1"},
               .input = "h\ne1\t1\ta\ne1\t2\tb\ne2\t1\tb\ne2\t2\ta\ne3\t1\ta\ne3\t2\tb\n"},
              {.out = rulesFile({"a => b\t2\t3\t0.666667\t1\t1\tinf\t1\tinf",
                                 "b => a\t1\t3\t0.333333\t1\t1\tinf\t1\tinf"}),
               .err = progress({.transactions = 6, .histories = 3, .levels = {2, 1}, .rules = 2})});
}

}  // namespace
