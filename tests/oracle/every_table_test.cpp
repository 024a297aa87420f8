#include "oracle/every_table.hpp"

#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

TEST(AllHistories, HaveAnyItemsAtSomeOfTheTimes) {
    std::set<std::string> texts;
    for (const History& history : allHistories({1, 3}, {"a"}))
        texts.insert(shortForm(history));
    EXPECT_THAT(texts, testing::ElementsAre("1:", "1: 3:", "1: 3:a", "1:a", "1:a 3:", "1:a 3:a",
                                            "3:", "3:a"));
}

TEST(AllHistories, AreDifferent) {
    const std::vector<History> histories = allHistories({1, 2, 3}, {"a", "b"});
    // Each time has nothing or one of four sets, and some time has a set.
    EXPECT_EQ(5U * 5U * 5U - 1U, histories.size());
    EXPECT_EQ(histories.size(), std::set<History>(histories.begin(), histories.end()).size());
}

TEST(ForEveryTable, VisitsEachUpToTheOrderOfItsHistories) {
    const std::vector<History> histories = {{{1, {"a"}}}, {{1, {"b"}}}};
    std::set<std::string> texts;
    EXPECT_EQ(6U, forEveryTable(histories, 2, [&texts](const Table& table) {
                  std::ostringstream text;
                  text << table;
                  return texts.insert(text.str()).second;
              }));
    EXPECT_THAT(texts, testing::ElementsAre("", "1:a\n", "1:a\n1:a\n", "1:a\n1:b\n", "1:b\n",
                                            "1:b\n1:b\n"));
}

TEST(ForEveryTable, StopsWhenAVisitSaysSo) {
    std::size_t left = 2;
    EXPECT_EQ(3U, forEveryTable({{{1, {"a"}}}}, 9, [&left](const Table&) { return left-- > 0; }));
}

}  // namespace
}  // namespace oracle
