/// The row parser beside one that reads byte by byte: random bytes and random calls, with results,
/// counters, positions and stream states compared after each.

#include <moxtel/row_parser.hpp>

#include <ios>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "../../../src/libmoxtel/in_place.hpp"
#include "draws.hpp"
#include "inputs.hpp"
#include "support/sanitized.hpp"

namespace moxtel::io {
namespace {

/// A parser that tells where it stands.
class ParserWithPlace : public DelimitedRowParser {
  public:
    explicit ParserWithPlace(const DelimitedRowParser& parser) : DelimitedRowParser(parser) {}
    const TextReader& reader() const { return m_src; }
};

enum class ParserCall { HAS_ROW, HAS_CELL, NEXT_CELL };

template <class Parser, class Bytes>
std::string outcome(ParserCall call, bool tells, Parser& parser, Bytes& bytes,
                    const std::istream* stream) {
    std::ostringstream out;
    switch (call) {
        case ParserCall::HAS_ROW:
            out << "row " << parser.hasRow();
            break;
        case ParserCall::HAS_CELL:
            out << "cell " << parser.hasCell();
            break;
        case ParserCall::NEXT_CELL:
            out << parser.nextCell();
            break;
    }
    out << ", at " << parser.reader().row() << ':' << parser.reader().col();
    if (tells)
        out << ", told " << bytes.tellg();
    if (stream != nullptr)
        out << ", state " << stream->rdstate();
    return out.str();
}

struct Format {
    char delim;
    const char* quotes;  // null for the default

    std::string name() const {
        return ::testing::PrintToString(delim) + " quoted by " +
               (quotes == nullptr ? "default" : ::testing::PrintToString(std::string(quotes)));
    }
};

constexpr Format FORMATS[] = {{',', nullptr}, {'\t', nullptr}, {',', ""},      {';', "\"'"},
                              {'\r', "'"},    {'\n', nullptr}, {'\xff', "\""}, {'\x80', "\xfe"},
                              {'"', nullptr}, {'a', "a"},      {',', "\r"},    {',', "\n"}};

class TextDraws : public moxtel_tests::Draws {
  public:
    TextDraws(unsigned seed, const Format& format)
        : Draws(seed), m_special("\n\r\xff\xff\x80 a\"'") {
        m_special.append(3, format.delim);
        m_special.append(2, '\n');
        if (format.quotes != nullptr)
            (m_special += format.quotes) += format.quotes;
        else
            m_special.append(2, '"');
    }

    std::string bytes() {
        const std::size_t others = below(4);
        const std::size_t most = below(50) == 0 ? 20'000 : 100;
        std::string text(below(most + 1), '\0');
        for (char& c : text)
            c = below(4) < others ? static_cast<char>(below(256))
                                  : m_special[below(m_special.size())];
        return text;
    }

  private:
    std::string m_special;
};

/// The cells from here on up to the end of the row.
template <class Parser>
std::vector<std::string> restOfRow(Parser& parser) {
    std::vector<std::string> cells;
    while (parser.hasCell())
        cells.push_back(parser.nextCell());
    return cells;
}

/// The call that the protocol asks for after one with that outcome.
ParserCall next(ParserCall call, const std::string& outcome) {
    if (call == ParserCall::NEXT_CELL || outcome.rfind("row 1", 0) == 0)
        return ParserCall::HAS_CELL;
    return outcome.rfind("cell 1", 0) == 0 ? ParserCall::NEXT_CELL : ParserCall::HAS_ROW;
}

class RowParserBesidePlain : public ::testing::TestWithParam<InputKind> {
  protected:
    /// By the protocol, or by calls in any order.
    static void expectPlainParsing(const Format& format, unsigned seed, bool byProtocol) {
        TextDraws draws(seed, format);
        const std::string bytes = draws.bytes();
        const bool tells = draws.below(2) == 0;
        Input input = GetParam().open(bytes);
        ParserWithPlace parser(
            seed % 2 == 0
                ? DelimitedRowParser::createRFC4180(format.delim, format.quotes)
                : DelimitedRowParser::createEscaped(format.delim, format.quotes, '\\', '#'));
        parser.open(input.device);
        plain::RowParser plainParser(*input.source, format.delim,
                                     format.quotes == nullptr ? "\"" : format.quotes);
        ParserCall call = ParserCall::HAS_ROW;
        for (std::size_t i = 0; i < bytes.size() + 20; ++i) {
            const std::string expected =
                outcome(call, tells, plainParser, *input.source, input.sourceStream);
            ASSERT_EQ(outcome(call, tells, parser, *input.device, input.stream), expected)
                << GetParam().name << ", " << format.name() << ", seed " << seed << ", call " << i
                << " of " << ::testing::PrintToString(bytes);
            call = byProtocol ? next(call, expected) : static_cast<ParserCall>(draws.below(3));
        }
    }

    /// Of the rows that were asked for as a whole, how many could be taken.
    static std::size_t expectPlainRows(const Format& format, unsigned seed) {
        TextDraws draws(seed, format);
        const std::string bytes = draws.bytes();
        const bool tells = draws.below(2) == 0;
        Input input = GetParam().open(bytes);
        ParserWithPlace parser(DelimitedRowParser::createRFC4180(format.delim, format.quotes));
        parser.open(input.device);
        plain::RowParser plainParser(*input.source, format.delim,
                                     format.quotes == nullptr ? "\"" : format.quotes);
        std::vector<std::string_view> cells;
        std::size_t taken = 0;
        for (std::size_t i = 0; i < bytes.size() + 20; ++i) {
            const std::size_t least = draws.below(4);
            if (draws.below(2) == 0 && InPlace::takeRow(parser, cells, least)) {
                ++taken;
                EXPECT_GE(cells.size(), least);
                EXPECT_EQ(std::vector<std::string>(cells.begin(), cells.end()),
                          restOfRow(plainParser))
                    << GetParam().name << ", " << format.name() << ", seed " << seed << ", call "
                    << i << " of " << ::testing::PrintToString(bytes);
            }
            const ParserCall call =
                draws.below(3) == 0 ? static_cast<ParserCall>(draws.below(3)) : ParserCall::HAS_ROW;
            EXPECT_EQ(outcome(call, tells, parser, *input.device, input.stream),
                      outcome(call, tells, plainParser, *input.source, input.sourceStream))
                << GetParam().name << ", " << format.name() << ", seed " << seed << ", call " << i
                << " of " << ::testing::PrintToString(bytes);
            if (HasFailure())
                break;
        }
        return taken;
    }
};

TEST_P(RowParserBesidePlain, GivesTheSameTable) {
    for (const Format& format : FORMATS)
        for (unsigned seed = 0; seed < 40; seed += DRAWN_EVERY)
            ASSERT_NO_FATAL_FAILURE(expectPlainParsing(format, seed, true));
}

TEST_P(RowParserBesidePlain, GivesTheSameInWhateverOrderItIsCalled) {
    for (const Format& format : FORMATS)
        for (unsigned seed = 1000; seed < 1040; seed += DRAWN_EVERY)
            ASSERT_NO_FATAL_FAILURE(expectPlainParsing(format, seed, false));
}

TEST_P(RowParserBesidePlain, TakesTheSameRows) {
    for (const Format& format : FORMATS) {
        std::size_t taken = 0;
        for (unsigned seed = 2000; seed < 2080; seed += DRAWN_EVERY) {
            taken += expectPlainRows(format, seed);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_EQ(taken > 0, GetParam().buffered && format.delim != '\r') << format.name();
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RowParserBesidePlain, ::testing::ValuesIn(inputKinds()),
                         inputKindName);

}  // namespace
}  // namespace moxtel::io
