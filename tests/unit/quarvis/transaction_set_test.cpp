#include <quarvis/history.hpp>

#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"
#include "transactions.hpp"

namespace {

using quarvis::rule::History;
using quarvis::rule::ItemSet;
using quarvis::rule::TransactionSet;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using quarvis::test::transactionsIn;
using testing::ElementsAre;

static_assert(std::is_same_v<TransactionSet::Iterator, std::map<std::string, History>::iterator>);
static_assert(
    std::is_same_v<TransactionSet::ConstIterator, std::map<std::string, History>::const_iterator>);
static_assert(!std::is_polymorphic_v<TransactionSet>);

static_assert(noexcept(std::declval<const TransactionSet&>().size()));
static_assert(noexcept(std::declval<const TransactionSet&>().transactionCount()));
static_assert(noexcept(std::declval<TransactionSet&>().begin()));
static_assert(noexcept(std::declval<TransactionSet&>().end()));
static_assert(noexcept(std::declval<const TransactionSet&>().begin()));
static_assert(noexcept(std::declval<const TransactionSet&>().end()));

TEST(TransactionSet, EmptyHasNoHistoryNoTransactionAndCountsNothing) {
    const TransactionSet none;
    EXPECT_EQ(none.size(), 0U);
    EXPECT_EQ(none.transactionCount(), 0U);
    EXPECT_EQ(none.count(ItemSet()), 0U);
    EXPECT_EQ(none.count(setOf({"ab"})), 0U);
    EXPECT_EQ(none.begin(), none.end());
}

TEST(TransactionSet, EntitiesWithTheSameTransactionsAreHistoriesOfTheirOwn) {
    const TransactionSet transactions = transactionsIn(
        "header\n"
        "e1\t1\tab\tcd\n"
        "e1\t2\tef\n"
        "e2\t1\tab\tcd\n"
        "e2\t2\tef\n");
    EXPECT_EQ(transactions.size(), 2U);
    EXPECT_EQ(transactions.transactionCount(), 4U);
    EXPECT_EQ(transactions.count(setOf({"ab"})), 2U);
    EXPECT_EQ(transactions.count(setOf({"ab", "ef"})), 2U);
}

TEST(TransactionSet, CountIsOfHistoriesNotOfTransactions) {
    const TransactionSet transactions = transactionsIn(
        "header\n"
        "e1\t1\tab\n"
        "e1\t2\tab\n"
        "e1\t3\tab\tcd\n"
        "e2\t1\tcd\n"
        "e2\t9\tef\n"
        "e3\t4\n");
    const std::vector<std::pair<ItemSet, std::size_t>> counts = {
        {setOf({"ab"}), 1},       {setOf({"cd"}), 2}, {setOf({"ab", "cd"}), 1},
        {setOf({"cd", "ef"}), 1}, {setOf({"gh"}), 0}, {setOf({"ab", "ef"}), 0},
    };
    for (const auto& [items, count] : counts)
        EXPECT_EQ(transactions.count(items), count) << items;
    EXPECT_EQ(transactions.size(), 3U);
    EXPECT_EQ(transactions.transactionCount(), 6U);
}

TEST(TransactionSet, CountOfTheEmptySetIsTheNumberOfHistoriesWithTransactions) {
    TransactionSet transactions = transactionsIn("header\ne1\t1\tab\ne2\t1\ne3\t1\tcd\n");
    EXPECT_EQ(transactions.count(ItemSet()), 3U);
    transactions.begin()->second = History();
    EXPECT_EQ(transactions.count(ItemSet()), 2U);
    EXPECT_EQ(transactions.size(), 3U);
    EXPECT_EQ(transactions.transactionCount(), 2U);
}

TEST(TransactionSet, IteratesInAscendingByteOrderOfTheKeys) {
    TransactionSet transactions =
        transactionsIn("header\nb\t1\n\x80\t1\nab\t1\nB\t1\na\t1\n10\t1\n9\t1\n");
    std::vector<std::string> keys;
    for (auto& [key, history] : transactions) {
        keys.push_back(key);
        history[1].add("xy");
    }
    EXPECT_THAT(keys, ElementsAre("10", "9", "B", "a", "ab", "b", "\x80"));
    const TransactionSet& constant = transactions;
    EXPECT_THAT(itemsOf(constant.begin()->second.at(1)), ElementsAre("xy"));
    EXPECT_EQ(transactions.count(setOf({"xy"})), 7U);
}

}  // namespace
