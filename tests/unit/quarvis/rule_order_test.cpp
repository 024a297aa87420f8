#include <quarvis/implication.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleOrder;
using quarvis::test::setOf;
using quarvis::test::subsetsOf;

const RuleOrder ORDER;

/// The 64 different rules between subsets of three items.
std::vector<Rule> smallRules() {
    const std::vector<ItemSet> sets = subsetsOf({"a", "ab", "\x80"});
    std::vector<Rule> rules;
    for (const ItemSet& antecedent : sets)
        for (const ItemSet& subsequent : sets)
            rules.emplace_back(antecedent, subsequent);
    return rules;
}

TEST(RuleCmp, TheAntecedentsDecideFirst) {
    const Rule first(setOf({"ab"}), Item("zz"));
    const Rule second(setOf({"cd"}), Item("aa"));
    EXPECT_LT(first.cmp(second), 0);
    EXPECT_GT(second.cmp(first), 0);
    EXPECT_TRUE(first < second);
    EXPECT_FALSE(second < first);
}

TEST(RuleCmp, EqualAntecedentsLeaveItToTheSubsequents) {
    const Rule first(setOf({"ab"}), Item("xx"));
    const Rule second(setOf({"ab"}), Item("xxyyy"));
    EXPECT_EQ(first.cmp(second), -3);
    EXPECT_EQ(second.cmp(first), 3);
    EXPECT_EQ(first.cmp(first), 0);
    const Rule longer(setOf({"ab"}), setOf({"xx", "zz"}));
    EXPECT_EQ(longer.cmp(first), -1);
    EXPECT_EQ(first.cmp(longer), 0);
}

TEST(RuleCmp, AnExtendedAntecedentIsLessWhateverTheSubsequents) {
    const Rule extended(setOf({"ab", "cd"}), Item("y"));
    for (const char* subsequent : {"x", "y", "z"})
        EXPECT_EQ(extended.cmp(Rule(setOf({"ab"}), Item(subsequent))), -1) << subsequent;
}

/// A comparison of strings tells no more than a sign on every machine.
TEST(RuleCmp, AnAntecedentThatIsAPrefixLeavesItToTheSubsequents) {
    const Rule extended(setOf({"ab", "cd"}), Item("y"));
    EXPECT_LT(Rule(setOf({"ab"}), Item("x")).cmp(extended), 0);
    EXPECT_EQ(Rule(setOf({"ab"}), Item("y")).cmp(extended), 0);
    EXPECT_GT(Rule(setOf({"ab"}), Item("z")).cmp(extended), 0);
}

TEST(RuleCmp, LessCanHoldInBothDirections) {
    const Rule shorter(setOf({"ab"}), Item("x"));
    const Rule longer(setOf({"ab", "cd"}), Item("y"));
    EXPECT_TRUE(shorter < longer);
    EXPECT_TRUE(longer < shorter);
}

TEST(RuleCmp, IsThatOfTheAntecedentsAndThenOfTheSubsequentsForEveryPair) {
    const std::vector<Rule> rules = smallRules();
    for (const Rule& a : rules)
        for (const Rule& b : rules) {
            const int antecedents = a.antecedent().cmp(b.antecedent());
            EXPECT_EQ(a.cmp(b), antecedents != 0 ? antecedents : a.subsequent().cmp(b.subsequent()))
                << a << " and " << b;
            EXPECT_EQ(a < b, a.cmp(b) < 0) << a << " and " << b;
        }
}

TEST(RuleOrder, IsStrictAndTotal) {
    const std::vector<Rule> rules = smallRules();
    for (std::size_t a = 0; a < rules.size(); ++a)
        for (std::size_t b = 0; b < rules.size(); ++b) {
            const int holding =
                (ORDER(rules[a], rules[b]) ? 1 : 0) + (ORDER(rules[b], rules[a]) ? 1 : 0);
            EXPECT_EQ(holding, a == b ? 0 : 1) << rules[a] << " and " << rules[b];
        }
}

TEST(RuleOrder, IsTransitive) {
    const std::vector<Rule> rules = smallRules();
    std::vector<std::vector<bool>> less;
    for (const Rule& a : rules) {
        less.emplace_back();
        for (const Rule& b : rules)
            less.back().push_back(ORDER(a, b));
    }
    for (std::size_t a = 0; a < rules.size(); ++a)
        for (std::size_t b = 0; b < rules.size(); ++b)
            for (std::size_t c = 0; c < rules.size(); ++c)
                ASSERT_TRUE(less[a][c] || !less[a][b] || !less[b][c])
                    << rules[a] << ", " << rules[b] << " and " << rules[c];
}

TEST(RuleOrder, AgreesWithLessWhereOneDirectionHoldsAndElsePutsTheLongerAntecedentFirst) {
    const std::vector<Rule> rules = smallRules();
    std::size_t both = 0;
    for (std::size_t a = 0; a < rules.size(); ++a)
        for (std::size_t b = 0; b < rules.size(); ++b) {
            const Rule& left = rules[a];
            const Rule& right = rules[b];
            SCOPED_TRACE(left.toString() + " and " + right.toString());
            const bool forth = left < right;
            const bool back = right < left;
            if (forth && back) {
                ++both;
                EXPECT_EQ(ORDER(left, right), left.antecedent().size() > right.antecedent().size());
            } else {
                EXPECT_EQ(ORDER(left, right), forth);
            }
        }
    EXPECT_GT(both, 0U);
}

TEST(RuleOrder, IsThatOfAntecedentsAndThenOfSubsequents) {
    const std::vector<Rule> inOrder = {
        Rule(setOf({"ab", "cd", "ef"}), Item("zz")),
        Rule(setOf({"ab", "cd"}), setOf({"xx", "yy"})),
        Rule(setOf({"ab", "cd"}), Item("xx")),
        Rule(setOf({"ab", "cd"}), Item("yy")),
        Rule(setOf({"ab"}), Item("aa")),
        Rule(setOf({"ab"}), Item("zz")),
        Rule(setOf({"ab"}), ItemSet()),
        Rule(setOf({"b"}), Item("aa")),
        Rule(setOf({"\x80"}), Item("aa")),
        Rule(ItemSet(), Item("aa")),
        Rule(),
    };
    for (std::size_t a = 0; a < inOrder.size(); ++a)
        for (std::size_t b = 0; b < inOrder.size(); ++b)
            EXPECT_EQ(ORDER(inOrder[a], inOrder[b]), a < b) << inOrder[a] << " and " << inOrder[b];
}

TEST(RuleOrder, KeepsEveryRuleOfAMapInWhateverOrderTheyCome) {
    std::vector<Rule> rules = smallRules();
    std::map<Rule, int, RuleOrder> forwards;
    std::map<Rule, int, RuleOrder> backwards;
    for (const Rule& rule : rules)
        forwards[rule] = 1;
    std::reverse(rules.begin(), rules.end());
    for (const Rule& rule : rules)
        backwards[rule] = 1;
    EXPECT_EQ(forwards.size(), 64U);
    ASSERT_EQ(backwards.size(), 64U);
    for (auto f = forwards.begin(), b = backwards.begin(); f != forwards.end(); ++f, ++b)
        EXPECT_EQ(f->first.toString(), b->first.toString());
    for (const Rule& rule : rules)
        EXPECT_EQ(forwards.count(rule), 1U) << rule;
}

}  // namespace
