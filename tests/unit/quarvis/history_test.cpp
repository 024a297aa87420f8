#include <quarvis/history.hpp>

#include <cstddef>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::History;
using quarvis::rule::ItemSet;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using quarvis::test::subsetsOf;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_same_v<History::Time, unsigned int>);
static_assert(std::numeric_limits<History::Time>::digits == 32);
static_assert(std::is_same_v<History::Iterator, std::map<unsigned int, ItemSet>::iterator>);
static_assert(
    std::is_same_v<History::ConstIterator, std::map<unsigned int, ItemSet>::const_iterator>);
static_assert(!std::is_polymorphic_v<History>);

static_assert(noexcept(std::declval<History&>()[History::Time()]));
static_assert(noexcept(std::declval<const History&>().size()));
static_assert(noexcept(std::declval<History&>().begin()));
static_assert(noexcept(std::declval<History&>().end()));
static_assert(noexcept(std::declval<const History&>().begin()));
static_assert(noexcept(std::declval<const History&>().end()));

/// {ab} at time 1 and {cd} at time 5.
History twoTransactions() {
    History history;
    history[5] = setOf({"cd"});
    history[1] = setOf({"ab"});
    return history;
}

TEST(History, IsEmptyByDefault) {
    const History history;
    EXPECT_EQ(history.size(), 0U);
    EXPECT_EQ(history.begin(), history.end());
}

TEST(History, ANewTimeGetsAnEmptyTransaction) {
    History history = twoTransactions();
    EXPECT_THAT(itemsOf(history[7]), IsEmpty());
    EXPECT_EQ(history.size(), 3U);
    EXPECT_TRUE(history.contains(7));
}

TEST(History, AKnownTimeGivesItsTransaction) {
    History history = twoTransactions();
    history[1].add("ef");
    EXPECT_EQ(history.size(), 2U);
    EXPECT_THAT(itemsOf(history[1]), ElementsAre("ab", "ef"));
}

TEST(History, AtGivesTheTransactionOfItsTime) {
    History history = twoTransactions();
    history.at(5).add("ef");
    const History& constant = history;
    EXPECT_THAT(itemsOf(constant.at(5)), ElementsAre("cd", "ef"));
    EXPECT_THAT(itemsOf(constant.at(1)), ElementsAre("ab"));
}

TEST(History, AtThrowsADomainErrorForATimeWithoutTransaction) {
    History history = twoTransactions();
    const History& constant = history;
    const auto messageOf = [](auto& of, History::Time time) -> std::string {
        try {
            of.at(time);
        } catch (const std::domain_error& error) {
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_EQ(messageOf(history, 2), "Missing history entry.");
    EXPECT_EQ(messageOf(constant, 0), "Missing history entry.");
    EXPECT_EQ(history.size(), 2U);
}

TEST(History, ContainsTheTimesOfItsTransactions) {
    const History history = twoTransactions();
    EXPECT_TRUE(history.contains(1));
    EXPECT_TRUE(history.contains(5));
    EXPECT_FALSE(history.contains(0));
    EXPECT_FALSE(history.contains(3));
}

TEST(History, ContainsItemsOfDifferentTransactionsTogether) {
    const History history = twoTransactions();
    EXPECT_TRUE(history.contains(setOf({"ab", "cd"})));
    EXPECT_TRUE(history.contains(setOf({"ab"})));
    EXPECT_TRUE(history.contains(setOf({"cd"})));
    EXPECT_TRUE(history.contains(ItemSet()));
    EXPECT_FALSE(history.contains(setOf({"ab", "xy"})));
}

TEST(History, WithoutTransactionsContainsNotEvenTheEmptySet) {
    EXPECT_FALSE(History().contains(ItemSet()));
    EXPECT_FALSE(History().contains(setOf({"ab"})));
}

TEST(History, WithAnEmptyTransactionContainsTheEmptySet) {
    History history;
    history[3];
    EXPECT_TRUE(history.contains(ItemSet()));
    EXPECT_FALSE(history.contains(setOf({""})));
}

TEST(History, ContainsTheSubsetsOfItsUnionForEveryPairOfTransactions) {
    const std::vector<ItemSet> sets = subsetsOf({"ab", "cd", "ef"});
    for (std::size_t first = 0; first < sets.size(); ++first)
        for (std::size_t second = 0; second < sets.size(); ++second) {
            History history;
            history[1] = sets[first];
            history[2] = sets[second];
            for (std::size_t items = 0; items < sets.size(); ++items)
                EXPECT_EQ(history.contains(sets[items]), (items & ~(first | second)) == 0)
                    << sets[first] << " then " << sets[second] << " for " << sets[items];
            EXPECT_EQ(itemsOf(history.allItems()), itemsOf(sets[first | second]));
        }
}

TEST(History, AllItemsOfAnEmptyHistoryIsTheEmptySet) {
    EXPECT_THAT(itemsOf(History().allItems()), IsEmpty());
}

TEST(History, AllItemsLeavesTheTransactionsAsTheyAre) {
    const History history = twoTransactions();
    EXPECT_THAT(itemsOf(history.allItems()), ElementsAre("ab", "cd"));
    EXPECT_THAT(itemsOf(history.at(1)), ElementsAre("ab"));
}

TEST(History, IteratesInAscendingUnsignedTime) {
    History history;
    for (const History::Time time : {4294967295U, 10U, 2147483648U, 0U, 9U})
        history[time].add("ab");
    std::vector<History::Time> times;
    for (auto& [time, items] : history) {
        times.push_back(time);
        items.add("cd");
    }
    EXPECT_THAT(times, ElementsAre(0U, 9U, 10U, 2147483648U, 4294967295U));
    EXPECT_THAT(itemsOf(history.at(9)), ElementsAre("ab", "cd"));
}

TEST(History, CopiesAreIndependent) {
    History original = twoTransactions();
    const History copy(original);
    original[1].clear();
    original[9];
    EXPECT_EQ(copy.size(), 2U);
    EXPECT_THAT(itemsOf(copy.at(1)), ElementsAre("ab"));
}

}  // namespace
