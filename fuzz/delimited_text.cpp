#include <cstddef>
#include <istream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <moxtel/table.hpp>

#include "chunk_buffer.hpp"
#include "input.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::io::DelimitedRowFormat;
using moxtel::io::DelimitedRowParser;
using moxtel::io::EscapedDelimitedRowFormat;
using moxtel::io::RFC4180DelimitedRowFormat;

/// The position of a parser after a step, and the cell that the step read, if any.
struct Step {
    std::size_t row;
    std::size_t col;
    std::optional<std::string> cell;

    bool operator==(const Step&) const = default;
};

std::string describe(const std::vector<Step>& steps) {
    std::ostringstream text;
    for (const Step& step : steps)
        text << step.row << ':' << step.col << ' ' << step.cell.value_or("(end of row)") << '\n';
    return text.str();
}

class Walk : public DelimitedRowParser {
  public:
    using DelimitedRowParser::DelimitedRowParser;

    /// The steps through a text of `size` bytes. Each step consumes at least one byte.
    std::vector<Step> steps(std::size_t size) {
        std::vector<Step> taken;
        // A byte 0xFF reads like the end of the text; each further walk continues behind it.
        for (int walks = 0; walks < 3; ++walks) {
            while (hasRow()) {
                while (hasCell())
                    m_add(taken, nextCell(), size);
                m_add(taken, std::nullopt, size);
            }
        }
        return taken;
    }

  private:
    void m_add(std::vector<Step>& taken, std::optional<std::string> cell, std::size_t size) {
        taken.push_back({m_src.row(), m_src.col(), std::move(cell)});
        if (taken.size() > 2 * size + 3)
            throw Failure("the walk does not end:\n" + describe(taken));
    }
};

/// A format of a type unknown to the parser, so that the parser must call it for each character.
template <class Format>
class Asked : public Format {
  public:
    using Format::Format;
};

struct Case {
    bool escaped;
    char delim;
    char escape;
    std::string quotes;
    std::string text;
};

const DelimitedRowFormat* formatOf(const Case& table) {
    if (table.escaped)
        return new EscapedDelimitedRowFormat(table.delim, table.quotes.c_str(), table.escape, '#');
    return new RFC4180DelimitedRowFormat(table.delim, table.quotes.c_str());
}

const DelimitedRowFormat* askedFormatOf(const Case& table) {
    if (table.escaped)
        return new Asked<EscapedDelimitedRowFormat>(table.delim, table.quotes.c_str(), table.escape,
                                                    '#');
    return new Asked<RFC4180DelimitedRowFormat>(table.delim, table.quotes.c_str());
}

std::vector<Step> stepsOfString(const Case& table, const DelimitedRowFormat* format) {
    Walk walk(format);
    walk.openFromString(table.text);
    return walk.steps(table.text.size());
}

std::vector<Step> stepsOfStream(const Case& table, std::istream& in) {
    Walk walk(formatOf(table));
    walk.open(in);
    return walk.steps(table.text.size());
}

std::vector<Step> stepsOfChunks(const Case& table, std::size_t chunkSize) {
    ChunkBuffer buffer(table.text, chunkSize);
    std::istream in(&buffer);
    return stepsOfStream(table, in);
}

}  // namespace

void fuzzDelimitedText(Bytes bytes) {
    Input input(bytes);
    Case table;
    table.escaped = input.byte() % 2 != 0;
    table.delim = static_cast<char>(input.byte());
    table.escape = static_cast<char>(input.byte());
    for (int quotes = input.byte() % 4; quotes > 0; --quotes)
        table.quotes += static_cast<char>(input.byte());
    table.text = input.rest();

    const std::vector<Step> expected = stepsOfString(table, askedFormatOf(table));
    const auto check = [&expected](const std::vector<Step>& steps, const char* source) {
        if (steps != expected)
            throw Failure(std::string("from ") + source + ":\n" + describe(steps) +
                          "instead of:\n" + describe(expected));
    };
    check(stepsOfString(table, formatOf(table)), "a string");
    std::istringstream stream(table.text);
    check(stepsOfStream(table, stream), "a stream");
    check(stepsOfChunks(table, 1), "a stream of single bytes");
    check(stepsOfChunks(table, 3), "a stream of three bytes at a time");
}

}  // namespace fuzz
