#include "oracle/rule_counting.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::ElementsAre;

/// In how many of the histories the rule between these items counts. All histories have all of the
/// items.
std::size_t countOf(const Table& table, const char* antecedent, const char* subsequent,
                    Time window = 0) {
    const NumberedTable numbers = numbered(table);
    Items items = itemsOf(antecedent);
    items.merge(itemsOf(subsequent));

    FrequentSet set;
    Split split = 0;
    for (const std::string& item : items) {
        if (itemsOf(antecedent).contains(item))
            split |= Split{1} << set.items.size();
        const auto name = std::find(numbers.names.begin(), numbers.names.end(), item);
        set.items.push_back(static_cast<ItemNumber>(name - numbers.names.begin()));
    }
    for (std::size_t history = 0; history < table.histories.size(); ++history)
        set.histories.push_back(history);
    return ruleCounts(numbers, set, {split}, window).at(0);
}

/// The same for one history.
std::size_t firings(const char* history, const char* antecedent, const char* subsequent,
                    Time window = 0) {
    return countOf(tableOf({history}), antecedent, subsequent, window);
}

TEST(OracleRuleCounting, FiresWhenTheSubsequentFollowsTheAntecedent) {
    EXPECT_EQ(1U, firings("1:a 2:b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a 2:b", "b", "a"));
}

TEST(OracleRuleCounting, AnAgeBeyondTheWindowIsTooOld) {
    EXPECT_EQ(0U, firings("1:a 5:b", "a", "b", 3));
}

TEST(OracleRuleCounting, AnAgeOfExactlyTheWindowIsWithinIt) {
    EXPECT_EQ(1U, firings("1:a 5:b", "a", "b", 4));
}

TEST(OracleRuleCounting, ItemsOfOneTransactionDoNotImplyEachOther) {
    EXPECT_EQ(0U, firings("1:a,b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a,b", "b", "a"));
}

TEST(OracleRuleCounting, FiresOnceThoughTheSubsequentRecurs) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:b", "a", "b"));
}

TEST(OracleRuleCounting, FiresOnceThoughTheWindowForgetsTheFirstTime) {
    EXPECT_EQ(1U, firings("1:a 2:b 11:a 12:b", "a", "b", 5));
}

TEST(OracleRuleCounting, ASubsequentSeenBeforeTheAntecedentIsNotNew) {
    EXPECT_EQ(0U, firings("1:b 2:a 3:b", "a", "b"));
}

TEST(OracleRuleCounting, ASubsequentSeenLongBeforeIsNewWithAWindow) {
    EXPECT_EQ(1U, firings("1:b 12:a 13:b", "a", "b", 5));
}

TEST(OracleRuleCounting, AnAntecedentThatIsCompleteInTheTransactionDoesNotFireThere) {
    EXPECT_EQ(0U, firings("1:a 2:a,b", "a", "b"));
    EXPECT_EQ(0U, firings("1:a,b 2:a,b,c", "a,b", "c"));
}

TEST(OracleRuleCounting, AnAntecedentThatIsPartlyInTheTransactionFires) {
    EXPECT_EQ(1U, firings("1:a,b 2:b,c", "a,b", "c"));
}

TEST(OracleRuleCounting, FiresLaterThanAnAttemptThatFailed) {
    EXPECT_EQ(1U, firings("1:a 2:c 3:a,b 14:a 15:b", "a", "b", 5));
}

TEST(OracleRuleCounting, AntecedentItemsMayComeAtDifferentTimes) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:c", "a,b", "c"));
    EXPECT_EQ(1U, firings("1:b 2:a 3:c", "a,b", "c"));
}

TEST(OracleRuleCounting, EveryAntecedentItemMustBeWithinTheWindow) {
    EXPECT_EQ(1U, firings("1:a 2:b 3:c", "a,b", "c", 2));
    EXPECT_EQ(0U, firings("1:a 2:b 3:c", "a,b", "c", 1));
}

TEST(OracleRuleCounting, SubsequentItemsMustComeTogether) {
    EXPECT_EQ(1U, firings("1:a 2:b,c", "a", "b,c"));
    EXPECT_EQ(0U, firings("1:a 2:b 3:c", "a", "b,c"));
}

TEST(OracleRuleCounting, EverySubsequentItemMustBeNew) {
    EXPECT_EQ(0U, firings("1:a,b 2:b,c", "a", "b,c"));
    EXPECT_EQ(0U, firings("1:a,b 3:b,c", "a", "b,c", 2));
    EXPECT_EQ(1U, firings("1:a,b 3:a 5:b,c", "a", "b,c", 2));
}

TEST(OracleRuleCounting, AnItemIsAsOldAsWhenItWasLastSeen) {
    EXPECT_EQ(1U, firings("1:a 4:a 6:b", "a", "b", 2));
}

TEST(OracleRuleCounting, ATransactionWithoutItemsChangesNothing) {
    EXPECT_EQ(1U, firings("1:a 2: 3:b", "a", "b"));
}

TEST(OracleRuleCounting, TimesAndWindowsTakeTheWholeRange) {
    EXPECT_EQ(1U, firings("0:a 4294967295:b", "a", "b", 4294967295));
    EXPECT_EQ(0U, firings("0:a 4294967295:b", "a", "b", 4294967294));
    EXPECT_EQ(1U, firings("0:a 4294967295:b", "a", "b", 0));
    const std::uint64_t largest = std::numeric_limits<Time>::max();
    EXPECT_EQ(1U, firings("0:a 18446744073709551615:b", "a", "b", largest));
    EXPECT_EQ(0U, firings("0:a 18446744073709551615:b", "a", "b", largest - 1));
    EXPECT_EQ(1U, firings("0:a 18446744073709551615:b", "a", "b", 0));
}

TEST(OracleRuleCounting, CountsHistories) {
    EXPECT_EQ(2U, countOf(tableOf({"1:a 2:b", "7:a 9:b"}), "a", "b"));
    EXPECT_EQ(1U, countOf(tableOf({"1:b 2:a 3:b", "1:a 2:b 3:a 4:b"}), "a", "b"));
}

TEST(OracleRuleCounting, CountsEverySplitByItself) {
    const NumberedTable table =
        numbered(tableOf({"1:a,b 2:c,d", "1:a,c,d 2:a,b,c,d", "1:d 2:a,b,c"}));
    const std::vector<Split> splits = {0b0011, 0b1100, 0b1000, 0b1101, 0b0111};
    EXPECT_THAT(ruleCounts(table, {{0, 1, 2, 3}, {0, 1, 2}}, splits, 0),
                ElementsAre(1, 0, 1, 0, 0));
    EXPECT_THAT(ruleCounts(table, {{0, 1, 2, 3}, {1}}, splits, 0), ElementsAre(0, 0, 0, 0, 0));
}

}  // namespace
}  // namespace oracle
