#include <moxtel/row_parser.hpp>

#include <new>
#include <typeinfo>

#include <moxtel/exception.hpp>

#include "find_stop.hpp"

namespace moxtel::io {

namespace {

template <class Format, class... Args>
const Format* newFormat(Args... args) {
    const Format* format = new (std::nothrow) Format(args...);
    if (format == nullptr)
        throw new AllocationException(
            "Could not allocate the format object for an escaped row parser.");
    return format;
}

}  // namespace

DelimitedRowParser::DelimitedRowParser(const DelimitedRowFormat* format) : m_format(format) {
    if (format == nullptr)
        return;
    const std::type_info& kind = typeid(*format);
    m_plain =
        kind == typeid(RFC4180DelimitedRowFormat) || kind == typeid(EscapedDelimitedRowFormat);
    if (!m_plain)
        return;
    m_plainDelim = static_cast<const CharDelimitedRowFormat*>(format)->delim();
    for (std::size_t c = 0; c < m_plainQuotes.size(); ++c)
        m_plainQuotes[c] = format->isQuote(static_cast<int>(c));
}

DelimitedRowParser::DelimitedRowParser(Device* in, char delim, const char* quote, char escape)
    : m_src(in, TextStream::NL_DEFAULT),
      m_delim(delim != '\0' ? delim : ','),
      m_quote(quote != nullptr ? quote : DelimitedRowFormat::DEFAULT_QUOTES),
      m_escape(escape) {}

DelimitedRowParser::DelimitedRowParser(Device& in, char delim, const char* quote, char escape)
    : DelimitedRowParser(in.makeProxy(), delim, quote, escape) {}

DelimitedRowParser DelimitedRowParser::createRFC4180(char delim, const char* quotes) {
    return DelimitedRowParser(newFormat<RFC4180DelimitedRowFormat>(delim, quotes));
}

DelimitedRowParser DelimitedRowParser::createEscaped(char delim, const char* quote, char escape,
                                                     char comment) {
    return DelimitedRowParser(newFormat<EscapedDelimitedRowFormat>(delim, quote, escape, comment));
}

DelimitedRowParser DelimitedRowParser::createRFC4180(std::istream& in, char delim,
                                                     const char* quotes) {
    DelimitedRowParser parser = createRFC4180(delim, quotes);
    parser.open(in);
    return parser;
}

void DelimitedRowParser::open(std::istream& in) {
    m_src = TextReader(in, TextStream::NL_DEFAULT);
}

void DelimitedRowParser::open(TextReader& src) {
    m_src = src;
}

void DelimitedRowParser::open(Device* in) {
    m_src = TextReader(in, TextStream::NL_DEFAULT);
}

void DelimitedRowParser::open(Device& in) {
    m_src = TextReader(in, TextStream::NL_DEFAULT);
}

void DelimitedRowParser::open(const std::string& path, int openFlags) {
    open(Device::fromFile(path, openFlags | OPEN_READ));
}

void DelimitedRowParser::openFromString(const std::string& text) {
    open(Device::wrapString(text, 0, std::string::npos));
}

bool DelimitedRowParser::hasRow() {
    return m_src.peek() != -1;
}

bool DelimitedRowParser::hasCell() {
    const int c = m_src.peek();
    if (m_endsRow(c)) {
        m_src.read();
        return false;
    }
    if (c == -1)
        return false;
    if (m_isDelim(c))
        m_src.read();
    return true;
}

std::string DelimitedRowParser::nextCell() {
    const int c = m_src.peek();
    if (c == '\n' || c == -1)
        return std::string();
    if (!m_plain || m_isPlainQuote(static_cast<char>(c)))
        return m_asked().readCell(m_src);
    int end = 0;
    std::string cell = m_src.m_readUntil(m_plainDelim, end);
    // A line end that begins with a carriage return belongs to the cell, as it is read.
    while (end == '\r' && !m_isDelim('\r')) {
        cell += static_cast<char>(m_src.read());
        cell += m_src.m_readUntil(m_plainDelim, end);
    }
    return cell;
}

const DelimitedRowFormat& DelimitedRowParser::m_asked() const {
    if (!m_format)
        throw AccessException("The row parser has no format.");
    return *m_format;
}

bool DelimitedRowParser::m_takeRow(std::vector<std::string_view>& cells, std::size_t least) {
    cells.clear();
    // Bounds the time and the memory for cells that are looked at in vain.
    constexpr std::size_t most = 1 << 16;
    const std::string_view text = m_plain ? m_src.m_atHand().substr(0, most) : std::string_view();
    if (text.empty() || m_plainDelim == '\r')
        return false;
    const char* const end = text.data() + text.size();
    const char* stop = text.data();
    if (*stop != '\n') {
        const char* begin = *stop == m_plainDelim ? stop + 1 : stop;
        while (true) {
            stop = findStop(begin, end, characterOf(m_plainDelim));
            if (stop == end || *stop == '\r' || *stop == '\xff' || m_isPlainQuote(*begin))
                return false;
            cells.emplace_back(begin, stop);
            if (*stop == '\n')
                break;
            begin = stop + 1;
        }
    }
    // The character after a line feed may belong to the line end.
    if (end - stop == 1 || cells.size() < least)
        return false;
    m_src.m_skip(static_cast<std::size_t>(stop - text.data()));
    m_src.read();
    return true;
}

}  // namespace moxtel::io
