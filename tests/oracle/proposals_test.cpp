#include "oracle/proposals.hpp"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// The splits as rules of the first items of the alphabet.
std::vector<std::string> rulesOf(const std::vector<Split>& splits, std::size_t items) {
    NumberedItems set;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < items; ++i) {
        set.push_back(static_cast<ItemNumber>(i));
        names.emplace_back(1, static_cast<char>('a' + i));
    }
    std::vector<std::string> rules;
    for (const Split split : splits)
        rules.push_back(ruleText(antecedentOf(split, set), subsequentOf(split, set), names));
    return rules;
}

TEST(SplitsByRuns, APairImpliesBothWays) {
    EXPECT_THAT(rulesOf(splitsByRuns(2), 2), UnorderedElementsAre("a => b", "b => a"));
}

TEST(SplitsByRuns, OfThreeItemsTheOuterTwoNeverImplyTheMiddleOne) {
    EXPECT_THAT(
        rulesOf(splitsByRuns(3), 3),
        UnorderedElementsAre("{a,b} => c", "a => {b,c}", "{b,c} => a", "b => {a,c}", "c => {a,b}"));
}

TEST(SplitsByRuns, OfFourItemsEveryRunImpliesTheRest) {
    EXPECT_THAT(rulesOf(splitsByRuns(4), 4),
                UnorderedElementsAre("{a,b,c} => d", "{a,b} => {c,d}", "a => {b,c,d}",
                                     "{b,c,d} => a", "{b,c} => {a,d}", "b => {a,c,d}",
                                     "{c,d} => {a,b}", "c => {a,b,d}", "d => {a,b,c}"));
}

TEST(SplitsByRuns, OneItemOrNoneImpliesNothing) {
    EXPECT_THAT(splitsByRuns(0), IsEmpty());
    EXPECT_THAT(splitsByRuns(1), IsEmpty());
}

TEST(SplitsByRuns, AreAsManyAsThereAreRuns) {
    for (std::size_t k = 1; k < 64; ++k)
        EXPECT_EQ(k * (k + 1) / 2 - 1, splitsByRuns(k).size()) << k << " items";
    EXPECT_THROW(splitsByRuns(64), std::invalid_argument);
}

TEST(AllSplits, OfAPairAreItsRuns) {
    EXPECT_THAT(rulesOf(allSplits(2), 2), UnorderedElementsAre("a => b", "b => a"));
}

TEST(AllSplits, OfThreeItemsTheOuterTwoImplyTheMiddleOneToo) {
    EXPECT_THAT(rulesOf(allSplits(3), 3),
                UnorderedElementsAre("{a,b} => c", "a => {b,c}", "{b,c} => a", "b => {a,c}",
                                     "c => {a,b}", "{a,c} => b"));
}

TEST(AllSplits, OneItemOrNoneImpliesNothing) {
    EXPECT_THAT(allSplits(0), IsEmpty());
    EXPECT_THAT(allSplits(1), IsEmpty());
}

TEST(AllSplits, AreAllSubsetsButTheEmptyOneAndTheWhole) {
    for (std::size_t k = 1; k < 12; ++k) {
        const std::vector<Split> splits = allSplits(k);
        EXPECT_EQ((std::size_t{1} << k) - 2, splits.size()) << k << " items";
        EXPECT_EQ(splits.size(), std::set<Split>(splits.begin(), splits.end()).size());
    }
    EXPECT_THROW(allSplits(64), std::invalid_argument);
}

TEST(Sides, AreOfTheItemsOfTheSet) {
    EXPECT_EQ((NumberedItems{2, 7}), antecedentOf(0b101, {2, 5, 7}));
    EXPECT_EQ((NumberedItems{5}), subsequentOf(0b101, {2, 5, 7}));
}

}  // namespace
}  // namespace oracle
