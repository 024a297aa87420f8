#include <moxtel/row_parser.hpp>

#include <memory>
#include <new>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/exception.hpp>
#include <moxtel/memory.hpp>

#include "../../../src/libmoxtel/in_place.hpp"
#include "support/temp_dir.hpp"

namespace {

bool formatsCannotBeAllocated = false;

}  // namespace

// The factories of the parser ask for their format in this way.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (formatsCannotBeAllocated)
        return nullptr;
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace moxtel::io {
namespace {

using ParsedRow = std::vector<std::string>;
using Table = std::vector<ParsedRow>;

/// The rest of the table by the protocol.
Table tableOf(DelimitedRowParser& parser) {
    Table table;
    while (parser.hasRow()) {
        table.emplace_back();
        while (parser.hasCell())
            table.back().push_back(parser.nextCell());
    }
    return table;
}

DelimitedRowParser parserOf(const std::string& text, char delim = ',') {
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(delim, nullptr);
    parser.openFromString(text);
    return parser;
}

Table tableOf(const std::string& text) {
    DelimitedRowParser parser = parserOf(text);
    return tableOf(parser);
}

/// The format and the protocol once more, over a text with an index.
class SlowParser {
  public:
    explicit SlowParser(std::string text) : m_text(std::move(text)) {}

    Table table() {
        Table rows;
        while (m_look() != END) {
            rows.emplace_back();
            while (m_anotherCell())
                rows.back().push_back(m_cell());
        }
        return rows;
    }

  private:
    static constexpr int END = -1;

    /// Looking at a byte 0xFF uses it up.
    int m_look() {
        if (m_at == m_text.size())
            return END;
        if (m_text[m_at] != '\xff')
            return static_cast<signed char>(m_text[m_at]);
        ++m_at;
        return END;
    }

    char m_take() {
        const char c = m_text[m_at++];
        const char other = c == '\n' ? '\r' : '\n';
        if (c != '\n' && c != '\r')
            return c;
        if (m_look() == other)
            ++m_at;
        return '\n';
    }

    bool m_cellEnds() {
        const int c = m_look();
        return c == END || c == ',' || c == '\n';
    }

    bool m_anotherCell() {
        const int c = m_look();
        // At a byte 0xFF the line end behind it is seen as well.
        if (m_look() == '\n') {
            m_take();
            return false;
        }
        if (c == ',')
            m_take();
        return c != END;
    }

    std::string m_plain() {
        std::string cell;
        while (!m_cellEnds())
            cell += m_take();
        return cell;
    }

    std::string m_cell() {
        const int first = m_look();
        if (first == END || first == '\n')
            return "";
        if (first != '"')
            return m_plain();
        m_take();
        std::string content;
        for (int c = m_look(); c != END; c = m_look()) {
            m_take();
            if (c == '"' && m_look() != '"')
                break;
            content += static_cast<char>(c);
        }
        return m_cellEnds() ? content : '"' + content + '"' + m_plain();
    }

    std::string m_text;
    std::size_t m_at = 0;
};

void expectSlowParsersTable(const std::string& text) {
    const Table expected = SlowParser(text).table();
    ASSERT_EQ(tableOf(text), expected) << ::testing::PrintToString(text);
    std::istringstream in(text);
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(in, ',', nullptr);
    ASSERT_EQ(tableOf(parser), expected) << ::testing::PrintToString(text) << " from a stream";
}

TEST(RowParser, ReadsEveryShortTextAsTheSlowParserDoes) {
    const std::string alphabet = "a,\"\n\r\xff";
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        expectSlowParsersTable(texts[i]);
        if (texts[i].size() < 5)
            for (const char c : alphabet)
                texts.push_back(texts[i] + c);
    }
    EXPECT_EQ(texts.size(), 9331U);
}

TEST(RowParser, ReadsLongerTextsAsTheSlowParserDoes) {
    const std::string alphabet = "abcd \x80\xfe,,,\"\"\n\n\r\xff";
    std::mt19937 random(20240502);
    for (int i = 0; i < 1000; ++i) {
        std::string text;
        for (auto length = random() % 100; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        expectSlowParsersTable(text);
    }
}

TEST(RowParser, RowsEndAtALineFeed) {
    EXPECT_EQ(tableOf("a,b\nc"), (Table{{"a", "b"}, {"c"}}));
}

TEST(RowParser, ARowThatBeginsWithADelimiterLosesItsFirstCell) {
    EXPECT_EQ(tableOf(",b\n"), (Table{{"b"}}));
    EXPECT_EQ(tableOf(",,b\n"), (Table{{"", "b"}}));
    EXPECT_EQ(tableOf(","), (Table{{""}}));
    EXPECT_EQ(tableOf(",\n,\n"), (Table{{""}, {""}}));
}

TEST(RowParser, ADelimiterBeforeTheRowEndYieldsAnEmptyCell) {
    EXPECT_EQ(tableOf("a,\n"), (Table{{"a", ""}}));
}

TEST(RowParser, ADelimiterBeforeTheEndOfTheDataYieldsAnEmptyCell) {
    EXPECT_EQ(tableOf("a,"), (Table{{"a", ""}}));
}

TEST(RowParser, ALineFeedAloneIsARowWithoutCells) {
    EXPECT_EQ(tableOf("\na\n"), (Table{{}, {"a"}}));
}

TEST(RowParser, EmptyInputHasNoRow) {
    DelimitedRowParser parser = parserOf("");
    EXPECT_FALSE(parser.hasRow());
    EXPECT_FALSE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "");
}

TEST(RowParser, ADelimiterInsideQuotesIsContent) {
    EXPECT_EQ(tableOf("\"x,y\",z"), (Table{{"x,y", "z"}}));
}

TEST(RowParser, Tables) {
    struct Case {
        std::string text;
        Table table;
    };
    const std::vector<Case> cases = {
        // Empty cells and ends of the data.
        {"a,,b", {{"a", "", "b"}}},
        {"a\n", {{"a"}}},
        {"a\n\n", {{"a"}, {}}},
        {"a\n\n\nb", {{"a"}, {}, {}, {"b"}}},
        {"\"\"\n\"\"", {{""}, {""}}},
        {"#a,b\n", {{"#a", "b"}}},
        // Line ends other than LF.
        {"a,b\r\nc,d\r\n", {{"a", "b\nc", "d\n"}}},
        {"a,b\rc,d", {{"a", "b\nc", "d"}}},
        {"a,b\n\rc,d", {{"a", "b"}, {"c", "d"}}},
        {"a\n\r\nb", {{"a"}, {}, {"b"}}},
        {"\r\n", {{"\n"}}},
        {"a,\"b\"\r\nc,d\n", {{"a", "\"b\"\nc", "d"}}},
        // Quoted cells.
        {"\"a\nb\",c\nd", {{"a\nb", "c"}, {"d"}}},
        {"\"a\"\"b\",c", {{"\"a\"\"b\"", "c"}}},
        {"\"a\"b,c\nd", {{"\"a\"b", "c"}, {"d"}}},
        {"a,\"b,c\nd", {{"a", "b,c\nd"}}},
        {"a\"b,c\"", {{"a\"b", "c\""}}},
        // Bytes above 0x7F, and 0xFF, which looks like an end.
        {"\x80,a\xfe\n\xfe", {{"\x80", "a\xfe"}, {"\xfe"}}},
        {"a\xff"
         "b,c",
         {{"a", "b", "c"}}},
        {"a,\xff"
         "b\nc",
         {{"a", "", "b"}, {"c"}}},
        {"a\xff\nb", {{"a"}, {"b"}}},
        {"a\n\xff"
         "b",
         {{"a"}, {"b"}}},
        {"\xff"
         "a",
         {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(tableOf(c.text), c.table) << ::testing::PrintToString(c.text);
}

TEST(RowParser, NextCellStaysAtADelimiterWithoutHasCell) {
    DelimitedRowParser parser = parserOf("a,b");
    EXPECT_EQ(parser.nextCell(), "a");
    EXPECT_EQ(parser.nextCell(), "");
    EXPECT_EQ(parser.nextCell(), "");
    EXPECT_TRUE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "b");
}

TEST(RowParser, NextCellStaysAtALineEnd) {
    DelimitedRowParser parser = parserOf("\na");
    EXPECT_EQ(parser.nextCell(), "");
    EXPECT_FALSE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "a");
}

TEST(RowParser, NextCellTakesALineEndForOneEvenWhereItIsAQuote) {
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(',', "\n");
    parser.openFromString("\na\n");
    EXPECT_EQ(parser.nextCell(), "");
    EXPECT_FALSE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "a");
}

TEST(RowParser, NextCellAfterAShortRowTakesFromTheNext) {
    DelimitedRowParser parser = parserOf("k\ne,1,x\n");
    EXPECT_TRUE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "k");
    EXPECT_FALSE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "e");
    EXPECT_TRUE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "1");
}

TEST(RowParser, HasRowConsumesNothing) {
    DelimitedRowParser parser = parserOf("a");
    EXPECT_TRUE(parser.hasRow());
    EXPECT_TRUE(parser.hasRow());
    EXPECT_EQ(parser.nextCell(), "a");
    EXPECT_FALSE(parser.hasRow());
}

TEST(RowParser, HasCellTakesOneDelimiterEachTime) {
    DelimitedRowParser parser = parserOf("a,,b");
    parser.nextCell();
    EXPECT_TRUE(parser.hasCell());
    EXPECT_TRUE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "b");
    EXPECT_FALSE(parser.hasCell());
}

// Whole rows.

/// What a parser over a stream takes of `text` as a whole row; nothing when it takes none.
std::optional<ParsedRow> rowTaken(DelimitedRowParser parser, const std::string& text,
                                  std::size_t least) {
    std::istringstream in(text);
    parser.open(in);
    parser.hasRow();
    std::vector<std::string_view> cells = {"from before"};
    if (!InPlace::takeRow(parser, cells, least))
        return std::nullopt;
    return ParsedRow(cells.begin(), cells.end());
}

std::optional<ParsedRow> rowTaken(const std::string& text, std::size_t least = 0) {
    return rowTaken(DelimitedRowParser::createRFC4180(',', nullptr), text, least);
}

TEST(TakeRow, GivesTheCells) {
    EXPECT_EQ(rowTaken("a,b c,d\nnext"), ParsedRow({"a", "b c", "d"}));
    EXPECT_EQ(rowTaken("a,,b,\nnext"), ParsedRow({"a", "", "b", ""}));
    EXPECT_EQ(rowTaken(",a\nnext"), ParsedRow({"a"}));
    EXPECT_EQ(rowTaken(",\nnext"), ParsedRow({""}));
    EXPECT_EQ(rowTaken("\nnext"), ParsedRow());
    EXPECT_EQ(rowTaken("a,b\n\rnext"), ParsedRow({"a", "b"}));
    EXPECT_EQ(rowTaken("a,15 \x80\xfe,c\"d\"\nnext"), ParsedRow({"a", "15 \x80\xfe", "c\"d\""}));
}

TEST(TakeRow, LeavesRowsThatDoNotStandInTheInputAsTheyAreRead) {
    for (const std::string text : {"a,\"b\",c\nnext", "\"a\"\nnext", "a,\"\nnext", "a,b\r\nnext",
                                   "a,b\xff\nnext", "\xff\nnext"})
        EXPECT_EQ(rowTaken(text), std::nullopt) << text;
}

TEST(TakeRow, LeavesTheLastRow) {
    for (const std::string text : {"a,b", "a,b\n", ",", "\n", ""})
        EXPECT_EQ(rowTaken(text), std::nullopt) << text;
}

TEST(TakeRow, LeavesRowsOfFewerCellsThanAskedFor) {
    EXPECT_EQ(rowTaken("a,b\nnext", 3), std::nullopt);
    EXPECT_EQ(rowTaken("a,b\nnext", 2), ParsedRow({"a", "b"}));
    EXPECT_EQ(rowTaken("\nnext", 1), std::nullopt);
}

TEST(TakeRow, LeavesRowsOfManyKilobytes) {
    const std::string longest((1 << 16) - 2, 'a');
    EXPECT_EQ(rowTaken(longest + "\nnext"), ParsedRow({longest}));
    EXPECT_EQ(rowTaken(longest + "a\nnext"), std::nullopt);
}

TEST(TakeRow, HeedsTheFormat) {
    EXPECT_EQ(
        rowTaken(DelimitedRowParser::createEscaped(';', "'", '\\', '#'), "#a;b\\;c,\"d\nnext", 0),
        ParsedRow({"#a", "b\\", "c,\"d"}));
    EXPECT_EQ(rowTaken(DelimitedRowParser::createEscaped(';', "'", '\\', '#'), "a;'b'\nnext", 0),
              std::nullopt);
    EXPECT_EQ(rowTaken(DelimitedRowParser::createRFC4180('\r', nullptr), "a\rb\nnext", 0),
              std::nullopt);
    EXPECT_EQ(rowTaken(DelimitedRowParser::createRFC4180('\r', nullptr), "\ra\nnext", 0),
              std::nullopt);
}

TEST(TakeRow, LeavesTheDecisionsToAFormatOfAnotherKind) {
    class DotFormat : public RFC4180DelimitedRowFormat {
      public:
        DotFormat() : RFC4180DelimitedRowFormat(',', nullptr) {}
        bool isDelim(int c) const override { return c == '.'; }
    };
    EXPECT_EQ(rowTaken(DelimitedRowParser(new DotFormat), "a,b\nnext", 0), std::nullopt);
}

TEST(TakeRow, GoesOnInTheNextRow) {
    std::istringstream in("a,b\n\rc,\"d\"\n,e\nlast");
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(in, ',', nullptr);
    std::vector<std::string_view> cells;
    Table table;
    while (parser.hasRow())
        if (InPlace::takeRow(parser, cells, 0)) {
            table.emplace_back(cells.begin(), cells.end());
            table.back().push_back("taken");
        } else {
            table.emplace_back();
            while (parser.hasCell())
                table.back().push_back(parser.nextCell());
        }
    EXPECT_EQ(table, Table({{"a", "b", "taken"}, {"c", "d"}, {"e", "taken"}, {"last"}}));
}

TEST(TakeRow, WithoutAPeekedCharacterThereIsNone) {
    std::istringstream in("a\nb\n");
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(in, ',', nullptr);
    std::vector<std::string_view> cells;
    EXPECT_FALSE(InPlace::takeRow(parser, cells, 0));
    EXPECT_TRUE(parser.hasRow());
    EXPECT_TRUE(InPlace::takeRow(parser, cells, 0));
    EXPECT_EQ(cells, std::vector<std::string_view>({"a"}));
}

TEST(TakeRow, WithoutAStreamThereIsNone) {
    const std::string text = "a,b\nnext";
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(',', nullptr);
    std::string block = text;
    parser.open(Device::wrapArray(block.data(), block.size(), OPEN_READ));
    EXPECT_TRUE(parser.hasRow());
    std::vector<std::string_view> cells;
    EXPECT_FALSE(InPlace::takeRow(parser, cells, 0));
    EXPECT_EQ(tableOf(parser), Table({{"a", "b"}, {"next"}}));
}

// Opening.

TEST(RowParserOpen, AnotherTextIsReadFromItsStartWithTheSameFormat) {
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(';', "'");
    parser.openFromString("a;'b;c'\nd");
    EXPECT_EQ(tableOf(parser), (Table{{"a", "b;c"}, {"d"}}));
    parser.openFromString("e;'f;g'");
    EXPECT_TRUE(parser.hasRow());
    parser.openFromString("h;'i;j'");
    EXPECT_EQ(tableOf(parser), (Table{{"h", "i;j"}}));
}

TEST(RowParserOpen, AStreamIsReadFromWhereItStands) {
    std::istringstream in("header\na\tb\n");
    std::string header;
    std::getline(in, header);
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(in, '\t', nullptr);
    EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}}));
}

TEST(RowParserOpen, AStreamStaysTheCallers) {
    std::istringstream in("a");
    {
        DelimitedRowParser parser = parserOf("x");
        parser.open(in);
        EXPECT_EQ(tableOf(parser), (Table{{"a"}}));
    }
    in.clear();
    in.str("b");
    EXPECT_EQ(in.get(), 'b');
}

TEST(RowParserOpen, AReaderIsCopiedWithItsLookAhead) {
    TextReader reader(Device::wrapString("h\na,b\n", 0, 6), TextStream::NL_DEFAULT);
    reader.readLine();
    reader.peek();
    DelimitedRowParser parser = parserOf("x");
    parser.open(reader);
    EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}}));
    EXPECT_EQ(reader.read(), 'a');
    EXPECT_EQ(reader.read(), -1);
}

TEST(RowParserOpen, DevicesAreTakenOver) {
    DelimitedRowParser parser = parserOf("x");
    parser.open(Device::wrapString("a,b", 0, 3));
    EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}}));
    Device& device = *Device::wrapString("c\nd", 0, 3);
    parser.open(device);
    EXPECT_EQ(tableOf(parser), (Table{{"c"}, {"d"}}));
}

TEST(RowParserOpen, APreviousDeviceIsLetGo) {
    class Watched : public std::istringstream {
      public:
        explicit Watched(bool& gone) : m_gone(gone) {}
        ~Watched() override { m_gone = true; }

      private:
        bool& m_gone;
    };
    bool gone = false;
    DelimitedRowParser parser = parserOf("x");
    parser.open(Device::wrap(static_cast<std::istream*>(new Watched(gone))));
    EXPECT_FALSE(gone);
    parser.openFromString("a");
    EXPECT_TRUE(gone);
}

TEST(RowParserOpen, AFileIsAlwaysOpenedForReading) {
    const support::TempDir dir;
    const std::string path = dir.write("table", "a,b\nc\n");
    DelimitedRowParser parser = parserOf("x");
    for (const int flags : {0, 1, 2, 3}) {
        parser.open(path, flags);
        EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}, {"c"}})) << flags;
    }
}

TEST(RowParserOpen, AMissingFileIsEmpty) {
    const support::TempDir dir;
    DelimitedRowParser parser = parserOf("x");
    parser.open(dir / "missing", OPEN_READ);
    EXPECT_FALSE(parser.hasRow());
}

TEST(RowParserOpen, BeforeTheFirstOneThereIsNoData) {
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(',', nullptr);
    EXPECT_FALSE(parser.hasRow());
    EXPECT_FALSE(parser.hasCell());
    EXPECT_EQ(parser.nextCell(), "");
}

// Making.

/// Shows what a parser keeps for those derived from it.
class OpenParser : public DelimitedRowParser {
  public:
    using DelimitedRowParser::DelimitedRowParser;

    char delim() const { return m_delim; }
    std::string quote() const { return m_quote; }
    char escape() const { return m_escape; }
    TextReader& source() { return m_src; }
    bool hasFormat() const { return static_cast<bool>(format()); }
};

TEST(RowParserMaking, CountersCoverWhatIsBetweenTheCells) {
    OpenParser parser(new RFC4180DelimitedRowFormat(',', nullptr));
    parser.openFromString("a,b\n\"c\nd\",ef");
    EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}, {"c\nd", "ef"}}));
    EXPECT_EQ(parser.source().row(), 2U);
    EXPECT_EQ(parser.source().col(), 5U);
    parser.openFromString("a,b");
    EXPECT_EQ(parser.source().row(), 0U);
    EXPECT_EQ(parser.source().col(), 0U);
    parser.nextCell();
    parser.hasCell();
    EXPECT_EQ(parser.source().col(), 2U);
}

TEST(RowParserMaking, DirectlyOverADeviceKeepsADescriptionAndNoFormat) {
    OpenParser parser(Device::wrapString("a\r\nb", 0, 4), '\0', nullptr, '\\');
    EXPECT_EQ(parser.delim(), ',');
    EXPECT_EQ(parser.quote(), "\"");
    EXPECT_EQ(parser.escape(), '\\');
    EXPECT_FALSE(parser.hasFormat());
    EXPECT_TRUE(parser.hasRow());
    EXPECT_EQ(parser.source().readLine(), "a");
    Device& device = *Device::wrapString("c", 0, 1);
    OpenParser other(device, ';', "'", '\0');
    EXPECT_EQ(other.delim(), ';');
    EXPECT_EQ(other.quote(), "'");
    EXPECT_TRUE(other.hasRow());
}

TEST(RowParserMaking, AFormatIsSharedAndItsOwnerMayProtectIt) {
    const RFC4180DelimitedRowFormat format('|', nullptr);
    ASSERT_TRUE(mem::protect(&format));
    {
        DelimitedRowParser parser(&format);
        parser.openFromString("a|b");
        EXPECT_EQ(tableOf(parser), (Table{{"a", "b"}}));
    }
    EXPECT_NE(mem::policyOf(&format), nullptr);
    mem::free(const_cast<RFC4180DelimitedRowFormat*>(&format));
    EXPECT_TRUE(format.isDelim('|'));
}

TEST(RowParserMaking, TheFormatGoesWithTheLastCopyOfTheParser) {
    const auto* format = new RFC4180DelimitedRowFormat(',', nullptr);
    {
        auto parser = std::make_unique<DelimitedRowParser>(format);
        DelimitedRowParser copy(*parser);
        parser.reset();
        EXPECT_NE(mem::policyOf(format), nullptr);
        copy.openFromString("a,b");
        EXPECT_EQ(tableOf(copy), (Table{{"a", "b"}}));
    }
    EXPECT_EQ(mem::policyOf(format), nullptr);
}

TEST(RowParserMaking, TheEscapedFormatReadsLikeTheQuotedOne) {
    DelimitedRowParser parser = DelimitedRowParser::createEscaped(',', nullptr, '\\', '#');
    parser.openFromString("#a\\,b\n\"c,d\"\\\ne");
    EXPECT_EQ(tableOf(parser), (Table{{"#a\\", "b"}, {"\"c,d\"\\"}, {"e"}}));
}

TEST(RowParserMaking, WithoutAFormatTheParserReadsNoCell) {
    std::istringstream in("a,b\n");
    DelimitedRowParser without(nullptr);
    without.open(in);
    DelimitedRowParser described(Device::wrapString("a,b\n", 0, 4), ',', nullptr, '\0');
    for (DelimitedRowParser* parser : {&without, &described}) {
        EXPECT_TRUE(parser->hasRow());
        std::vector<std::string_view> cells;
        EXPECT_FALSE(InPlace::takeRow(*parser, cells, 0));
        EXPECT_THROW(parser->hasCell(), AccessException);
        EXPECT_THROW(parser->nextCell(), AccessException);
        EXPECT_TRUE(parser->hasRow());
    }
}

/// The message of the exception that `make` throws as a pointer.
template <class Make>
std::string thrownPointer(Make make) {
    formatsCannotBeAllocated = true;
    std::string message = "nothing thrown";
    try {
        make();
    } catch (AllocationException* e) {
        message = e->what();
        delete e;
    }
    formatsCannotBeAllocated = false;
    return message;
}

TEST(RowParserMaking, WithoutMemoryForTheFormatAPointerIsThrown) {
    const std::string message = "Could not allocate the format object for an escaped row parser.";
    std::istringstream in("a");
    EXPECT_EQ(thrownPointer([] { DelimitedRowParser::createRFC4180(',', nullptr); }), message);
    EXPECT_EQ(thrownPointer([] { DelimitedRowParser::createEscaped(',', nullptr, '\\', '#'); }),
              message);
    EXPECT_EQ(thrownPointer([&] { DelimitedRowParser::createRFC4180(in, ',', nullptr); }), message);
    EXPECT_EQ(in.get(), 'a');
}

}  // namespace
}  // namespace moxtel::io
