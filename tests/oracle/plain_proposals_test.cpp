#include "plain_proposals.hpp"

#include <initializer_list>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "table.hpp"

namespace quarvis::rule::plain {
namespace {

using mining_tests::itemsOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> listed(const RuleProposals& proposals) {
    std::vector<std::string> rules;
    for (const auto& [antecedent, subsequents] : proposals)
        for (const ItemSet& subsequent : subsequents)
            rules.push_back(Rule(antecedent, subsequent).toString());
    return rules;
}

RuleProposals proposalsOf(std::initializer_list<const char*> sets) {
    RuleProposals proposals;
    for (const char* items : sets)
        proposeRules(itemsOf(items), proposals);
    return proposals;
}

TEST(ProposeRules, APairImpliesBothWays) {
    EXPECT_THAT(listed(proposalsOf({"a,b"})), ElementsAre("a => b", "b => a"));
}

TEST(ProposeRules, OfThreeItemsTheOuterTwoNeverImplyTheMiddleOne) {
    EXPECT_THAT(listed(proposalsOf({"p,q,r"})),
                ElementsAre("{p,q} => r", "p => {q,r}", "{q,r} => p", "q => {p,r}", "r => {p,q}"));
}

TEST(ProposeRules, OfFourItemsEveryRunImpliesTheRest) {
    EXPECT_THAT(listed(proposalsOf({"a,b,c,d"})),
                ElementsAre("{a,b,c} => d", "{a,b} => {c,d}", "a => {b,c,d}", "{b,c,d} => a",
                            "{b,c} => {a,d}", "b => {a,c,d}", "{c,d} => {a,b}", "c => {a,b,d}",
                            "d => {a,b,c}"));
}

TEST(ProposeRules, OneItemOrNoneImpliesNothing) {
    EXPECT_THAT(proposalsOf({"a"}), IsEmpty());
    EXPECT_THAT(proposalsOf({""}), IsEmpty());
}

TEST(ProposeRules, RunsAreOfTheItemsInByteOrder) {
    EXPECT_THAT(
        listed(proposalsOf({"b,B,aa"})),
        ElementsAre("{B,aa} => b", "B => {aa,b}", "{aa,b} => B", "aa => {B,b}", "b => {B,aa}"));
}

TEST(ProposeRules, SetsWithACommonAntecedentAddTheirSubsequents) {
    const RuleProposals proposals = proposalsOf({"a,c", "a,b"});
    EXPECT_THAT(listed(proposals), ElementsAre("a => b", "a => c", "b => a", "c => a"));
    EXPECT_THAT(proposals, testing::SizeIs(3));
}

TEST(ProposeRules, TheSameSetAgainAddsNothing) {
    EXPECT_THAT(listed(proposalsOf({"a,b", "a,b"})), ElementsAre("a => b", "b => a"));
}

TEST(ProposeRules, OfALevelAreThoseOfItsSetsWhateverTheirCounts) {
    ItemSetSupports level;
    level.add(itemsOf("a,b"), 0);
    level.add(itemsOf("b,c"), 7);
    EXPECT_THAT(listed(proposeRules(level)), ElementsAre("a => b", "b => a", "b => c", "c => b"));
}

TEST(ProposeRules, OfAnEmptyLevelAreNone) {
    EXPECT_THAT(proposeRules(ItemSetSupports()), IsEmpty());
}

TEST(ProposalCount, OfOneThreeItemSetIsFive) {
    EXPECT_EQ(5U, count(proposalsOf({"p,q,r"})));
}

TEST(ProposalCount, OfOneSetGrowsWithTheNumberOfItsRuns) {
    const std::vector<std::string> names = {"a", "b", "c", "d", "e", "f", "g", "h"};
    ItemSet items;
    for (std::size_t k = 1; k <= names.size(); ++k) {
        items.add(names[k - 1]);
        RuleProposals proposals;
        proposeRules(items, proposals);
        EXPECT_EQ(k * (k + 1) / 2 - 1, count(proposals)) << k << " items";
    }
}

TEST(ProposalCount, AddsUpSubsequentsNotAntecedents) {
    EXPECT_EQ(4U, count(proposalsOf({"a,b", "a,c"})));
}

TEST(ProposalCount, OfNothingIsZero) {
    EXPECT_EQ(0U, count(RuleProposals()));
}

}  // namespace
}  // namespace quarvis::rule::plain
