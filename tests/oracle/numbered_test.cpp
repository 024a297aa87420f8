#include "oracle/numbered.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(Numbered, ItemsAreNumberedInByteOrder) {
    EXPECT_THAT(numbered(tableOf({"5:b,\x80,aa", "1:a,B"})).names,
                ElementsAre("B", "a", "aa", "b", "\x80"));
}

TEST(Numbered, EachItemHasItsTimesInEachHistory) {
    const NumberedTable table = numbered(tableOf({"9:a 1:a,b 5:b", "1:", "7:b"}));
    ASSERT_THAT(table.histories, testing::SizeIs(3));
    EXPECT_THAT(table.histories[0],
                ElementsAre(Pair(0, ElementsAre(1, 9)), Pair(1, ElementsAre(1, 5))));
    EXPECT_THAT(table.histories[1], IsEmpty());
    EXPECT_THAT(table.histories[2], ElementsAre(Pair(1, ElementsAre(7))));
}

TEST(Precedes, TheSmallerItemDecidesAndASetComesBeforeItsBeginnings) {
    const NumberedItems inOrder[] = {{0, 1, 2}, {0, 1}, {0, 2}, {0}, {1, 2}, {1}, {}};
    for (const NumberedItems& a : inOrder)
        for (const NumberedItems& b : inOrder)
            EXPECT_EQ(&a < &b, precedes(a, b))
                << testing::PrintToString(a) << testing::PrintToString(b);
}

TEST(TextForms, OnlySidesOfOneItemHaveNoBraces) {
    const std::vector<std::string> names = {"a", "b,", ""};
    EXPECT_EQ("{a}", braced({0}, names));
    EXPECT_EQ("{a,b,,}", braced({0, 1, 2}, names));
    EXPECT_EQ("{}", braced({}, names));
    EXPECT_EQ("{a,} => b,", ruleText({0, 2}, {1}, names));
    EXPECT_EQ("b, => {a,}", ruleText({1}, {0, 2}, names));
}

}  // namespace
}  // namespace oracle
