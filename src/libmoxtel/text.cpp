#include <moxtel/text.hpp>

#include <cstring>
#include <istream>

#include "find_stop.hpp"
#include "get_area.hpp"

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
    : TextStream(device),
      m_acceptNewlines(acceptNewlines == NL_DEFAULT ? -1 : acceptNewlines),
      m_stream(device != nullptr ? device->m_input() : nullptr) {}

TextReader::TextReader(Device& device, int acceptNewlines)
    : TextReader(device.makeProxy(), acceptNewlines) {}

TextReader::TextReader(std::istream& in, int acceptNewlines)
    : TextReader(Device::wrap(in), acceptNewlines) {}

TextReader::TextReader(std::iostream& inOut, int acceptNewlines)
    : TextReader(Device::wrap(inOut), acceptNewlines) {}

TextReader TextReader::fromFile(const std::string& path, int openFlags) {
    return TextReader(Device::fromFile(path, orDefault(openFlags, OPEN_READ)), NL_DEFAULT);
}

/// Where the buffer of the stream is empty, the device reads, which also brings the stream to its
/// end state.
int TextReader::m_fetch() {
    if (std::streambuf* const ready = m_ready())
        return characterOf(static_cast<char>(ready->sbumpc()));
    return m_device ? m_device->read() : END;
}

std::streambuf* TextReader::m_ready() const {
    return m_stream != nullptr ? GetArea::of(*m_stream) : nullptr;
}

/// Whether the pair is accepted and `second` is next and completes it. Then consumes `second`.
bool TextReader::m_takePair(Newline pair, char second) {
    if (!m_accepts(pair) || peek() != second)
        return false;
    m_last = END;
    return true;
}

/// Whether `c`, which was just taken, begins an accepted line end. Then consumes its rest.
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

int TextReader::m_readLineEnd(int c) {
    const bool lineEnd = m_endsLine(c);
    m_count(lineEnd);
    return lineEnd ? '\n' : c;
}

std::string TextReader::m_readUntil(char stop, int& end) {
    const int stopCharacter = characterOf(stop);
    std::string text;
    end = peek();
    while (!endsRun(end, stopCharacter)) {
        const char taken = static_cast<char>(end);
        m_last = END;
        ++m_col;
        std::streambuf* const ready = m_ready();
        if (ready == nullptr) {
            text += taken;
            end = peek();
            continue;
        }
        const char* begin = GetArea::begin(*ready);
        const char* const next = findStop(begin, GetArea::end(*ready), stopCharacter);
        GetArea::skipTo(*ready, next);
        m_col += static_cast<std::size_t>(next - begin);
        // The taken character mostly stands before the others in the buffer, unless the stream was
        // moved since.
        if (begin != GetArea::past(*ready) && begin[-1] == taken)
            --begin;
        else
            text += taken;
        if (next != GetArea::end(*ready)) {
            m_last = end = characterOf(static_cast<char>(ready->sbumpc()));
            return text.empty() ? std::string(begin, next) : text.append(begin, next);
        }
        text.append(begin, next);
        end = peek();
    }
    return text;
}

std::string_view TextReader::m_atHand() const {
    const std::streambuf* const ready = m_last != END ? m_ready() : nullptr;
    if (ready == nullptr)
        return {};
    // The peeked character mostly stands before the others in the buffer, unless the stream was
    // moved since.
    const char* const begin = GetArea::begin(*ready);
    if (begin == GetArea::past(*ready) || characterOf(begin[-1]) != m_last)
        return {};
    return {begin - 1, GetArea::end(*ready)};
}

void TextReader::m_skip(std::size_t n) {
    if (n == 0)
        return;
    std::streambuf& buffer = *m_stream->rdbuf();
    GetArea::skipTo(buffer, GetArea::begin(buffer) + n - 1);
    m_last = END;
    m_col += n;
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
    const bool taken = m_put(static_cast<char>(c));
    ++m_col;
    return taken ? 1 : 0;
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
    // A sum of `i` and `len` could overflow.
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

bool TextWriter::flush() {
    const bool passedOn = !m_device || m_device->flush();
    return passedOn && !m_lost;
}

bool TextWriter::close() {
    const bool passedOn = !m_device || m_device->close();
    return passedOn && !m_lost;
}

}  // namespace moxtel::io
