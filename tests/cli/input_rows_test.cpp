// Rows of the transaction file: keys, items, short rows, empty lines, empty cells. To check the key
// and the time of a row, a second row has the expected ones: both rows form one transaction if they
// agree.

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectReading;

TEST(InputRows, ItemsOfOneKeyAndTimeAreOneTransaction) {
    expectReading("h\ne1\t3\tab\tcd\ne1\t3\tcd\tef\n", 1, 1,
                  {{1, {"ab", "cd"}},
                   {1, {"ab", "ef"}},
                   {1, {"ab"}},
                   {1, {"cd", "ef"}},
                   {1, {"cd"}},
                   {1, {"ef"}}});
}

TEST(InputRows, RowWithoutItemsIsATransaction) {
    expectReading("h\ne1\t3\tab\tcd\ne1\t7\n", 2, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne1\t3\tab\ne1\t3\n", 1, 1, {{1, {"ab"}}});
    expectReading("h\ne1\t3\ne1\t3\tab\n", 1, 1, {{1, {"ab"}}});
}

TEST(InputRows, NeedNotBeSortedOrGrouped) {
    expectReading(
        "h\ne2\t5\tb\ne1\t9\ta\ne2\t1\ta\ne1\t2\tb\ne2\t5\tc\n", 4, 2,
        {{2, {"a", "b"}}, {1, {"a", "c"}}, {2, {"a"}}, {1, {"b", "c"}}, {2, {"b"}}, {1, {"c"}}});
}

TEST(InputRows, RepeatedChangeNothing) {
    const std::string rows = "e1\t3\tab\tcd\ne2\t3\tcd\te1\ne1\t4\tcd\n";
    for (const std::string& repeated : {std::string(), rows})
        expectReading(
            std::string("h\n").append(rows).append(repeated), 3, 2,
            {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd", "e1"}}, {2, {"cd"}}, {1, {"e1"}}});
    expectReading("h\ne1\t3\tab\tab\tab\n", 1, 1, {{1, {"ab"}}});
}

TEST(InputRows, HeaderIsTheFirstLineWhateverItHolds) {
    for (const char* header :
         {"", "e1\t1\tb", "\t\t", "\"", "\"a\tb", "#", "h\xFFh", "h\rh", "h\r"})
        expectReading(std::string(header) + "\ne1\t1\ta\n", 1, 1, {{1, {"a"}}});
}

TEST(InputRows, CommentsAreData) {
    expectReading("h\n#e\t1\ta\n#e\t1\t#b\n", 1, 1, {{1, {"#b", "a"}}, {1, {"#b"}}, {1, {"a"}}});
}

TEST(InputRows, KeysAndItemsKeepTheirBlanks) {
    expectReading("h\ne\t1\t a\te\n e\t1\ta\ne \t1\ta \n", 3, 3,
                  {{1, {" a", "e"}}, {1, {" a"}}, {1, {"a"}}, {1, {"a "}}, {1, {"e"}}});
    expectReading("h\n \t1\t \n \t1\t  \n", 1, 1, {{1, {" ", "  "}}, {1, {" "}}, {1, {"  "}}});
}

TEST(InputRows, OnlyTheTabDelimits) {
    expectReading("h\ne,1 x\t1\ta,b;c d\n", 1, 1, {{1, {"a,b;c d"}}});
}

TEST(InputRows, EmptyItemCellsAreSkipped) {
    expectReading("h\ne\t1\ta\t\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\ne\t1\t\t\ta\t\t\n", 1, 1, {{1, {"a"}}});
    expectReading("h\ne\t1\t\ne\t1\ta\n", 1, 1, {{1, {"a"}}});
}

TEST(InputRows, EmptyTimeCellIsTimeZero) {
    expectReading("h\ne\t\ta\ne\t0\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputRows, KeyAloneTakesItsTimeAndItemsFromTheNextRow) {
    // The time is "e2", which is not a number and reads as 0. The key of the second row is lost.
    expectReading(
        "h\ne1\ne2\t5\tx\ne1\t0\ty\n", 1, 1,
        {{1, {"5", "x"}}, {1, {"5", "y"}}, {1, {"5"}}, {1, {"x", "y"}}, {1, {"x"}}, {1, {"y"}}});
    expectReading("h\ne1\n7\t5\ne1\t7\ty\n", 1, 1, {{1, {"5", "y"}}, {1, {"5"}}, {1, {"y"}}});
    expectReading("h\ne1\n7\ne1\t7\ty\n", 1, 1, {{1, {"y"}}});
    // If the next row begins with a delimiter, the time is its empty first cell.
    expectReading("h\ne1\n\t5\tx\ne1\t0\n", 1, 1, {{1, {"5", "x"}}, {1, {"5"}}, {1, {"x"}}});
}

TEST(InputRows, KeyAloneAtTheEndIsAtTimeZero) {
    for (const char* last : {"e1", "e1\n", "e1\t", "e1\t\n"})
        expectReading(std::string("h\ne1\t0\ta\n") + last, 1, 1, {{1, {"a"}}});
    expectReading("h\ne1", 1, 1, {});
}

TEST(InputRows, LeadingDelimiterIsLost) {
    expectReading("h\n\te1\t3\ta\ne1\t3\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\n\te1\t3\n\te2\t4\ta\ne2\t4\tb\n", 2, 2,
                  {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputRows, TwoLeadingDelimitersMakeAnEmptyKey) {
    expectReading("h\n\t\te1\t3\n\t\t0\ta\n", 1, 1, {{1, {"3", "a"}}, {1, {"3"}}, {1, {"a"}}});
    expectReading("h\n\t\t\t3\n\t\t0\ta\n", 1, 1, {{1, {"3", "a"}}, {1, {"3"}}, {1, {"a"}}});
}

TEST(InputRows, EmptyLineBetweenRowsDoesNoHarm) {
    expectReading("h\ne1\t1\ta\n\ne1\t1\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\n\ne1\t1\ta\n", 1, 1, {{1, {"a"}}});
}

TEST(InputRows, TwoEmptyLinesBetweenRowsMakeAnEmptyKeyOfTheNextRow) {
    // The key of the next row becomes the time, and its time becomes an item.
    expectReading("h\ne1\t1\ta\n\n\ne2\t5\tx\n", 2, 2,
                  {{1, {"5", "x"}}, {1, {"5"}}, {1, {"a"}}, {1, {"x"}}});
    expectReading("h\n\n\n8\t5\n\"\"\t8\tx\n", 1, 1, {{1, {"5", "x"}}, {1, {"5"}}, {1, {"x"}}});
}

TEST(InputRows, ThreeEmptyLinesBetweenRowsMakeAnEmptyTransaction) {
    expectReading("h\ne1\t1\ta\n\n\n\ne1\t1\tb\n", 2, 2, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputRows, EmptyLineAtTheEndIsAnEntityWithAnEmptyKey) {
    expectReading("h\ne1\t1\ta\n\n", 2, 2, {{1, {"a"}}});
    expectReading("h\n\n", 1, 1, {});
    expectReading("h\n\"\"\t0\ta\n\n", 1, 1, {{1, {"a"}}});
    expectReading("h\ne1\t1\ta\n\n\n", 2, 2, {{1, {"a"}}});
}

TEST(InputRows, LastLineNeedsNoEnd) {
    expectReading("h\ne1\t1\ta\ne1\t1\tb", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\ne1\t1\ta\ne1\t1\tb\t", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputRows, LongCellsAreReadWhole) {
    const std::string item(100000, 'x');
    expectReading("h\n" + item + "\t1\t" + item + "\n" + item + "\t1\ty\n", 1, 1,
                  {{1, {item, "y"}}, {1, {item}}, {1, {"y"}}});
}

}  // namespace
