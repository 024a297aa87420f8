#include "oracle/brute_force.hpp"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double INFINITE = std::numeric_limits<double>::infinity();

Outcome outcomeOf(const Table& table, std::uint32_t minCount, Time window = 0) {
    Settings settings;
    settings.minCount = minCount;
    settings.windowSize = window;
    return bruteForce(settings, table);
}

TEST(BruteForce, RulesOfTwoTransactions) {
    EXPECT_THAT(outcomeOf(tableOf({"2:c,d 3:a,b"}), 1).ruleTexts(),
                ElementsAre("{c,d} => {a,b}", "{c,d} => a", "{c,d} => b", "c => {a,b}", "c => a",
                            "c => b", "d => {a,b}", "d => a", "d => b"));
}

TEST(BruteForce, MeasuresOfFourHistories) {
    const Outcome outcome = outcomeOf(tableOf({"1:a 2:s", "1:a,s", "1:s", "1:s"}), 1);
    EXPECT_THAT(outcome.rules,
                ElementsAre(Outcome::Rule{"a => s", 1, 2, 0.25, 1, 1, INFINITE, 0.5, 1}));
    EXPECT_THAT(outcome.itemSets,
                ElementsAre(Outcome::ItemSet{"{a,s}", 2}, Outcome::ItemSet{"{a}", 2},
                            Outcome::ItemSet{"{s}", 4}));
}

TEST(BruteForce, MessagesOfASequence) {
    EXPECT_EQ(
        "\t ... calculated 3 frequent item sets of size 1. \n"
        "\t ... calculated 3 frequent item sets of size 2 with 6 proposed rules.\n"
        "\t ... deducing rules of order 1.\n"
        "\t ... mining rules until there are no more frequent item sets.\n"
        "\t ... calculated 1 frequent item sets of size 3 with 5 proposed rules.\n"
        "\t ... deducing rules of order 2.\n"
        "\t ... preparing rules for reporting.\n"
        "\t ... have 4 rules.\n",
        outcomeOf(tableOf({"1:a 2:b 3:c"}), 1).messages);
}

TEST(BruteForce, AnAgeOfExactlyTheWindowIsWithinIt) {
    EXPECT_THAT(outcomeOf(tableOf({"1:a 5:b"}), 1, 4).ruleTexts(), ElementsAre("a => b"));
    EXPECT_THAT(outcomeOf(tableOf({"1:a 5:b"}), 1, 3).ruleTexts(), IsEmpty());
}

TEST(BruteForce, AllSplitsLetTheOuterItemsImplyTheMiddleOne) {
    Settings settings;
    settings.minCount = 1;
    settings.allSplits = true;
    const Outcome outcome = bruteForce(settings, tableOf({"1:a 2:c 3:b"}));
    EXPECT_THAT(outcome.ruleTexts(), ElementsAre("{a,c} => b", "a => b", "a => c", "c => b"));
    EXPECT_THAT(outcome.messages,
                testing::HasSubstr("1 frequent item sets of size 3 with 6 proposed rules.\n"));
}

TEST(BruteForce, MoreItemsThanBitsAreRefused) {
    Table table = tableOf({"1:"});
    for (char item = 'A'; item < 'A' + 32; ++item)
        table.histories[0][1].insert(std::string(1, item));
    EXPECT_THROW(outcomeOf(table, 1), std::invalid_argument);
}

}  // namespace
}  // namespace oracle
