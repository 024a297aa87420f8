/// Tables that are written by a format, read by the parser and written again: the same cells and
/// the same bytes, except for those told behind each way of writing.

#include <moxtel/row_parser.hpp>

#include <cstddef>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/memory.hpp>
#include <moxtel/row_format.hpp>
#include <moxtel/text.hpp>

#include "draws.hpp"

namespace moxtel::io {
namespace {

using Cells = std::vector<std::string>;
using Table = std::vector<Cells>;
using Rfc = RFC4180DelimitedRowFormat;
using Escaped = EscapedDelimitedRowFormat;

enum Writing { QUOTED, RAW, ESCAPED };

std::string written(const Table& table, DelimitedRowFormat& format, Writing writing) {
    std::ostringstream out;
    TextWriter writer(out);
    for (const Cells& row : table) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0)
                format.writeDelim(writer);
            if (writing == ESCAPED)
                format.escape(writer, row[i]);
            else
                format.writeCell(writer, row[i], writing == RAW);
        }
        writer.writeLine();
    }
    return out.str();
}

Table parsed(const std::string& text, const DelimitedRowFormat& format) {
    mem::protect(&format);
    Table table;
    {
        DelimitedRowParser parser(&format);
        parser.openFromString(text);
        while (parser.hasRow()) {
            table.emplace_back();
            while (parser.hasCell())
                table.back().push_back(parser.nextCell());
        }
    }
    mem::free(const_cast<DelimitedRowFormat*>(&format));
    return table;
}

void expectRoundTrip(const Table& table, DelimitedRowFormat& format, Writing writing) {
    const std::string text = written(table, format, writing);
    const Table again = parsed(text, format);
    EXPECT_EQ(again, table) << text;
    EXPECT_EQ(written(again, format, writing), text);
}

/// A table that comes back as another one.
struct Lost {
    Table table;
    std::string text;
    Table reread;
};

void expectLost(const std::vector<Lost>& rows, DelimitedRowFormat& format, Writing writing) {
    for (const Lost& row : rows) {
        EXPECT_EQ(written(row.table, format, writing), row.text);
        EXPECT_EQ(parsed(row.text, format), row.reread) << row.text;
        EXPECT_NE(written(row.reread, format, writing), row.text);
    }
}

class TableDraws : public moxtel_tests::Draws {
  public:
    using Draws::Draws;

    /// Bytes but for those in `without`, mostly of few kinds.
    std::string cell(const std::string& without) {
        static const std::string FEW = ",;\t \n\r\"'`\\ab";
        std::string cell;
        for (auto length = oneIn(20) ? below(300) : below(6); length > 0; --length) {
            const char c = oneIn(3) ? static_cast<char>(below(256)) : FEW[below(FEW.size())];
            if (without.find(c) == std::string::npos)
                cell += c;
        }
        return cell;
    }

    Table table(const std::string& without) {
        Table table(below(8));
        for (Cells& row : table) {
            row.resize(below(6));
            for (std::string& each : row)
                each = cell(without);
        }
        return table;
    }
};

// Quoted cells: all that does not hold the quote, a line end of two characters or a byte 0xFF.

void expectQuotedTablesComeBack(DelimitedRowFormat& format, const std::string& quote) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        TableDraws draws(seed);
        expectRoundTrip(draws.table(quote + "\xff" + (draws.oneIn(2) ? '\r' : '\n')), format,
                        QUOTED);
    }
}

TEST(QuotedTableRoundTrip, EveryKindOfCellComesBack) {
    Rfc format(',', nullptr);
    for (const Table& table :
         {Table{}, Table{{}}, Table{{}, {}, {"a"}, {}}, Table{{""}}, Table{{"", ""}, {"", "", "b"}},
          Table{{"a,b", ","}, {"a\nb", "\n", "\n\n"}, {" ", " a "}, {"'a'", "`"}, {"\\", "#"}},
          Table{{"\r", "a\rb", "\r\r"}, {std::string(1, '\0')}, {"\x80", "\xfe"}},
          Table{Cells(100, "cell")}, Table(100, Cells{"a", "", "b,c"})})
        expectRoundTrip(table, format, QUOTED);
}

TEST(QuotedTableRoundTrip, RandomTablesComeBackWhateverTheDelimiterAndTheQuotes) {
    for (const char delim : {',', '\t', ' ', 'a', '\0', '\x80'}) {
        SCOPED_TRACE(delim);
        Rfc format(delim, nullptr);
        expectQuotedTablesComeBack(format, "\"");
        Rfc two(delim, "'\"");
        expectQuotedTablesComeBack(two, "\"");
        Rfc other(delim, "`");
        expectQuotedTablesComeBack(other, "`");
        Escaped escaped(delim, nullptr, '\\', '#');
        expectQuotedTablesComeBack(escaped, "\"");
    }
}

TEST(QuotedTableRoundTrip, AQuoteInsideMakesTheCellComeBackWithItsQuotes) {
    Rfc format(',', nullptr);
    expectLost(
        {
            {{{"a\"b"}}, "\"a\"\"b\"\n", {{"\"a\"\"b\""}}},
            {{{"a\"b", "c"}}, "\"a\"\"b\",\"c\"\n", {{"\"a\"\"b\"", "c"}}},
            {{{"a\""}}, "\"a\"\"\"\n", {{"a\"\""}}},
            {{{"\""}}, "\"\"\"\"\n", {{"\"\""}}},
            {{{"\"a"}}, "\"\"\"a\"\n", {{"\"\"\"a\""}}},
        },
        format, QUOTED);
}

TEST(QuotedTableRoundTrip, ALineEndOfTwoCharactersComesBackAsItsFirst) {
    Rfc format(',', nullptr);
    expectLost(
        {
            {{{"a\r\nb"}}, "\"a\r\nb\"\n", {{"a\rb"}}},
            {{{"a\n\rb"}}, "\"a\n\rb\"\n", {{"a\nb"}}},
            {{{"\r\n", "\r\n\r\n"}}, "\"\r\n\",\"\r\n\r\n\"\n", {{"\r", "\r\r"}}},
        },
        format, QUOTED);
}

TEST(QuotedTableRoundTrip, AByteFFClosesTheCell) {
    Rfc format(',', nullptr);
    expectLost(
        {
            {{{"a\xff,c"}}, "\"a\xff,c\"\n", {{"a", "c\""}}},
            {{{"a\xffyz"}}, "\"a\xffyz\"\n", {{"\"a\"yz\""}}},
        },
        format, QUOTED);
}

TEST(QuotedTableRoundTrip, InTheEscapedFormatTheSameComesBackAndTheSameIsLost) {
    Escaped format(',', nullptr, '\\', '#');
    expectRoundTrip({{"a,b", "\\", "#", "\n"}, {}, {"", "\\,"}}, format, QUOTED);
    expectLost(
        {
            {{{"a\"b"}}, "\"a\"\"b\"\n", {{"\"a\"\"b\""}}},
            {{{"a\r\nb"}}, "\"a\r\nb\"\n", {{"a\rb"}}},
        },
        format, QUOTED);
}

// Raw cells, and those of a format without quotes: text of one line without delimiters that does
// not begin with a quote, in rows that do not begin with an empty cell.

TEST(RawTableRoundTrip, PlainTablesComeBack) {
    Rfc format(',', nullptr);
    for (const Table& table : {Table{}, Table{{}, {"a"}, {}}, Table{{"a", "", "b", ""}},
                               Table{{"a\"", "b\"c", "'d'", " ", "\\"}, {"\x80\xfe"}}})
        expectRoundTrip(table, format, RAW);
}

TEST(RawTableRoundTrip, RandomPlainTablesComeBack) {
    Rfc raw(',', nullptr);
    Rfc withoutQuotes(',', "");
    Escaped escapedWithoutQuotes(',', "", '\\', '#');
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        TableDraws draws(seed);
        Table table = draws.table(",\r\n\xff");
        for (Cells& row : table)
            if (!row.empty() && row[0].empty())
                row[0] = "x";
        expectRoundTrip(table, withoutQuotes, QUOTED);
        expectRoundTrip(table, escapedWithoutQuotes, QUOTED);
        for (Cells& row : table)
            for (std::string& cell : row)
                if (!cell.empty() && cell[0] == '"')
                    cell[0] = 'x';
        expectRoundTrip(table, raw, RAW);
    }
}

TEST(RawTableRoundTrip, ARowThatBeginsWithAnEmptyCellLosesIt) {
    Rfc format(',', nullptr);
    expectLost(
        {
            {{{"", "b"}}, ",b\n", {{"b"}}},
            {{{"", "", "b"}}, ",,b\n", {{"", "b"}}},
            {{{"a"}, {"", "b"}}, "a\n,b\n", {{"a"}, {"b"}}},
        },
        format, RAW);
    // These are written again as they were, but come back as rows of fewer cells.
    EXPECT_EQ(written({{""}}, format, RAW), "\n");
    EXPECT_EQ(parsed("\n", format), Table{{}});
    EXPECT_EQ(written({{"", ""}}, format, RAW), ",\n");
    EXPECT_EQ(parsed(",\n", format), Table{{""}});
}

TEST(RawTableRoundTrip, CarriageReturnsAndAByteFFDoNotComeBack) {
    Rfc format(',', nullptr);
    expectLost(
        {
            {{{"a\rb"}}, "a\rb\n", {{"a\nb"}}},
            {{{"a\r\nb"}}, "a\r\nb\n", {{"a\nb"}}},
            {{{"a\xffyz"}}, "a\xffyz\n", {{"a", "yz"}}},
            {{{"\"a\""}}, "\"a\"\n", {{"a"}}},
        },
        format, RAW);
}

TEST(RawTableRoundTrip, DelimitersAndLineFeedsInACellComeBackAsEndsOfCells) {
    Rfc format(',', nullptr);
    const Table delimiter = {{"a,b"}};
    EXPECT_EQ(parsed(written(delimiter, format, RAW), format), (Table{{"a", "b"}}));
    const Table lineFeed = {{"a\nb"}};
    EXPECT_EQ(parsed(written(lineFeed, format, RAW), format), (Table{{"a"}, {"b"}}));
}

// Escaped cells are for those who split rows themselves: every table of rows with cells comes back.

/// Splits a text where no escape character stands before the delimiter or the line feed.
Table split(const std::string& text, char delim, char escape, const Escaped& format) {
    Table table;
    Cells row;
    std::string cell;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == escape) {
            cell += c;
            cell += text[++i];
        } else if (c == delim || c == '\n') {
            row.push_back(format.unescape(std::exchange(cell, {})));
            if (c == '\n')
                table.push_back(std::exchange(row, {}));
        } else {
            cell += c;
        }
    }
    return table;
}

TEST(EscapedTableRoundTrip, RandomTablesComeBackToThoseWhoSplitThemThemselves) {
    struct Kind {
        char delim;
        const char* quotes;
        char escape;
        char comment;
    };
    for (const auto& [delim, quotes, escape, comment] :
         {Kind{',', nullptr, '\\', '#'}, Kind{'\t', "", '\\', '\0'}, Kind{',', "\"'", '"', '#'},
          Kind{'n', nullptr, '\\', 'r'}, Kind{'\xff', "\x80", '\xfe', ' '}}) {
        Escaped format(delim, quotes, escape, comment);
        for (unsigned seed = 0; seed < 300; ++seed) {
            SCOPED_TRACE(seed);
            TableDraws draws(seed);
            Table table = draws.table("");
            for (Cells& row : table)
                if (row.empty())
                    row.emplace_back();
            const std::string text = written(table, format, ESCAPED);
            const Table again = split(text, delim, escape, format);
            ASSERT_EQ(again, table) << text;
            ASSERT_EQ(written(again, format, ESCAPED), text);
        }
    }
}

TEST(EscapedTableRoundTrip, TheParserEndsACellAtAnEscapedDelimiterToo) {
    Escaped format(',', nullptr, '\\', '#');
    const Table table = {{"a,b", "c\nd"}};
    const std::string text = written(table, format, ESCAPED);
    EXPECT_EQ(text, "a\\,b,c\\nd\n");
    EXPECT_EQ(parsed(text, format), (Table{{"a\\", "b", "c\\nd"}}));
}

}  // namespace
}  // namespace moxtel::io
