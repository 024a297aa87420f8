#include <moxtel/text.hpp>

#include <cstring>
#include <utility>

namespace moxtel::io {

namespace {

constexpr int END = -1;

int orDefault(int openFlags, OpenMode mode) {
    return openFlags == 0 ? static_cast<int>(mode) : openFlags;
}

}  // namespace

TextStream::TextStream(Device* device) : m_device(device) {}

TextStream::TextStream(Device& device) : m_device(device.makeProxy()) {}

TextReader::TextReader(Device* device, int acceptNewlines)
    : TextStream(device), m_acceptNewlines(acceptNewlines == NL_DEFAULT ? -1 : acceptNewlines) {}

TextReader::TextReader(Device& device, int acceptNewlines)
    : TextReader(device.makeProxy(), acceptNewlines) {}

TextReader::TextReader(std::istream& in, int acceptNewlines)
    : TextReader(Device::wrap(in), acceptNewlines) {}

TextReader::TextReader(std::iostream& inOut, int acceptNewlines)
    : TextReader(Device::wrap(inOut), acceptNewlines) {}

TextReader TextReader::fromFile(const std::string& path, int openFlags) {
    return TextReader(Device::fromFile(path, orDefault(openFlags, OPEN_READ)), NL_DEFAULT);
}

/// The next character as it is in the data, consumed but not counted.
int TextReader::m_take() {
    if (m_last != END)
        return std::exchange(m_last, END);
    return m_device ? m_device->read() : END;
}

/// Whether `second` is next and completes a pair that is accepted; it is then consumed.
bool TextReader::m_takePair(Newline pair, char second) {
    if (!m_accepts(pair) || peek() != second)
        return false;
    m_last = END;
    return true;
}

/// Whether `c`, just taken, begins an accepted line end; the rest of that is then consumed.
bool TextReader::m_endsLine(int c) {
    if (c == '\n')
        return m_takePair(NL_LFCR, '\r') || m_accepts(NL_LF);
    if (c == '\r')
        return m_takePair(NL_CRLF, '\n') || m_accepts(NL_CR);
    return false;
}

void TextReader::m_count(bool lineEnd) {
    if (lineEnd) {
        ++m_row;
        m_col = 0;
    } else {
        ++m_col;
    }
}

int TextReader::peek() {
    m_last = m_take();
    return m_last;
}

int TextReader::read() {
    const int c = m_take();
    if (c == END)
        return END;
    const bool lineEnd = m_endsLine(c);
    m_count(lineEnd);
    return lineEnd ? '\n' : c;
}

std::size_t TextReader::read(char* buf, std::size_t len) {
    const std::size_t count = m_device ? m_device->read(buf, len) : 0;
    if (count == Device::FAILED)
        return 0;
    for (std::size_t i = 0, j = 0; i < count; ++i, ++j) {
        const char c = buf[i];
        const char next = i + 1 < count ? buf[i + 1] : '\xff';
        bool lineEnd = true;
        if (c == '\n' && next == '\r' && m_accepts(NL_LFCR))
            ++i;
        else if (c == '\r' && next == '\n' && m_accepts(NL_CRLF))
            ++j;
        else
            lineEnd = (c == '\n' && m_accepts(NL_LF)) || (c == '\r' && m_accepts(NL_CR));
        m_count(lineEnd);
        if (j < len)
            buf[j] = lineEnd ? '\n' : c;
    }
    return 0;
}

std::string TextReader::readLine() {
    std::string line;
    const std::size_t row = m_row;
    for (int c = read(); c != END && m_row == row; c = read())
        line += static_cast<char>(c);
    return line;
}

TextWriter::TextWriter(Device* device) : TextStream(device) {}

TextWriter::TextWriter(Device& device) : TextStream(device) {}

TextWriter::TextWriter(std::ostream& out) : TextStream(Device::wrap(out)) {}

TextWriter::TextWriter(std::iostream& inOut) : TextStream(Device::wrap(inOut)) {}

TextWriter TextWriter::fromFile(const std::string& path, int openFlags) {
    return TextWriter(Device::fromFile(path, orDefault(openFlags, OPEN_WRITE)));
}

std::size_t TextWriter::write(int c) {
    if (c == '\n')
        return writeLine();
    ++m_col;
    return m_put(static_cast<char>(c)) ? 1 : 0;
}

std::size_t TextWriter::writeLine() {
    if (!m_put('\n'))
        return 0;
    ++m_row;
    m_col = 0;
    return 1;
}

std::size_t TextWriter::write(const char* buf, std::size_t len) {
    std::size_t written = 0;
    for (std::size_t i = 0; i < len; ++i)
        written += write(buf[i]);
    return written;
}

std::size_t TextWriter::write(const std::string& str) {
    return write(str.data(), str.size());
}

std::size_t TextWriter::write(const std::string& str, std::size_t i, std::size_t len) {
    // In this order the sum cannot overflow.
    const bool clamped = i > str.size() || len > str.size() - i;
    const std::size_t end = clamped ? str.size() : len;
    return i < end ? write(str.data() + i, end - i) : 0;
}

std::size_t TextWriter::writeString(const char* str) {
    return write(str, std::strlen(str));
}

std::size_t TextWriter::writeLine(const char* str) {
    const std::size_t written = writeString(str);
    return written + writeLine();
}

}  // namespace moxtel::io
