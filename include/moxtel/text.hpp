#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include <moxtel/device.hpp>
#include <moxtel/integer.hpp>
#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

/// \file
/// Characters over a device. The line ends of the input become single line feeds, and rows and
/// columns are counted.
namespace moxtel::io {

class DelimitedRowParser;
class [[gnu::visibility("hidden")]] InPlace;

/// What readers and writers have in common: the device and the position. Copies share the device. A
/// stream and its copies belong to one thread.
///
/// A device that is given by pointer is shared through the registry of managed memory and destroyed
/// with its last holder. Of a device that is given by reference, the stream holds the `makeProxy()`
/// in the same way. The stream thus takes a device over, unless its owner has registered it with
/// `mem::protect` before.
class TextStream {
  public:
    /// The line ends that a reader accepts, as bit flags.
    enum Newline : std::int32_t {
        NL_DEFAULT = 0,  ///< All of them.
        NL_LF = 1,
        NL_CR = 2,
        NL_CRLF = 4,
        NL_LFCR = 8,
    };

    /// No device: a reader is at the end of the data, and every write fails.
    TextStream() = default;

    /// @{
    /// Over a device that is shared as said above; null stands for none.
    explicit TextStream(Device* device);
    explicit TextStream(Device& device);
    /// @}

    TextStream(const TextStream&) = default;
    TextStream& operator=(const TextStream&) = default;
    virtual ~TextStream() = default;

    /// A share of the device; null where there is none.
    mem::Pointer<Device> handle() const { return m_device; }

    /// @{
    /// The number of line ends read or written so far, and of characters since the last line end.
    std::size_t row() const { return m_row; }
    std::size_t col() const { return m_col; }
    /// @}

  protected:
    mem::Pointer<Device> m_device;        ///< May be null.
    Endianness m_endian = ENDIAN_LITTLE;  ///< Carried along by copies; text has no use for it.
    std::size_t m_row = 0;                ///< See `row()`.
    std::size_t m_col = 0;                ///< See `col()`.
};

/// Reads text. `acceptNewlines` combines `Newline` values. A line end that is not accepted is read
/// as ordinary characters. With all accepted, CR LF and LF CR are one line end each; LF LF and CR
/// CR are two.
///
/// Characters are signed chars as `int`; -1 is the end of the data. A byte 0xFF reads as -1 too,
/// but the next call goes on after it. A copy has its own look-ahead over the shared device, so
/// only one of the two may go on reading.
class TextReader : public TextStream {
  public:
    TextReader() = default;

    /// @{
    /// Over a device that is shared as said for `TextStream`; null stands for none.
    TextReader(Device* device, int acceptNewlines);
    TextReader(Device& device, int acceptNewlines);
    /// @}

    /// @{
    /// Over a stream that must outlive the reader and its copies.
    TextReader(std::istream& in, int acceptNewlines);
    TextReader(std::iostream& inOut, int acceptNewlines);
    /// @}

    /// Over a file (see `Device::fromFile`), with all line ends accepted. The flags 0 stand for
    /// `OPEN_READ`.
    static TextReader fromFile(const std::string& path, int openFlags = 0);

    /// The next character as it is in the data. It is neither consumed nor counted, and line ends
    /// are not translated.
    int peek() {
        m_last = m_take();
        return m_last;
    }

    /// Reads the next character: a line feed for an accepted line end.
    int read() {
        const int c = m_take();
        if (c == '\n' || c == '\r')
            return m_readLineEnd(c);
        if (c != -1)
            ++m_col;
        return c;
    }

    /// Reads up to `len` bytes into `buf` and translates them there. Always returns 0: the number
    /// of characters is not reported. A character that was only peeked at is not among the bytes.
    ///
    /// The line feed of a CR LF pair is written one place too far, over bytes that are still to be
    /// translated; what would lie past `len` is dropped. Do not read text with CR LF line ends in
    /// this way.
    std::size_t read(char* buf, std::size_t len);

    /// Reads up to the next accepted line end, which is consumed but not returned, or up to the end
    /// of the data. An empty line and the end of the data both give an empty text; `peek` tells
    /// them apart.
    std::string readLine();

  private:
    friend class DelimitedRowParser;
    friend class InPlace;

    /// The next character as it is in the data, consumed but not counted.
    int m_take() { return m_last != -1 ? std::exchange(m_last, -1) : m_fetch(); }
    int m_fetch();

    /// The stream buffer that holds the next character, or null.
    std::streambuf* m_ready() const;

    /// Reads the characters up to, not including, the next `stop`, line feed or carriage return, or
    /// up to the end of the data. `end` is what `peek` gives there. The effect is that of `peek`
    /// and `read` one by one; where the device reads from a stream, it is done in blocks.
    std::string m_readUntil(char stop, int& end);

    /// The characters that come next as they are in the data, in the buffer of the stream that the
    /// device reads from: the character that was peeked at and at least one after it. Empty where
    /// they do not stand there. Valid until anything is done with the reader, the device or the
    /// stream.
    std::string_view m_atHand() const;

    /// Reads `n` characters, no more than are at hand. None of them may be part of a line end or a
    /// byte 0xFF.
    void m_skip(std::size_t n);

    int m_readLineEnd(int c);
    bool m_accepts(Newline newline) const { return (m_acceptNewlines & newline) != 0; }
    bool m_takePair(Newline pair, char second);
    bool m_endsLine(int c);
    void m_count(bool lineEnd);

    int m_acceptNewlines = -1;
    int m_last = -1;               ///< The character that was peeked at, -1 when there is none.
    std::ios* m_stream = nullptr;  ///< The stream that the device reads from, or null.
};

/// Writes text; a line ends with a single line feed. Each operation returns the number of
/// characters that the device took, and goes on after a character that failed. A character is
/// counted after it was written, so one that the device throws for is not counted. Each character
/// costs a call of the device.
class TextWriter : public TextStream {
  public:
    TextWriter() = default;

    /// @{
    /// Over a device that is shared as said for `TextStream`; null stands for none.
    explicit TextWriter(Device* device);
    explicit TextWriter(Device& device);
    /// @}

    /// @{
    /// Over a stream that must outlive the writer and its copies.
    explicit TextWriter(std::ostream& out);
    explicit TextWriter(std::iostream& inOut);
    /// @}

    /// Over a file (see `Device::fromFile`). The flags 0 stand for `OPEN_WRITE`.
    static TextWriter fromFile(const std::string& path, int openFlags = 0);

    /// Writes the byte `(char)c`, or a line end for a line feed. The column counts a byte that
    /// failed, too.
    std::size_t write(int c);

    /// Writes a line end. Row and column stay as they are when that fails.
    std::size_t writeLine();

    /// @{
    /// Write every character as `write(int)` does, NULs too.
    std::size_t write(const char* buf, std::size_t len);
    std::size_t write(const std::string& str);
    /// @}

    /// Writes from index `i` up to, not including, index `len`, which is thus an end index. The end
    /// of `str` is taken instead when `len` is npos or `i + len` lies past it.
    std::size_t write(const std::string& str, std::size_t i, std::size_t len);

    /// Writes `str` up to its NUL; `str` is not null.
    std::size_t writeString(const char* str);

    /// Writes `str` up to its NUL, then a line end; `str` is not null.
    std::size_t writeLine(const char* str);

    /// @{
    /// Pass on what the device holds back; `close` also closes its file (see `Device::close`).
    /// Return whether nothing is lost of all that this writer, or the one that it was copied from,
    /// was to write. Without these calls the device does the same when it goes, and reports
    /// nothing.
    bool flush();
    bool close();
    /// @}

  private:
    bool m_put(char c) {
        const bool taken = m_device && m_device->write(c);
        m_lost = m_lost || !taken;
        return taken;
    }

    bool m_lost = false;  ///< Whether the device has refused a character.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
