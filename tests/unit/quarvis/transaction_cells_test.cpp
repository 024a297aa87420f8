#include <quarvis/history.hpp>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "transactions.hpp"

/// How the syntax of cells affects the transactions that are read: quotes, line ends and bytes
/// beyond ASCII.
namespace {

using namespace std::string_literals;
using quarvis::test::Histories;
using quarvis::test::historiesOf;
using quarvis::test::transactionsIn;

const Histories NO_HISTORIES;

struct RowCase {
    std::string text;  ///< The text after the header.
    Histories histories;
};

void expectContent(const std::vector<RowCase>& rows) {
    for (const RowCase& row : rows)
        EXPECT_EQ(historiesOf(transactionsIn("h\n" + row.text)), row.histories)
            << testing::PrintToString(row.text);
}

TEST(TransactionCells, QuotesProtectDelimitersAndLineEnds) {
    expectContent({
        {"e1\t3\t\"ab\tcd\"\tef\n", {{"e1", {{3, {"ab\tcd", "ef"}}}}}},
        {"e1\t3\t\"ab\ncd\"\tef\n", {{"e1", {{3, {"ab\ncd", "ef"}}}}}},
        {"e1\t3\t\"\n\"\n", {{"e1", {{3, {"\n"}}}}}},
        {"\"e1\"\t\"3\"\t\"ab\"\n", {{"e1", {{3, {"ab"}}}}}},
        {"\"e\t1\"\t\"3\t4\"\tab\n", {{"e\t1", {{3, {"ab"}}}}}},
        {"e1\t3\t\" ab \"\n", {{"e1", {{3, {" ab "}}}}}},
        {"e1\t3\t\"ab\"", {{"e1", {{3, {"ab"}}}}}},
    });
}

TEST(TransactionCells, OfAQuotedLineEndOfTwoCharactersTheFirstIsKept) {
    expectContent({
        {"e1\t3\t\"ab\r\ncd\"\n", {{"e1", {{3, {"ab\rcd"}}}}}},
        {"e1\t3\t\"ab\n\rcd\"\n", {{"e1", {{3, {"ab\ncd"}}}}}},
        {"e1\t3\t\"ab\rcd\"\n", {{"e1", {{3, {"ab\rcd"}}}}}},
        {"e1\t3\t\"ab\n\ncd\"\n", {{"e1", {{3, {"ab\n\ncd"}}}}}},
    });
}

TEST(TransactionCells, ADoubledQuoteInsideClosesTheCellUnlessAnotherFollows) {
    expectContent({
        {"e1\t3\t\"a\"\"b\"\n", {{"e1", {{3, {"\"a\"\"b\""}}}}}},
        {"e1\t3\t\"a\"\"\"\tcd\n", {{"e1", {{3, {"a\"\"", "cd"}}}}}},
        {"e1\t3\t\"\"\"\n", {{"e1", {{3, {"\""}}}}}},
        {"e1\t3\t\"\"\"\"\n", {{"e1", {{3, {"\"\""}}}}}},
        {"e1\t3\t\"\"\n", {{"e1", {{3, {}}}}}},
    });
}

TEST(TransactionCells, TextAfterTheClosingQuoteLeavesTheCellAsWritten) {
    expectContent({
        {"e1\t3\t\"ab\"cd\tef\n", {{"e1", {{3, {"\"ab\"cd", "ef"}}}}}},
        {"e1\t3\t\"ab\" \n", {{"e1", {{3, {"\"ab\" "}}}}}},
        {"e1\t3\t\"a\tb\"c\"d\"\tef\n", {{"e1", {{3, {"\"a\tb\"c\"d\"", "ef"}}}}}},
        {"\"e1\"x\t3\tab\n", {{"\"e1\"x", {{3, {"ab"}}}}}},
    });
}

TEST(TransactionCells, AQuoteThatIsNeverClosedTakesTheRestOfTheData) {
    expectContent({
        {"e1\t3\t\"ab\ne2\t4\tcd\n", {{"e1", {{3, {"ab\ne2\t4\tcd\n"}}}}}},
        {"e1\t3\t\"ab", {{"e1", {{3, {"ab"}}}}}},
        {"e1\t3\t\"", {{"e1", {{3, {}}}}}},
        {"\"e1\t3\tab\n", {{"e1\t3\tab\n", {{0, {}}}}}},
    });
}

TEST(TransactionCells, QuotesInsideACellAndSingleQuotesAreText) {
    expectContent({
        {"e1\t3\tab\"cd\"\tef\n", {{"e1", {{3, {"ab\"cd\"", "ef"}}}}}},
        {"e1\t3\t \"ab\tcd\"\n", {{"e1", {{3, {" \"ab", "cd\""}}}}}},
        {"e1\t3\t'ab\tcd'\n", {{"e1", {{3, {"'ab", "cd'"}}}}}},
    });
}

TEST(TransactionCells, ACarriageReturnJoinsTheLastCellToTheFirstOfTheNextRow) {
    expectContent({
        {"e1\t3\tab\r\ne2\t4\tcd\r\n", {{"e1", {{3, {"ab\ne2", "4", "cd\n"}}}}}},
        {"e1\t3\tab\re2\t4\tcd\r", {{"e1", {{3, {"ab\ne2", "4", "cd\n"}}}}}},
        {"e1\t3\tab\r\r\ncd\n", {{"e1", {{3, {"ab\n\ncd"}}}}}},
        {"e1\t3\r\ne2\t4\tcd\n", {{"e1", {{3, {"4", "cd"}}}}}},
        {"e1\r\ne2\t4\tcd\n", {{"e1\ne2", {{4, {"cd"}}}}}},
        {"\r\ne1\t3\tab\n", {{"\ne1", {{3, {"ab"}}}}}},
        {"e1\t3\t\"ab\"\r\ne2\t4\n", {{"e1", {{3, {"\"ab\"\ne2", "4"}}}}}},
    });
}

TEST(TransactionCells, ALineFeedWithACarriageReturnAfterItIsOneRowEnd) {
    expectContent({
        {"e1\t3\tab\n\re2\t4\tcd\n\r", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
        {"e1\t3\tab\n\r\ne2\t4\tcd", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
    });
    // The header ends at its line feed, before the carriage return.
    EXPECT_EQ(historiesOf(transactionsIn("h\n\re1\t3\tab\n")),
              (Histories{{"\ne1", {{3, {"ab"}}}}}));
}

TEST(TransactionCells, BytesBeyondAsciiBeginAndFillCellsAsAnyOther) {
    for (int byte = 0x80; byte < 0xFF; ++byte) {
        const std::string letter(1, static_cast<char>(byte));
        std::string text = "h\n?\t3\t?\t?ab\tcd?\tef?gh\n";
        std::replace(text.begin(), text.end(), '?', letter[0]);
        const std::set<std::string> items = {letter, letter + "ab", "cd" + letter,
                                             std::string("ef").append(letter).append("gh")};
        EXPECT_EQ(historiesOf(transactionsIn(text)), (Histories{{letter, {{3, items}}}})) << byte;
    }
    expectContent({
        {"\xC3\xA9\t3\t\"\xC3\xA8\t\"\n", {{"\xC3\xA9", {{3, {"\xC3\xA8\t"}}}}}},
        {"e1\t\xB2\tab\n", {{"e1", {{0, {"ab"}}}}}},
    });
}

TEST(TransactionCells, ControlBytesAndNulsAreText) {
    expectContent({
        {"e\0001\t3\t\0\tab\0cd\t\x01\v\f\x7F\n"s,
         {{"e\0001"s, {{3, {"\0"s, "ab\0cd"s, "\x01\v\f\x7F"}}}}}},
    });
}

TEST(TransactionCells, AByteOfAllOnesEndsTheCell) {
    expectContent({
        {"e1\t3\tab\377cd\tef\n", {{"e1", {{3, {"ab", "cd", "ef"}}}}}},
        {"e1\t3\tab\377\tcd\n", {{"e1", {{3, {"ab", "cd"}}}}}},
        {"e1\t3\tab\377\ne2\t4\tcd\n", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
        {"e\3771\t3\tab\n", {{"e", {{1, {"3", "ab"}}}}}},
        {"e1\t3\3774\tab\n", {{"e1", {{3, {"4", "ab"}}}}}},
        {"e1\t3\tab\377", {{"e1", {{3, {"ab"}}}}}},
    });
}

TEST(TransactionCells, AByteOfAllOnesAtTheBeginningOfACellIsAnEmptyCell) {
    expectContent({
        {"e1\t3\t\377ab\tcd\n", {{"e1", {{3, {"ab", "cd"}}}}}},
        {"e1\t\3773\tab\n", {{"e1", {{0, {"3", "ab"}}}}}},
        {"e1\t3\t\377\n", {{"e1", {{3, {}}}}}},
    });
}

TEST(TransactionCells, AByteOfAllOnesAtTheBeginningOfTheRowsEndsTheFile) {
    expectContent({{"\377e1\t3\tab\n", NO_HISTORIES}, {"\377", NO_HISTORIES}});
}

TEST(TransactionCells, AByteOfAllOnesAfterARowEndVanishesAndASecondOneEndsTheFile) {
    expectContent({
        {"e1\t3\tab\n\377e2\t4\tcd\n", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
        {"e1\t3\tab\n\377\377e2\t4\tcd\ne3\t5\tef\n", {{"e1", {{3, {"ab"}}}}}},
    });
}

TEST(TransactionCells, TwoBytesOfAllOnesEndTheRow) {
    expectContent({
        {"e1\t3\tab\377\377e2\t4\tcd\n", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
        {"e1\t3\tab\377\377\ne2\t4\tcd\n", {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}},
    });
}

TEST(TransactionCells, AByteOfAllOnesClosesAQuotedCell) {
    expectContent({
        {"e1\t3\t\"ab\377\tcd\n", {{"e1", {{3, {"ab", "cd"}}}}}},
        {"e1\t3\t\"ab\377cd\"\tef\n", {{"e1", {{3, {"\"ab\"cd\"", "ef"}}}}}},
        {"e1\t3\t\"ab\"\377cd\tef\n", {{"e1", {{3, {"\"ab\"cd", "ef"}}}}}},
    });
}

}  // namespace
