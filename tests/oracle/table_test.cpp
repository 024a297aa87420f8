#include "oracle/table.hpp"

#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(OracleTable, IsMadeOfItsShortForm) {
    const Table table = tableOf({"5:c 1:b,a 18446744073709551615:", "3:x"});
    ASSERT_THAT(table.histories, testing::SizeIs(2));
    EXPECT_THAT(table.histories[0],
                ElementsAre(Pair(1, ElementsAre("a", "b")), Pair(5, ElementsAre("c")),
                            Pair(18446744073709551615U, IsEmpty())));
    EXPECT_THAT(table.histories[1], ElementsAre(Pair(3, ElementsAre("x"))));
}

TEST(OracleTable, PrintsItsShortForm) {
    std::ostringstream text;
    text << tableOf({"5:c 1:b,a 7:", "3:x"});
    EXPECT_EQ("1:a,b 5:c 7:\n3:x\n", text.str());
}

TEST(ItemsOf, AreThoseBetweenTheCommas) {
    EXPECT_THAT(itemsOf("b,a,aa"), ElementsAre("a", "aa", "b"));
    EXPECT_THAT(itemsOf(""), IsEmpty());
}

TEST(EntityOf, HasTheNameThatTheTableGives) {
    Table table = tableOf({"1:a", "1:b"});
    table.entities = {"zoe", "ann"};
    EXPECT_EQ("zoe", entityOf(table, 0));
    EXPECT_EQ("ann", entityOf(table, 1));
}

TEST(EntityOf, ElseIsANumberAsWideAsTheLast) {
    Table table;
    table.histories.resize(11);
    EXPECT_EQ("e00", entityOf(table, 0));
    EXPECT_EQ("e09", entityOf(table, 9));
    EXPECT_EQ("e10", entityOf(table, 10));
    table.histories.resize(10);
    EXPECT_EQ("e9", entityOf(table, 9));
}

}  // namespace
}  // namespace oracle
