#include <moxtel/file_stream.hpp>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>
#include <streambuf>
#include <string_view>
#include <vector>

#include <fcntl.h>

#include "descriptor.hpp"

namespace moxtel::io {

FileError::FileError(const char* action, const std::string& file, int reason)
    : std::system_error(reason, std::generic_category(),
                        std::string("cannot ") + action + " " + file) {}

class InputFile::Buffer : public std::streambuf {
  public:
    explicit Buffer(const std::string& path) : m_file(path, O_RDONLY) {}
    Buffer(int descriptor, const std::string& name) : m_file(descriptor, name) {}

    bool isOpen() const { return m_file.isOpen(); }

  protected:
    int_type underflow() override {
        char* const begin = m_block.data();
        const std::size_t got = m_file.read(begin, m_block.size());
        setg(begin, begin, begin + got);
        return got == 0 ? traits_type::eof() : traits_type::to_int_type(*begin);
    }

  private:
    Descriptor m_file;
    std::vector<char> m_block = std::vector<char>(1 << 16);
};

InputFile::InputFile(const std::string& path)
    : std::istream(nullptr), m_buffer(std::make_unique<Buffer>(path)) {
    rdbuf(m_buffer.get());
    exceptions(badbit);
    if (!m_buffer->isOpen())
        setstate(failbit);
}

InputFile::InputFile(int descriptor, const std::string& name)
    : std::istream(nullptr), m_buffer(std::make_unique<Buffer>(descriptor, name)) {
    rdbuf(m_buffer.get());
    exceptions(badbit);
}

InputFile::~InputFile() = default;

/// Holds whole lines, and the beginning of another, until they are flushed or fill the block.
class OutputFile::Buffer : public std::streambuf {
  public:
    explicit Buffer(const std::string& path) : m_file(path, O_WRONLY | O_CREAT | O_TRUNC) {
        m_empty();
    }
    Buffer(int descriptor, const std::string& name) : m_file(descriptor, name) { m_empty(); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() override {
        try {
            m_writeLines();
        } catch (...) {
            // The stack unwinds already, or the caller did not ask for failures.
        }
    }

    bool isOpen() const { return m_file.isOpen(); }

    void close() {
        m_flush();
        m_file.close();
    }

  protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof()))
            return traits_type::not_eof(c);
        const char character = traits_type::to_char_type(c);
        xsputn(&character, 1);
        return c;
    }

    std::streamsize xsputn(const char* text, std::streamsize n) override {
        std::string_view rest(text, static_cast<std::size_t>(n));
        if (rest.size() > m_room()) {
            m_writeLines();
            // Whole lines that are longer than the block need no copy.
            if (m_held().empty() && rest.size() > m_block.size()) {
                const std::string_view lines = s_linesOf(rest);
                m_file.write(lines);
                rest.remove_prefix(lines.size());
            }
            m_growFor(rest.size());
        }
        rest.copy(pptr(), rest.size());
        m_advance(rest.size());
        return n;
    }

    int sync() override {
        m_flush();
        return 0;
    }

  private:
    std::string_view m_held() const {
        return {pbase(), static_cast<std::size_t>(pptr() - pbase())};
    }

    std::size_t m_room() const { return static_cast<std::size_t>(epptr() - pptr()); }

    /// The whole lines that a text begins with.
    static std::string_view s_linesOf(std::string_view text) {
        return text.substr(0, text.rfind('\n') + 1);
    }

    void m_empty() { setp(m_block.data(), m_block.data() + m_block.size()); }

    void m_advance(std::size_t n) {
        constexpr std::size_t most = std::numeric_limits<int>::max();
        for (; n > most; n -= most)
            pbump(static_cast<int>(most));
        pbump(static_cast<int>(n));
    }

    /// Empties the buffer first, so that its text is not written again after a failure.
    void m_flush() {
        const std::string_view held = m_held();
        m_empty();
        m_file.write(held);
    }

    /// Writes the whole lines and keeps the beginning of another line.
    void m_writeLines() {
        const std::string_view held = m_held();
        const std::string_view lines = s_linesOf(held);
        if (lines.empty())
            return;
        m_empty();
        m_file.write(lines);
        const std::string_view begun = held.substr(lines.size());
        std::memmove(m_block.data(), begun.data(), begun.size());
        m_advance(begun.size());
    }

    void m_growFor(std::size_t n) {
        if (n <= m_room())
            return;
        const std::size_t held = m_held().size();
        m_block.resize(std::max(2 * m_block.size(), held + n));
        m_empty();
        m_advance(held);
    }

    Descriptor m_file;
    std::vector<char> m_block = std::vector<char>(1 << 13);
};

OutputFile::OutputFile(const std::string& path)
    : std::ostream(nullptr), m_buffer(std::make_unique<Buffer>(path)) {
    rdbuf(m_buffer.get());
    exceptions(badbit);
    if (!m_buffer->isOpen())
        setstate(failbit);
}

OutputFile::OutputFile(int descriptor, const std::string& name)
    : std::ostream(nullptr), m_buffer(std::make_unique<Buffer>(descriptor, name)) {
    rdbuf(m_buffer.get());
    exceptions(badbit);
}

OutputFile::~OutputFile() = default;

void OutputFile::close() {
    if (m_buffer->isOpen())
        m_buffer->close();
}

}  // namespace moxtel::io
