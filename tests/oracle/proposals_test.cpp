#include "oracle/proposals.hpp"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// The proposed rules of the first items of the alphabet.
std::vector<std::string> rulesOf(std::size_t items) {
    NumberedItems set;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < items; ++i) {
        set.push_back(static_cast<ItemNumber>(i));
        names.emplace_back(1, static_cast<char>('a' + i));
    }
    std::vector<std::string> rules;
    for (const Split split : proposedSplits(items))
        rules.push_back(ruleText(antecedentOf(split, set), subsequentOf(split, set), names));
    return rules;
}

TEST(ProposedSplits, APairImpliesBothWays) {
    EXPECT_THAT(rulesOf(2), UnorderedElementsAre("a => b", "b => a"));
}

TEST(ProposedSplits, OfThreeItemsTheOuterTwoNeverImplyTheMiddleOne) {
    EXPECT_THAT(rulesOf(3), UnorderedElementsAre("{a,b} => c", "a => {b,c}", "{b,c} => a",
                                                 "b => {a,c}", "c => {a,b}"));
}

TEST(ProposedSplits, OfFourItemsEveryRunImpliesTheRest) {
    EXPECT_THAT(rulesOf(4), UnorderedElementsAre("{a,b,c} => d", "{a,b} => {c,d}", "a => {b,c,d}",
                                                 "{b,c,d} => a", "{b,c} => {a,d}", "b => {a,c,d}",
                                                 "{c,d} => {a,b}", "c => {a,b,d}", "d => {a,b,c}"));
}

TEST(ProposedSplits, OneItemOrNoneImpliesNothing) {
    EXPECT_THAT(proposedSplits(0), IsEmpty());
    EXPECT_THAT(proposedSplits(1), IsEmpty());
}

TEST(ProposedSplits, AreAsManyAsThereAreRuns) {
    for (std::size_t k = 1; k < 64; ++k)
        EXPECT_EQ(k * (k + 1) / 2 - 1, proposedSplits(k).size()) << k << " items";
    EXPECT_THROW(proposedSplits(64), std::invalid_argument);
}

TEST(Sides, AreOfTheItemsOfTheSet) {
    EXPECT_EQ((NumberedItems{2, 7}), antecedentOf(0b101, {2, 5, 7}));
    EXPECT_EQ((NumberedItems{5}), subsequentOf(0b101, {2, 5, 7}));
}

}  // namespace
}  // namespace oracle
