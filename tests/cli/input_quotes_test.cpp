// Quoted cells of the transaction file.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectReading;
using tool::FrequentSet;

/// Expects that `cell`, as the only item cell of a row, reads as `item`: at the end of the data,
/// before a line end, and before another item.
void expectItem(const std::string& cell, const std::string& item,
                const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    const std::string row = "h\ne\t1\t" + cell;
    const std::vector<FrequentSet> alone = {{1, {item}}};
    // "~" sorts after every item here.
    const std::vector<FrequentSet> both = {{1, {item, "~"}}, {1, {item}}, {1, {"~"}}};
    expectReading(row, 1, 1, alone, file, line);
    expectReading(row + "\n", 1, 1, alone, file, line);
    expectReading(row + "\t~\n", 1, 1, both, file, line);
    expectReading(row + "\ne\t1\t~\n", 1, 1, both, file, line);
}

TEST(InputQuotes, EncloseDelimitersAndLineEnds) {
    expectItem("\"x\ty\"", "x\ty");
    expectItem("\"\t\"", "\t");
    expectItem("\"x\ny\"", "x\ny");
    expectItem("\"x\n\ny\n\"", "x\n\ny\n");
    expectItem("\"e\t1\tb\ne\t2\tc\"", "e\t1\tb\ne\t2\tc");
    expectItem("\"x\"", "x");
    expectItem("\" x \"", " x ");
}

TEST(InputQuotes, LineEndInsideIsItsFirstCharacter) {
    expectItem("\"x\r\ny\"", "x\ry");
    expectItem("\"x\n\ry\"", "x\ny");
    expectItem("\"x\ry\"", "x\ry");
    expectItem("\"x\r\r\ny\"", "x\r\ry");
}

TEST(InputQuotes, DoubledQuoteInTheMiddleLeavesTheCellRaw) {
    expectItem("\"a\"\"b\"", "\"a\"\"b\"");
    expectItem("\"\"\"a\"", "\"\"\"a\"");
    expectItem("\"a\"\"b\"\"c\"", "\"a\"\"b\"\"c\"");
}

TEST(InputQuotes, DoubledQuoteAtTheEndComesDouble) {
    expectItem("\"a\"\"\"", "a\"\"");
    expectItem("\"\"\"\"", "\"\"");
}

TEST(InputQuotes, DoubledQuoteBeforeADelimiterClosesTheCell) {
    expectItem("\"a\"\"", "a\"");
    expectItem("\"\"\"", "\"");
    expectReading("h\ne\t1\t\"a\"\"\tb\"\n", 1, 1,
                  {{1, {"a\"", "b\""}}, {1, {"a\""}}, {1, {"b\""}}});
}

TEST(InputQuotes, TextAfterTheClosingQuoteLeavesTheCellRaw) {
    expectItem("\"ab\"c", "\"ab\"c");
    expectItem("\"ab\" ", "\"ab\" ");
    expectItem("\"\"c", "\"\"c");
    expectItem("\"ab\"c\"d\"", "\"ab\"c\"d\"");
    expectItem("\"a\tb\"c", "\"a\tb\"c");
    expectItem("\"a\r\nb\"c", "\"a\rb\"c");
}

TEST(InputQuotes, CrLfAfterTheClosingQuoteIsAbsorbed) {
    expectReading("h\r\ne\t1\t\"ab\"\r\ne\t2\t\"cd\"\r\n", 1, 1,
                  {{1, {"\"ab\"\ne", "\"cd\"\n"}},
                   {1, {"\"ab\"\ne", "2"}},
                   {1, {"\"ab\"\ne"}},
                   {1, {"\"cd\"\n", "2"}},
                   {1, {"\"cd\"\n"}},
                   {1, {"2"}}});
}

TEST(InputQuotes, UnclosedCellGoesOnToTheEnd) {
    expectReading("h\ne\t1\t\"ab\ne\t2\tc\n", 1, 1, {{1, {"ab\ne\t2\tc\n"}}});
    expectReading("h\ne\t1\t\"ab", 1, 1, {{1, {"ab"}}});
    expectReading("h\ne\t1\ta\t\"", 1, 1, {{1, {"a"}}});
    expectReading("h\n\"e\t1\ta\n", 1, 1, {});
}

TEST(InputQuotes, InsideAnUnquotedCellAreText) {
    expectItem("a\"b\"", "a\"b\"");
    expectItem(" \"a\"", " \"a\"");
    expectItem("a\"", "a\"");
    expectReading("h\ne\t1\ta\"\tb\"\n", 1, 1, {{1, {"a\"", "b\""}}, {1, {"a\""}}, {1, {"b\""}}});
}

TEST(InputQuotes, OtherQuotesAreText) {
    expectItem("'a'", "'a'");
    expectReading("h\ne\t1\t'a\tb'\n", 1, 1, {{1, {"'a", "b'"}}, {1, {"'a"}}, {1, {"b'"}}});
    expectItem("`a`", "`a`");
}

TEST(InputQuotes, EmptyQuotedItemIsSkipped) {
    expectReading("h\ne\t1\t\"\"\n", 1, 1, {});
    expectReading("h\ne\t1\t\"\"\ta\t\"\"\n", 1, 1, {{1, {"a"}}});
}

TEST(InputQuotes, KeyAndTimeMayBeQuoted) {
    expectReading("h\n\"e\"\t\"3\"\t\"a\"\ne\t3\tb\n", 1, 1,
                  {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\n\"e\t0\"\t3\ta\n\"e\t0\"\t3\tb\ne\t0\tc\n", 2, 2,
                  {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}, {1, {"c"}}});
    expectReading("h\n\"\"\t3\ta\n\"\"\t3\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    // With text after the closing quote the cell is read raw, so the time is not a number.
    expectReading("h\ne\t\"3\"x\ta\ne\t0\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

}  // namespace
