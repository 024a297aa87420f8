#include <moxtel/row_format.hpp>

namespace moxtel::io {

namespace {

constexpr int END = -1;

}  // namespace

const char* const DelimitedRowFormat::DEFAULT_QUOTES = "\"";

DelimitedRowFormat::DelimitedRowFormat(const char* quotes)
    : m_quotes(quotes != nullptr ? quotes : DEFAULT_QUOTES, false) {}

bool DelimitedRowFormat::isComment(int) const {
    return false;
}

bool DelimitedRowFormat::shouldQuote(const std::string&) const {
    return true;
}

bool DelimitedRowFormat::shouldEscape(const std::string&) const {
    return false;
}

std::string DelimitedRowFormat::unquote(char quoteSymbol, const std::string& text) const {
    if (text.size() <= 1)
        return text;
    if (quoteSymbol == '\0') {
        quoteSymbol = text.front();
        if (!isQuote(quoteSymbol))
            return text;
    }
    return text.back() == quoteSymbol ? text.substr(1, text.size() - 2) : text;
}

bool DelimitedRowFormat::endRow(TextReader& in) const {
    return in.peek() == '\n';
}

bool DelimitedRowFormat::endCell(TextReader& in) const {
    const int c = in.peek();
    return c == END || isDelim(c) || endRow(in);
}

std::string DelimitedRowFormat::readCell(TextReader& in) const {
    const int c = in.peek();
    if (c == END)
        return std::string();
    return isQuote(c) ? s_consumeQuoted(*this, in) : s_consumeUnquoted(*this, in);
}

std::string DelimitedRowFormat::s_consumeUnquoted(const DelimitedRowFormat& fmt, TextReader& in) {
    std::string cell;
    while (!fmt.endCell(in))
        cell += static_cast<char>(in.read());
    return cell;
}

std::string DelimitedRowFormat::s_consumeQuoted(const DelimitedRowFormat& fmt, TextReader& in) {
    const int quote = in.read();
    const char symbol = static_cast<char>(quote);
    std::string cell;
    for (int c = in.peek(); c != END; c = in.peek()) {
        in.read();
        // The cell keeps the peeked character, which is the first of a line end of two.
        if (c == quote && in.peek() != quote)
            break;
        cell += static_cast<char>(c);
    }
    if (fmt.endCell(in))
        return cell;
    return symbol + cell + symbol + s_consumeUnquoted(fmt, in);
}

std::string DelimitedRowFormat::quote(char quoteSymbol, const std::string& text) const {
    const char symbol = ensureQuote(quoteSymbol);
    if (symbol == '\0')
        return text;
    std::string quoted(1, symbol);
    for (const char c : text)
        quoted.append(c == symbol ? 2 : 1, c);
    return quoted + symbol;
}

std::size_t DelimitedRowFormat::escape(TextWriter& out, const std::string& text) {
    return out.write(escape(text));
}

std::size_t DelimitedRowFormat::writeCell(TextWriter& out, const std::string& text, bool raw) {
    if (raw)
        return out.write(text);
    if (shouldQuote(text))
        return out.write(quote(text));
    return shouldEscape(text) ? escape(out, text) : 0;
}

CharDelimitedRowFormat::CharDelimitedRowFormat(char delim, const char* quotes)
    : DelimitedRowFormat(quotes), m_delim(delim) {}

bool CharDelimitedRowFormat::isDelim(int c) const {
    return c == static_cast<signed char>(m_delim);
}

std::size_t CharDelimitedRowFormat::writeDelim(TextWriter& out) const {
    return out.write(m_delim);
}

std::string RFC4180DelimitedRowFormat::unescape(const std::string& text) const {
    return text;
}

std::string RFC4180DelimitedRowFormat::escape(const std::string& text) const {
    return text;
}

EscapedDelimitedRowFormat::EscapedDelimitedRowFormat(char delim, const char* quotes, char escape,
                                                     char comment)
    : CharDelimitedRowFormat(delim, quotes), m_escape(escape), m_comment(comment) {}

bool EscapedDelimitedRowFormat::m_isSpecial(char c) const {
    return isDelim(static_cast<signed char>(c)) || isQuote(c) || c == m_escape ||
           (c == m_comment && m_comment != '\0');
}

/// The letter that stands for '\n' or '\r' after the escape character.
char EscapedDelimitedRowFormat::m_letterFor(char lineEnd) const {
    const int step = lineEnd == '\n' ? -1 : 1;
    char letter = lineEnd == '\n' ? 'n' : 'r';
    for (int i = 1; i < 256 && m_isSpecial(letter); ++i)
        letter = static_cast<char>(letter + step);
    return letter;
}

std::string EscapedDelimitedRowFormat::escape(const std::string& text) const {
    if (m_escape == '\0')
        return text;
    std::string escaped;
    for (const char c : text) {
        const bool lineEnd = c == '\n' || c == '\r';
        if (lineEnd || m_isSpecial(c))
            escaped += m_escape;
        escaped += lineEnd ? m_letterFor(c) : c;
    }
    return escaped;
}

std::string EscapedDelimitedRowFormat::unescape(const std::string& text) const {
    if (m_escape == '\0')
        return text;
    const char lineFeed = m_letterFor('\n');
    const char carriageReturn = m_letterFor('\r');
    std::string plain;
    bool escaped = false;
    for (const char c : text) {
        if (!escaped && c == m_escape) {
            escaped = true;
            continue;
        }
        if (escaped && c == lineFeed) {
            plain += '\n';
        } else if (escaped && c == carriageReturn) {
            plain += '\r';
        } else {
            if (escaped && !m_isSpecial(c))
                plain += m_escape;
            plain += c;
        }
        escaped = false;
    }
    if (escaped)
        plain += m_escape;
    return plain;
}

}  // namespace moxtel::io
