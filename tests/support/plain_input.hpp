#pragma once

#include <algorithm>
#include <cstddef>
#include <ios>
#include <istream>
#include <string>
#include <utility>

#include <moxtel/device.hpp>
#include <moxtel/text.hpp>

/// A second implementation of reading, call by call and byte by byte, with which tests compare the
/// library's readers.
namespace moxtel::io::plain {

class Source {
  public:
    virtual ~Source() = default;
    virtual std::size_t read(char* buf, std::size_t n) = 0;
    virtual void seekg(long off, SeekWhence whence) = 0;
    virtual std::streampos tellg() = 0;

    int read() {
        char c = 0;
        return read(&c, 1) == 1 ? static_cast<signed char>(c) : -1;
    }
};

class StreamSource : public Source {
  public:
    explicit StreamSource(std::istream& in) : m_in(in) {}

    using Source::read;
    std::size_t read(char* buf, std::size_t n) override {
        if (m_in.eof())
            return Device::FAILED;
        m_in.read(buf, static_cast<std::streamsize>(n));
        if ((m_in.rdstate() & (std::ios::failbit | std::ios::badbit)) != 0)
            return Device::FAILED;
        return static_cast<std::size_t>(m_in.gcount());
    }
    void seekg(long off, SeekWhence whence) override {
        m_in.seekg(off, whence == WHENCE_SET   ? std::ios::beg
                        : whence == WHENCE_CUR ? std::ios::cur
                                               : std::ios::end);
    }
    std::streampos tellg() override { return m_in.tellg(); }

  private:
    std::istream& m_in;
};

/// A string or a block of memory; with `seeks`, a file.
class TextSource : public Source {
  public:
    TextSource(std::string text, bool seeks) : m_text(std::move(text)), m_seeks(seeks) {}

    using Source::read;
    std::size_t read(char* buf, std::size_t n) override {
        std::size_t count = 0;
        for (; count < n && m_at < static_cast<long>(m_text.size()); ++count)
            buf[count] = m_text[static_cast<std::size_t>(m_at++)];
        return count;
    }
    void seekg(long off, SeekWhence whence) override {
        const long origin = whence == WHENCE_SET   ? 0
                            : whence == WHENCE_CUR ? m_at
                                                   : static_cast<long>(m_text.size());
        if (m_seeks && origin + off >= 0)
            m_at = origin + off;
    }
    std::streampos tellg() override { return m_at; }

  private:
    std::string m_text;
    bool m_seeks;
    long m_at = 0;
};

class Reader {
  public:
    Reader(Source& source, int acceptNewlines)
        : m_source(source), m_accepted(acceptNewlines == 0 ? -1 : acceptNewlines) {}

    std::size_t row() const { return m_row; }
    std::size_t col() const { return m_col; }

    int peek() {
        if (m_last == -1)
            m_last = m_source.read();
        return m_last;
    }

    int read() {
        const int c = m_last != -1 ? m_last : m_source.read();
        m_last = -1;
        if (c == -1)
            return -1;
        bool lineEnd = false;
        if (c == '\n' || c == '\r') {
            const int pair = c == '\n' ? TextStream::NL_LFCR : TextStream::NL_CRLF;
            const int alone = c == '\n' ? TextStream::NL_LF : TextStream::NL_CR;
            if ((m_accepted & pair) != 0 && peek() == (c == '\n' ? '\r' : '\n')) {
                m_last = -1;
                lineEnd = true;
            } else {
                lineEnd = (m_accepted & alone) != 0;
            }
        }
        m_count(lineEnd);
        return lineEnd ? '\n' : c;
    }

    std::string readUntil(char stop, int& end) {
        std::string text;
        for (end = peek();
             end != -1 && end != '\n' && end != '\r' && end != static_cast<signed char>(stop);
             end = peek())
            text += static_cast<char>(read());
        return text;
    }

    std::string readLine() {
        const std::size_t begun = m_row;
        std::string line;
        while (true) {
            const int c = read();
            if (c == -1 || m_row != begun)
                return line;
            line += static_cast<char>(c);
        }
    }

    std::size_t read(char* buf, std::size_t len) {
        const std::size_t count = m_source.read(buf, len);
        if (count == Device::FAILED)
            return 0;
        for (std::size_t i = 0, j = 0; i < count; ++i, ++j) {
            const char c = buf[i];
            const char next = i + 1 < count ? buf[i + 1] : '\xff';
            bool lineEnd = false;
            if (c == '\n' && next == '\r' && (m_accepted & TextStream::NL_LFCR) != 0) {
                ++i;
                lineEnd = true;
            } else if (c == '\r' && next == '\n' && (m_accepted & TextStream::NL_CRLF) != 0) {
                ++j;
                lineEnd = true;
            } else {
                lineEnd = (c == '\n' && (m_accepted & TextStream::NL_LF) != 0) ||
                          (c == '\r' && (m_accepted & TextStream::NL_CR) != 0);
            }
            m_count(lineEnd);
            if (j < len)
                buf[j] = lineEnd ? '\n' : c;
        }
        return 0;
    }

  private:
    void m_count(bool lineEnd) {
        m_row += lineEnd ? 1 : 0;
        m_col = lineEnd ? 0 : m_col + 1;
    }

    Source& m_source;
    int m_accepted;
    int m_last = -1;
    std::size_t m_row = 0;
    std::size_t m_col = 0;
};

/// Reads a table of cells in a format without escapes.
class RowParser {
  public:
    RowParser(Source& source, char delim, std::string quotes)
        : m_in(source, 0), m_delim(delim), m_quotes(std::move(quotes)) {}

    const Reader& reader() const { return m_in; }

    bool hasRow() { return m_in.peek() != -1; }

    bool hasCell() {
        const int c = m_in.peek();
        if (m_in.peek() == '\n') {
            m_in.read();
            return false;
        }
        if (c == -1)
            return false;
        if (m_isDelim(c))
            m_in.read();
        return true;
    }

    std::string nextCell() {
        const int c = m_in.peek();
        if (c == '\n' || c == -1)
            return "";
        return m_quotes.find(static_cast<char>(c)) == std::string::npos ? m_unquoted() : m_quoted();
    }

  private:
    bool m_isDelim(int c) const { return c == static_cast<signed char>(m_delim); }

    bool m_endsCell() {
        const int c = m_in.peek();
        return c == -1 || m_isDelim(c) || m_in.peek() == '\n';
    }

    std::string m_unquoted() {
        std::string cell;
        while (!m_endsCell())
            cell += static_cast<char>(m_in.read());
        return cell;
    }

    std::string m_quoted() {
        const auto quote = static_cast<char>(m_in.read());
        std::string cell;
        for (int c = m_in.peek(); c != -1; c = m_in.peek()) {
            m_in.read();
            if (c == static_cast<signed char>(quote) && m_in.peek() != c)
                break;
            cell += static_cast<char>(c);
        }
        return m_endsCell() ? cell : quote + cell + quote + m_unquoted();
    }

    Reader m_in;
    char m_delim;
    std::string m_quotes;
};

}  // namespace moxtel::io::plain
