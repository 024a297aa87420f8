#include "oracle/frequent_sets.hpp"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The sets of `size` items, as "{a,b} 2".
std::vector<std::string> levelOf(const Table& table, std::size_t minCount, std::size_t size) {
    const NumberedTable numbers = numbered(table);
    Level level = firstLevel(numbers, minCount);
    for (std::size_t reached = 1; reached < size; ++reached)
        level = nextLevel(level, minCount);
    std::vector<std::string> sets;
    for (const FrequentSet& set : level)
        sets.push_back(braced(set.items, numbers.names) + ' ' + std::to_string(set.count()));
    return sets;
}

TEST(FirstLevel, CountsHistoriesNotTransactions) {
    EXPECT_THAT(levelOf(tableOf({"1:a 2:a 3:a 4:a 5:a"}), 1, 1), ElementsAre("{a} 1"));
    EXPECT_THAT(levelOf(tableOf({"1:a 2:a,b", "9:a"}), 1, 1), ElementsAre("{a} 2", "{b} 1"));
}

TEST(FirstLevel, HasTheItemsThatAreInEnoughHistories) {
    const Table table = tableOf({"1:a,b,c", "1:a,b", "1:a"});
    EXPECT_THAT(levelOf(table, 0, 1), ElementsAre("{a} 3", "{b} 2", "{c} 1"));
    EXPECT_THAT(levelOf(table, 1, 1), ElementsAre("{a} 3", "{b} 2", "{c} 1"));
    EXPECT_THAT(levelOf(table, 2, 1), ElementsAre("{a} 3", "{b} 2"));
    EXPECT_THAT(levelOf(table, 3, 1), ElementsAre("{a} 3"));
    EXPECT_THAT(levelOf(table, 4, 1), IsEmpty());
}

TEST(FirstLevel, OfNoItemsIsEmpty) {
    EXPECT_THAT(levelOf(Table(), 0, 1), IsEmpty());
    EXPECT_THAT(levelOf(tableOf({"1: 2:"}), 0, 1), IsEmpty());
}

TEST(NextLevel, HasThePairsOverAllTimes) {
    EXPECT_THAT(levelOf(tableOf({"1:a 2:b", "1:a,b,c", "1:a 4:c"}), 1, 2),
                ElementsAre("{a,b} 2", "{a,c} 2", "{b,c} 1"));
}

TEST(NextLevel, LeavesOutTheInfrequent) {
    EXPECT_THAT(levelOf(tableOf({"1:a,b", "1:a 2:b,c", "1:c"}), 2, 2), ElementsAre("{a,b} 2"));
}

TEST(NextLevel, HasSetsThatAreInNoHistoryWhenNoneIsAskedFor) {
    EXPECT_THAT(levelOf(tableOf({"1:a,b", "1:c", "1:"}), 0, 2),
                ElementsAre("{a,b} 1", "{a,c} 0", "{b,c} 0"));
    EXPECT_THAT(levelOf(tableOf({"1:a,b", "1:c", "1:"}), 0, 3), ElementsAre("{a,b,c} 0"));
}

TEST(NextLevel, HasEachSetOnceAndInOrder) {
    EXPECT_THAT(levelOf(tableOf({"1:a,b,c", "1:a,b,c,d", "1:b,c,d"}), 1, 3),
                ElementsAre("{a,b,c} 2", "{a,b,d} 1", "{a,c,d} 1", "{b,c,d} 2"));
}

TEST(NextLevel, OfOneSetOrNoneIsEmpty) {
    EXPECT_THAT(levelOf(tableOf({"1:a"}), 0, 2), IsEmpty());
    EXPECT_THAT(levelOf(Table(), 0, 2), IsEmpty());
    EXPECT_THAT(levelOf(Table(), 0, 5), IsEmpty());
}

}  // namespace
}  // namespace oracle
