#include <quarvis/history.hpp>

#include <filesystem>
#include <ios>
#include <istream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_dir.hpp"
#include "transactions.hpp"

namespace {

using namespace std::string_literals;
using quarvis::rule::History;
using quarvis::rule::TransactionSet;
using quarvis::test::Histories;
using quarvis::test::historiesOf;
using quarvis::test::transactionsIn;
using support::TempDir;

const Histories NOTHING;

TEST(TransactionFile, AnEmptyInputAddsNothing) {
    EXPECT_EQ(historiesOf(transactionsIn("")), NOTHING);
}

TEST(TransactionFile, AHeaderAloneAddsNothing) {
    EXPECT_EQ(historiesOf(transactionsIn("entity\ttime\titem\n")), NOTHING);
    EXPECT_EQ(historiesOf(transactionsIn("entity\ttime\titem")), NOTHING);
    EXPECT_EQ(historiesOf(transactionsIn("\n")), NOTHING);
}

TEST(TransactionFile, TheHeaderEndsAtTheFirstLineFeedWhateverItHolds) {
    const Histories expected = {{"e1", {{3, {"ab"}}}}};
    for (const std::string& header : {""s, "e0\t1\txy"s, "\"open quote"s, "\xFF\xFE"s, "h\r"s,
                                      "one\rtwo\rthree"s, "nul\0nul"s, std::string(100000, 'h')})
        EXPECT_EQ(historiesOf(transactionsIn(header + "\ne1\t3\tab\n")), expected) << header;
}

TEST(TransactionFile, RowsOfOneEntityAndTimeMakeOneTransaction) {
    TransactionSet transactions = transactionsIn("h\ne1\t3\tab\tcd\ne1\t3\tcd\tef\n");
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab", "cd", "ef"}}}}}));

    transactions = transactionsIn("h\ne1\t3\tab\tcd\ne1\t3\tcd\tef\ne1\t7\n");
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab", "cd", "ef"}}, {7, {}}}}}));
    EXPECT_EQ(transactions.transactionCount(), 2U);
    EXPECT_EQ(transactions.size(), 1U);
}

TEST(TransactionFile, ARowWithoutItemsKeepsThoseThatTheTransactionHas) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3\tab\ne1\t3\n")),
              (Histories{{"e1", {{3, {"ab"}}}}}));
}

TEST(TransactionFile, RowsNeedNoOrder) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne2\t9\tab\ne1\t5\tcd\ne2\t1\tef\ne1\t5\tgh\n")),
              (Histories{{"e1", {{5, {"cd", "gh"}}}}, {"e2", {{1, {"ef"}}, {9, {"ab"}}}}}));
}

TEST(TransactionFile, ItemsAndKeysKeepTheirBlanks) {
    EXPECT_EQ(
        historiesOf(transactionsIn("h\ne1\t1\tab\t ab\tab \t \ne1 \t1\n e1\t1\n")),
        (Histories{
            {"e1", {{1, {"ab", " ab", "ab ", " "}}}}, {"e1 ", {{1, {}}}}, {" e1", {{1, {}}}}}));
}

TEST(TransactionFile, EmptyItemCellsAreSkipped) {
    for (const char* row : {"e1\t1\tab\t\tcd\n", "e1\t1\t\tab\tcd\n", "e1\t1\tab\tcd\t\n",
                            "e1\t1\t\t\t\tab\t\t\tcd\t\t", "e1\t1\tab\t\"\"\tcd\n"})
        EXPECT_EQ(historiesOf(transactionsIn("h\n"s + row)),
                  (Histories{{"e1", {{1, {"ab", "cd"}}}}}))
            << row;
}

TEST(TransactionFile, TimesAreTheNumbersThatTheirTextsBeginWith) {
    struct Row {
        std::string text;
        History::Time time;
    };
    const std::vector<Row> rows = {
        {"0", 0},
        {"3", 3},
        {"007", 7},
        {"+7", 7},
        {"4294967295", 4294967295U},
        // Not numbers.
        {"x", 0},
        {"", 0},
        {" 7", 0},
        {"+", 0},
        {"-", 0},
        {"--7", 0},
        {"-x", 0},
        // Numbers followed by other characters.
        {"12x", 12},
        {"12 ", 12},
        {"3.9", 3},
        {"1e3", 1},
        {"0x10", 0},
        {"12\0003"s, 12},
        // Negative numbers wrap.
        {"-1", 4294967295U},
        {"-5x", 4294967291U},
        {"-4294967295", 1},
        {"-0", 0},
        // An overflow is noticed if the wrapped value is less than the value before the last
        // digit...
        {"4294967296", 0},
        {"4294967299", 0},
        {"-4294967296", 0},
        // ... but 9999999999 - 2 * 2^32 is not less.
        {"9999999999", 1410065407U},
        {"-9999999999", 2884901889U},
    };
    for (const Row& row : rows)
        EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t" + row.text + "\tab\n")),
                  (Histories{{"e1", {{row.time, {"ab"}}}}}))
            << row.text;
}

TEST(TransactionFile, ARowOfAKeyAloneTakesItsTimeFromTheNextRow) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\n5\tab\tcd\ne3\t1\tef\n")),
              (Histories{{"e1", {{5, {"ab", "cd"}}}}, {"e3", {{1, {"ef"}}}}}));
    // The key of the next row is read as the time.
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\ne2\t5\tab\ne3\t1\tef\n")),
              (Histories{{"e1", {{0, {"5", "ab"}}}}, {"e3", {{1, {"ef"}}}}}));
}

TEST(TransactionFile, ALastRowOfAKeyAloneHasTheTimeZero) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\n")), (Histories{{"e1", {{0, {}}}}}));
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1")), (Histories{{"e1", {{0, {}}}}}));
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t")), (Histories{{"e1", {{0, {}}}}}));
}

TEST(TransactionFile, ARowThatBeginsWithTheDelimiterLosesItsEmptyKey) {
    EXPECT_EQ(historiesOf(transactionsIn("h\n\te1\t3\tab\n\te2\t4\tcd\n")),
              (Histories{{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}));
    // The second of two delimiters follows an empty key.
    EXPECT_EQ(historiesOf(transactionsIn("h\n\t\t3\tab\n")), (Histories{{"", {{3, {"ab"}}}}}));
    EXPECT_EQ(historiesOf(transactionsIn("h\n\n\t3\tab\n")), (Histories{{"", {{3, {"ab"}}}}}));
}

TEST(TransactionFile, AQuotedKeyMayBeEmpty) {
    EXPECT_EQ(historiesOf(transactionsIn("h\n\"\"\t3\tab\n")), (Histories{{"", {{3, {"ab"}}}}}));
}

TEST(TransactionFile, AnEmptyLineBetweenRowsDoesNoHarm) {
    const Histories expected = {{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}};
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3\tab\n\ne2\t4\tcd\n")), expected);
    EXPECT_EQ(historiesOf(transactionsIn("h\n\ne1\t3\tab\n\ne2\t4\tcd\n")), expected);
}

TEST(TransactionFile, TwoEmptyLinesBetweenRowsTakeTheNextKeyForATime) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3\tab\n\n\ne2\t4\tcd\n")),
              (Histories{{"e1", {{3, {"ab"}}}}, {"", {{0, {"4", "cd"}}}}}));
}

TEST(TransactionFile, AnEmptyLastLineIsAnEntityOfTheEmptyKey) {
    const TransactionSet transactions = transactionsIn("h\ne1\t3\tab\n\n");
    EXPECT_EQ(historiesOf(transactions), (Histories{{"", {{0, {}}}}, {"e1", {{3, {"ab"}}}}}));
    EXPECT_EQ(transactions.size(), 2U);
    EXPECT_EQ(transactions.transactionCount(), 2U);
    EXPECT_EQ(historiesOf(transactionsIn("h\n\n")), (Histories{{"", {{0, {}}}}}));
    EXPECT_EQ(historiesOf(transactionsIn("h\n\n\n")), (Histories{{"", {{0, {}}}}}));
}

TEST(TransactionFile, TheLastRowNeedsNoLineEnd) {
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3\tab")), (Histories{{"e1", {{3, {"ab"}}}}}));
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3")), (Histories{{"e1", {{3, {}}}}}));
}

TEST(TransactionFile, CommentLinesAreRows) {
    EXPECT_EQ(historiesOf(transactionsIn("h\n#e1\t3\tab\n")), (Histories{{"#e1", {{3, {"ab"}}}}}));
}

TEST(TransactionFile, CellsAreSeparatedByTheDelimiterAlone) {
    for (const char delim : {',', ';', '|', ' ', '=', '5', 'a', '\0', '\x80', '\xFE'}) {
        const std::string text = "h\nkx"s + delim + "3" + delim + "yy" + delim + "z\tz\n";
        EXPECT_EQ(historiesOf(transactionsIn(text, delim)),
                  (Histories{{"kx", {{3, {"yy", "z\tz"}}}}}))
            << static_cast<int>(delim);
    }
    EXPECT_EQ(historiesOf(transactionsIn("h\ne1\t3\tab,cd;ef gh\n")),
              (Histories{{"e1", {{3, {"ab,cd;ef gh"}}}}}));
}

TEST(TransactionFile, ReadingTwiceChangesNothingMore) {
    const std::string text = "h\ne1\t3\tab\tcd\ne2\t7\ne1\t4\tef\n\n";
    TransactionSet transactions;
    for (int round = 0; round < 2; ++round) {
        std::istringstream in(text);
        transactions.readInto(in, '\t');
        EXPECT_EQ(historiesOf(transactions), (Histories{{"", {{0, {}}}},
                                                        {"e1", {{3, {"ab", "cd"}}, {4, {"ef"}}}},
                                                        {"e2", {{7, {}}}}}));
    }
}

TEST(TransactionFile, ReadingMergesIntoWhatTheSetHolds) {
    TransactionSet transactions = transactionsIn("h\ne1\t3\tab\ne2\t1\tcd\n");
    std::istringstream in("h\ne1\t3\tef\ne1\t4\tgh\ne3\t5\tij\n");
    transactions.readInto(in, '\t');
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab", "ef"}}, {4, {"gh"}}}},
                                                    {"e2", {{1, {"cd"}}}},
                                                    {"e3", {{5, {"ij"}}}}}));
}

TEST(TransactionFile, ReadingBeginsWhereTheStreamStands) {
    std::istringstream in("skipped\nheader\ne1\t3\tab\n");
    std::string skipped;
    std::getline(in, skipped);
    TransactionSet transactions;
    transactions.readInto(in, '\t');
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab"}}}}}));
}

TEST(TransactionFile, AFailedStreamAddsNothing) {
    std::istringstream in("h\ne1\t3\tab\n");
    in.setstate(std::ios::failbit);
    TransactionSet transactions;
    transactions.readInto(in, '\t');
    EXPECT_EQ(historiesOf(transactions), NOTHING);
}

/// A buffer that provides its text and then fails, like a device that breaks.
class BreakingBuffer : public std::streambuf {
  public:
    explicit BreakingBuffer(std::string text) : m_text(std::move(text)) {
        setg(m_text.data(), m_text.data(), m_text.data() + m_text.size());
    }

  protected:
    int_type underflow() override { throw std::runtime_error("broken"); }

  private:
    std::string m_text;
};

TEST(TransactionFile, WhatTheStreamThrowsPropagatesAndTheRowsBeforeStay) {
    BreakingBuffer buffer("h\ne1\t3\tab\ne2\t4\tcd\nbroken");
    std::istream in(&buffer);
    in.exceptions(std::ios::badbit);
    TransactionSet transactions;
    EXPECT_THROW(transactions.readInto(in, '\t'), std::runtime_error);
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab"}}}}, {"e2", {{4, {"cd"}}}}}));
}

TEST(TransactionFile, OfARowInWhichTheStreamThrowsTheItemsBeforeStay) {
    const auto historiesBefore = [](const std::string& text) {
        std::istringstream in(text);
        in.exceptions(std::ios::eofbit);
        TransactionSet transactions;
        EXPECT_THROW(transactions.readInto(in, '\t'), std::ios::failure) << text;
        return historiesOf(transactions);
    };
    EXPECT_EQ(historiesBefore("h\ne1\t3\tcd\tab\n"), (Histories{{"e1", {{3, {"ab", "cd"}}}}}));
    EXPECT_EQ(historiesBefore("h\ne1\t3\tcd\tab\tbroken"),
              (Histories{{"e1", {{3, {"ab", "cd"}}}}}));
    EXPECT_EQ(historiesBefore("h\ne1\t3\t"), (Histories{{"e1", {{3, {}}}}}));
    EXPECT_EQ(historiesBefore("h\ne1\t3"), NOTHING);
    EXPECT_EQ(historiesBefore("h\ne1"), NOTHING);
}

TEST(TransactionFilePath, ReadsTheFile) {
    const TempDir dir;
    const std::string path = dir.write("transactions", "h\ne1,3,ab,cd\n");
    TransactionSet transactions;
    transactions.readInto(path, ',');
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab", "cd"}}}}}));
}

TEST(TransactionFilePath, AMissingFileAddsNothing) {
    const TempDir dir;
    TransactionSet transactions = transactionsIn("h\ne1\t3\tab\n");
    transactions.readInto(dir / "missing", '\t');
    transactions.readInto(dir / "missing/file", '\t');
    transactions.readInto("", '\t');
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab"}}}}}));
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
}

TEST(TransactionFilePath, ADirectoryAddsNothing) {
    const TempDir dir;
    TransactionSet transactions = transactionsIn("h\ne1\t3\tab\n");
    transactions.readInto(dir.path().string(), '\t');
    EXPECT_EQ(historiesOf(transactions), (Histories{{"e1", {{3, {"ab"}}}}}));
}

TEST(TransactionFilePath, AnEmptyFileAddsNothing) {
    const TempDir dir;
    TransactionSet transactions;
    transactions.readInto(dir.write("empty", ""), '\t');
    EXPECT_EQ(historiesOf(transactions), NOTHING);
}

}  // namespace
