#include <moxtel/row_format.hpp>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/pointer.hpp>

#include "text_streams.hpp"

namespace moxtel::io {
namespace {

using moxtel_tests::readerOf;
using moxtel_tests::Sheet;
using Rfc = RFC4180DelimitedRowFormat;

const Rfc COMMA(',', nullptr);

/// What is left of the text, as the reader gives it.
std::string restOf(TextReader& reader) {
    std::string rest;
    for (int c = reader.read(); c != -1; c = reader.read())
        rest += static_cast<char>(c);
    return rest;
}

// Reading a cell. A row is the text, the cell at its start, and what is left unread.

struct CellRow {
    std::string text;
    std::string cell;
    std::string rest;
};

void expectCells(const DelimitedRowFormat& format, const std::vector<CellRow>& rows) {
    for (const CellRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.text));
        TextReader reader = readerOf(row.text);
        EXPECT_EQ(format.readCell(reader), row.cell);
        EXPECT_EQ(restOf(reader), row.rest);
    }
}

TEST(ReadCell, LeavesTheDelimiterAndTheLineEndUnread) {
    TextReader reader = readerOf("a,b\n");
    EXPECT_EQ(COMMA.readCell(reader), "a");
    EXPECT_EQ(reader.read(), ',');
    EXPECT_EQ(COMMA.readCell(reader), "b");
    EXPECT_EQ(reader.read(), '\n');
    EXPECT_EQ(COMMA.readCell(reader), "");
    EXPECT_EQ(reader.read(), -1);
}

TEST(ReadCell, PlainCellsAreTakenAsTheyStand) {
    expectCells(COMMA, {
                           {"", "", ""},
                           {"\n", "", "\n"},
                           {",a", "", ",a"},
                           {"a", "a", ""},
                           {" a b ,c", " a b ", ",c"},
                           {"a\"b\",c", "a\"b\"", ",c"},
                           {" \"a,b\"", " \"a", ",b\""},
                           {"a;b\tc\n,", "a;b\tc", "\n,"},
                           {std::string("a\0b,", 4), std::string("a\0b", 3), ","},
                       });
}

TEST(ReadCell, ADelimiterInsideQuotesIsContent) {
    expectCells(COMMA, {{"\"x,y\"", "x,y", ""}, {"\"x,y\",z", "x,y", ",z"}});
}

TEST(ReadCell, TextAfterTheClosingQuoteGivesTheRawCell) {
    expectCells(COMMA, {{"\"ab\"c,", "\"ab\"c", ","}});
}

TEST(ReadCell, QuotedCells) {
    expectCells(COMMA, {
                           {"\"\",a", "", ",a"},
                           {"\"\"", "", ""},
                           {"\"\"\n", "", "\n"},
                           {"\"a\nb\",c", "a\nb", ",c"},
                           {"\"a\r\nb\",c", "a\rb", ",c"},
                           {"\"a\n\rb\",c", "a\nb", ",c"},
                           {"\"a\rb\",c", "a\rb", ",c"},
                           {"\"\n\",", "\n", ","},
                           // The second half of a doubled quote closes the cell.
                           {"\"a\"\"b\"", "\"a\"\"b\"", ""},
                           {"\"a\"\"\"", "a\"\"", ""},
                           {"\"a\"\",", "a\"", ","},
                           {"\"\"\"\"", "\"\"", ""},
                           {"\"\"\"", "\"", ""},
                           {"\"\"a", "\"\"a", ""},
                           {"\"\"\"a", "\"\"\"a", ""},
                           {"\"\"\"\"\"", "\"\"\"", ""},
                           // Text after the closing quote, up to the end of the cell.
                           {"\"a\" ,b", "\"a\" ", ",b"},
                           {"\"a\"b\"c\",d", "\"a\"b\"c\"", ",d"},
                           {"\"a,b\"c\nd", "\"a,b\"c", "\nd"},
                           {"\"a\"\r\nb,c", "\"a\"\nb", ",c"},
                           // No closing quote.
                           {"\"", "", ""},
                           {"\"a", "a", ""},
                           {"\"a,b\n", "a,b\n", ""},
                           {"\"a\r\n", "a\r", ""},
                       });
}

TEST(ReadCell, BytesAbove7FBelongToTheCellWhereverTheyStand) {
    for (int byte = 0x80; byte <= 0xfe; ++byte) {
        const std::string x(1, static_cast<char>(byte));
        std::string quoted = x;
        quoted.append(",").append(x);
        expectCells(COMMA, {
                               {x + ",a", x, ",a"},
                               {"a" + x + "c,", "a" + x + "c", ","},
                               {"\"" + quoted + "\"", quoted, ""},
                               {"\"a\"" + x, "\"a\"" + x, ""},
                           });
    }
}

TEST(ReadCell, ByteFFEndsTheCellAndIsConsumed) {
    expectCells(COMMA, {
                           {"\xff,", "", ","},
                           {"a\xff"
                            "b",
                            "a", "b"},
                           {"a\xff", "a", ""},
                       });
}

TEST(ReadCell, ByteFFInsideQuotesMakesTheCellOneWithTextBehindIt) {
    expectCells(COMMA, {
                           {"\"a\xff", "a", ""},
                           {"\"a\xff,b", "a", ",b"},
                           {"\"a\xff"
                            "b,c",
                            "\"a\"b", ",c"},
                           {"\"a\"\xff"
                            "b,c",
                            "\"a\"b", ",c"},
                       });
}

TEST(ReadCell, APlainLastCellTakesInACrLf) {
    expectCells(COMMA, {
                           {"a\r\nb,c", "a\nb", ",c"},
                           {"a\r\n", "a\n", ""},
                           {"a\r\nb\nc", "a\nb", "\nc"},
                           {"\r\n,", "\n", ","},
                       });
}

TEST(ReadCell, ALoneCrIsPartOfTheCellAndALfCrEndsIt) {
    expectCells(COMMA, {{"a\rb,c", "a\nb", ",c"}, {"a\n\rb", "a", "\nb"}});
}

TEST(ReadCell, OnlyTheOpeningQuoteClosesTheCell) {
    const Rfc format(',', "'\"");
    expectCells(format, {
                            {"'a\"b',c", "a\"b", ",c"},
                            {"\"a'b\",c", "a'b", ",c"},
                            {"'a\",b", "a\",b", ""},
                        });
}

TEST(ReadCell, WithoutQuotesNoCharacterOpensAQuotedCell) {
    const Rfc format(',', "");
    EXPECT_FALSE(format.isQuote('"'));
    expectCells(format, {{"\"a,b\"", "\"a", ",b\""}});
}

TEST(ReadCell, AQuoteAbove7FWorksLikeAnyOther) {
    const Rfc format('\x80', "\xab");
    expectCells(format, {{"\xab"
                          "a\x80"
                          "b\xab\x80",
                          "a\x80"
                          "b",
                          "\x80"}});
}

// Single decisions.

TEST(RowFormat, TheDelimiterIsComparedAsASignedChar) {
    EXPECT_TRUE(COMMA.isDelim(','));
    EXPECT_FALSE(COMMA.isDelim(';'));
    EXPECT_FALSE(COMMA.isDelim(-1));
    const Rfc high('\xe9', nullptr);
    EXPECT_TRUE(high.isDelim(-23));
    EXPECT_FALSE(high.isDelim(0xe9));
}

TEST(RowFormat, NothingIsACommentAndEveryTextIsQuotedNotEscaped) {
    const EscapedDelimitedRowFormat escaped(',', nullptr, '\\', '#');
    for (const DelimitedRowFormat* format : {static_cast<const DelimitedRowFormat*>(&COMMA),
                                             static_cast<const DelimitedRowFormat*>(&escaped)}) {
        EXPECT_FALSE(format->isComment('#'));
        for (const char* text : {"", "a", "a,b", "\"", "#"}) {
            EXPECT_TRUE(format->shouldQuote(text)) << text;
            EXPECT_FALSE(format->shouldEscape(text)) << text;
        }
    }
}

TEST(RowFormat, ARowEndsAtALineFeedOnly) {
    struct Row {
        std::string text;
        bool endRow;
        bool endCell;
    };
    const std::vector<Row> rows = {
        {"\n", true, true},     {"\n\r", true, true}, {"\r\n", false, false}, {"\r", false, false},
        {",", false, true},     {"", false, true},    {"a", false, false},    {"\xff", false, true},
        {"\xfe", false, false}, {"\"", false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.text));
        TextReader forRow = readerOf(row.text);
        TextReader forCell = readerOf(row.text);
        EXPECT_EQ(COMMA.endRow(forRow), row.endRow);
        EXPECT_EQ(COMMA.endCell(forCell), row.endCell);
        EXPECT_EQ(forCell.col(), 0U);
    }
}

TEST(RowFormat, QuotesDefaultToTheDoubleQuote) {
    EXPECT_STREQ(DelimitedRowFormat::DEFAULT_QUOTES, "\"");
    EXPECT_TRUE(COMMA.isQuote('"'));
    EXPECT_FALSE(COMMA.isQuote('\''));
    EXPECT_FALSE(COMMA.isQuote(-1));
    EXPECT_EQ(COMMA.defaultQuote(), '"');
}

TEST(RowFormat, TheDefaultQuoteIsTheLeastOfTheQuotes) {
    EXPECT_EQ(Rfc(',', "'\"").defaultQuote(), '"');
    EXPECT_EQ(Rfc(',', "\"\xab").defaultQuote(), '\xab');
    EXPECT_EQ(Rfc(',', "").defaultQuote(), '\0');
    EXPECT_EQ(COMMA.ensureQuote('\''), '\'');
    EXPECT_EQ(COMMA.ensureQuote('\0'), '"');
}

// Quoting.

TEST(Quote, ALoneQuoteBecomesFour) {
    EXPECT_EQ(COMMA.quote("\""), "\"\"\"\"");
}

TEST(Quote, DoublesTheQuotesInTheText) {
    EXPECT_EQ(COMMA.quote(""), "\"\"");
    EXPECT_EQ(COMMA.quote("a,b"), "\"a,b\"");
    EXPECT_EQ(COMMA.quote("a\"b'c"), "\"a\"\"b'c\"");
    EXPECT_EQ(COMMA.quote('\'', "a\"b'c"), "'a\"b''c'");
    EXPECT_EQ(COMMA.quote(0, "a\"b"), COMMA.quote("a\"b"));
}

TEST(Quote, WithoutQuotesTheTextStaysAsItIs) {
    const Rfc format(',', "");
    EXPECT_EQ(format.quote("a\"b"), "a\"b");
    EXPECT_EQ(format.quote('\'', "a'b"), "'a''b'");
}

TEST(Unquote, LeavesTextThatIsNoQuotedCell) {
    for (const char* text : {"", "\"", "a", "ab", "a\"", "\"a", "'a'"})
        EXPECT_EQ(COMMA.unquote(0, text), text);
}

TEST(Unquote, TakesTheFirstAndTheLastCharacterAway) {
    EXPECT_EQ(COMMA.unquote(0, "\"\""), "");
    EXPECT_EQ(COMMA.unquote(0, "\"ab\""), "ab");
    EXPECT_EQ(COMMA.unquote(0, "\"a\"\"b\""), "a\"\"b");
    EXPECT_EQ(Rfc(',', "'\"").unquote(0, "'a'"), "a");
    EXPECT_EQ(Rfc(',', "'\"").unquote(0, "'a\""), "'a\"");
}

TEST(Unquote, AGivenSymbolIsTakenOnTrust) {
    EXPECT_EQ(COMMA.unquote('\'', "'ab'"), "ab");
    EXPECT_EQ(COMMA.unquote('\'', "xab'"), "ab");
    EXPECT_EQ(COMMA.unquote('\'', "'ab\""), "'ab\"");
    EXPECT_EQ(COMMA.unquote('\'', "'"), "'");
}

// Writing.

TEST(WriteCell, QuotesWithTheDefaultQuoteWhateverTheFormat) {
    Rfc rfc(',', nullptr);
    EscapedDelimitedRowFormat escaped(',', nullptr, '\\', '#');
    for (DelimitedRowFormat* format :
         {static_cast<DelimitedRowFormat*>(&rfc), static_cast<DelimitedRowFormat*>(&escaped)}) {
        Sheet sheet;
        EXPECT_EQ(format->writeCell(sheet.writer, "a\\\"b", false), 7U);
        EXPECT_EQ(format->writeDelim(sheet.writer), 1U);
        EXPECT_EQ(format->writeCell(sheet.writer, "", false), 2U);
        EXPECT_EQ(sheet.out.str(), "\"a\\\"\"b\",\"\"");
        EXPECT_EQ(sheet.writer.col(), 10U);
    }
}

TEST(WriteCell, RawTextIsWrittenAsItIs) {
    Rfc format('\t', nullptr);
    Sheet sheet;
    EXPECT_EQ(format.writeCell(sheet.writer, "a\"\nb", true), 4U);
    EXPECT_EQ(format.writeDelim(sheet.writer), 1U);
    EXPECT_EQ(sheet.out.str(), "a\"\nb\t");
    EXPECT_EQ(sheet.writer.row(), 1U);
}

TEST(WriteCell, ReportsWhatTheDeviceTook) {
    Rfc format(',', nullptr);
    char block[2];
    TextWriter writer(Device::wrapArray(block, 2, OPEN_READ_WRITE));
    EXPECT_EQ(format.writeCell(writer, "abc", false), 2U);
    EXPECT_EQ(format.writeDelim(writer), 0U);
}

/// A format that quotes nothing and escapes, or not, as it is told.
class UnquotedFormat : public EscapedDelimitedRowFormat {
  public:
    explicit UnquotedFormat(bool escaping)
        : EscapedDelimitedRowFormat(',', nullptr, '\\', '#'), m_escaping(escaping) {}
    bool shouldQuote(const std::string&) const override { return false; }
    bool shouldEscape(const std::string&) const override { return m_escaping; }

  private:
    bool m_escaping;
};

TEST(WriteCell, FollowsThePredicates) {
    Sheet sheet;
    EXPECT_EQ(UnquotedFormat(true).writeCell(sheet.writer, "a,b", false), 4U);
    EXPECT_EQ(UnquotedFormat(false).writeCell(sheet.writer, "a,b", false), 0U);
    EXPECT_EQ(UnquotedFormat(false).writeCell(sheet.writer, "c,d", true), 3U);
    EXPECT_EQ(sheet.out.str(), "a\\,bc,d");
}

TEST(WriteCell, CellsWithoutQuotesComeBack) {
    for (const char* text : {"", "a", "a,b", "a\nb", " ", "\x80"}) {
        Rfc format(',', nullptr);
        Sheet sheet;
        format.writeCell(sheet.writer, text, false);
        expectCells(format, {{sheet.out.str() + ",x", text, ",x"}});
    }
}

// Escaping.

TEST(Escape, TheQuotingFormatLeavesTextAsItIs) {
    Rfc format(',', nullptr);
    Sheet sheet;
    EXPECT_EQ(format.escape("a,\"\\\n"), "a,\"\\\n");
    EXPECT_EQ(format.unescape("a,\"\\\n"), "a,\"\\\n");
    EXPECT_EQ(format.escape(sheet.writer, "a,\""), 3U);
    EXPECT_EQ(sheet.out.str(), "a,\"");
}

TEST(Escape, PutsTheEscapeCharacterBeforeSpecialOnes) {
    struct Row {
        std::string text;
        std::string escaped;
    };
    const std::vector<Row> rows = {
        {"", ""},
        {"abc", "abc"},
        {"a,b", "a\\,b"},
        {"\"'", "\\\"\\'"},
        {"\\", "\\\\"},
        {"#a", "\\#a"},
        {"a\nb\rc", "a\\nb\\rc"},
        {"\r\n", "\\r\\n"},
        {"\\n", "\\\\n"},
        {std::string("\0\xff", 2), std::string("\0\xff", 2)},
    };
    EscapedDelimitedRowFormat format(',', "'\"", '\\', '#');
    for (const Row& row : rows) {
        EXPECT_EQ(format.escape(row.text), row.escaped);
        EXPECT_EQ(format.unescape(row.escaped), row.text);
        Sheet sheet;
        EXPECT_EQ(format.escape(sheet.writer, row.text), row.escaped.size());
        EXPECT_EQ(sheet.out.str(), row.escaped);
    }
}

TEST(Unescape, LeavesAnEscapeCharacterBeforeAnythingElse) {
    const EscapedDelimitedRowFormat format(',', nullptr, '\\', '#');
    for (const char* text : {"\\", "a\\", "\\a", "\\x\\y\\"})
        EXPECT_EQ(format.unescape(text), text);
    EXPECT_EQ(format.unescape("\\a\\,\\"), "\\a,\\");
}

TEST(Escape, WithoutAnEscapeCharacterTextStaysAsItIs) {
    const EscapedDelimitedRowFormat format(',', nullptr, '\0', '#');
    EXPECT_EQ(format.escape("a,\"#\n"), "a,\"#\n");
    EXPECT_EQ(format.unescape("a,\"#\n"), "a,\"#\n");
}

TEST(Escape, WithoutACommentCharacterANulIsPlainText) {
    const std::string text("a\0#", 3);
    const EscapedDelimitedRowFormat format(',', nullptr, '\\', '\0');
    EXPECT_EQ(format.escape(text), text);
}

TEST(Escape, LettersOfLineEndsGiveWayToTheFormatsOwn) {
    const EscapedDelimitedRowFormat format('n', "rm", '\\', 's');
    EXPECT_EQ(format.escape("\n\rnrms"), "\\l\\t\\n\\r\\m\\s");
    EXPECT_EQ(format.unescape("\\l\\t\\n\\r\\m\\s"), "\n\rnrms");
}

TEST(Escape, EveryTextComesBackOnOneLine) {
    const EscapedDelimitedRowFormat formats[] = {
        {',', nullptr, '\\', '#'},     {'\t', "", '\\', '\0'},   {',', "\"'", '"', '#'},
        {'n', nullptr, '\\', 'r'},     {'\0', "nrml", 'a', ','}, {'r', "n", 'n', 'r'},
        {'\xff', "\x80", '\xfe', ' '},
    };
    const std::string alphabet("\n\rnrmlsq,\\\"'#a \t\0\x80\xfe\xff", 20);
    std::mt19937 random(20240501);
    for (int i = 0; i < 2000; ++i) {
        std::string text;
        for (auto length = random() % 12; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        for (const EscapedDelimitedRowFormat& format : formats) {
            const std::string escaped = format.escape(text);
            ASSERT_EQ(format.unescape(escaped), text) << ::testing::PrintToString(escaped);
            ASSERT_EQ(escaped.find_first_of("\n\r"), std::string::npos);
        }
    }
}

TEST(RowFormat, IsHeldInASharedHandle) {
    mem::Pointer<DelimitedRowFormat> format(new Rfc(';', nullptr));
    {
        const mem::Pointer<DelimitedRowFormat> other(new Rfc('|', "'"));
        EXPECT_TRUE(other->isDelim('|'));
        format = other;
    }
    EXPECT_TRUE(format->isDelim('|'));
    EXPECT_EQ(format->defaultQuote(), '\'');
}

}  // namespace
}  // namespace moxtel::io
