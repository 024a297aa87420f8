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
/// Characters over a device, with the line ends of the input translated to a single line feed and
/// with rows and columns counted.
namespace moxtel::io {

class DelimitedRowParser;
class [[gnu::visibility("hidden")]] InPlace;

/// What readers and writers have in common: the device and the position. Copies share the device.
///
/// A device given by pointer is shared through the registry of managed memory and destroyed with
/// its last holder. A device given by reference is asked for its `makeProxy()`, which is held in
/// the same way: unless the owner of the device has registered it with `mem::protect` before, the
/// stream takes it over.
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

    /// No device: a reader is at the end of its data, and every write fails.
    TextStream() = default;

    /// @{
    /// Over a device that is shared as told above; null for none.
    explicit TextStream(Device* device);
    explicit TextStream(Device& device);
    /// @}

    TextStream(const TextStream&) = default;
    TextStream& operator=(const TextStream&) = default;
    virtual ~TextStream() = default;

    /// A share of the device.
    mem::Pointer<Device> handle() const { return m_device; }

    /// @{
    /// Line ends read or written so far, and characters since the last of them.
    std::size_t row() const { return m_row; }
    std::size_t col() const { return m_col; }
    /// @}

  protected:
    mem::Pointer<Device> m_device;        ///< May be null.
    Endianness m_endian = ENDIAN_LITTLE;  ///< Carried along by copies; text has no use for it.
    std::size_t m_row = 0;                ///< See `row()`.
    std::size_t m_col = 0;                ///< See `col()`.
};

/// Reads text. `acceptNewlines` combines `Newline` values; what is not accepted as a line end is an
/// ordinary character. With all accepted, CR LF and LF CR are one line end each, LF LF and CR CR
/// two.
///
/// Characters are signed chars as `int`; -1 is the end of the data. A byte 0xFF reads as -1 too,
/// yet the next call goes on after it. A copy has a look-ahead of its own over the shared device,
/// so only one of the two is to go on reading.
class TextReader : public TextStream {
  public:
    TextReader() = default;

    /// @{
    /// Over a device that is shared as told for `TextStream`; null for none.
    TextReader(Device* device, int acceptNewlines);
    TextReader(Device& device, int acceptNewlines);
    /// @}

    /// @{
    /// Over a stream that must outlive the reader and its copies.
    TextReader(std::istream& in, int acceptNewlines);
    TextReader(std::iostream& inOut, int acceptNewlines);
    /// @}

    /// Over a file (see `Device::fromFile`), accepting all line ends; the flags 0 stand for
    /// `OPEN_READ`.
    static TextReader fromFile(const std::string& path, int openFlags = 0);

    /// The next character as it is in the data, not consumed, not counted, no line end translated.
    int peek() {
        m_last = m_take();
        return m_last;
    }

    /// The next character, a line feed for an accepted line end.
    int read() {
        const int c = m_take();
        if (c == '\n' || c == '\r')
            return m_readLineEnd(c);
        if (c != -1)
            ++m_col;
        return c;
    }

    /// Reads up to `len` bytes and translates them in place. Always 0: how many characters came of
    /// them is not reported. The bytes do not include a character that was only peeked at.
    ///
    /// A CR LF pair is written one place further on than where it was found, over bytes that are
    /// still to be translated; what would come to lie past `len` is dropped. Text with CR LF line
    /// ends is therefore to be read in another way.
    std::size_t read(char* buf, std::size_t len);

    /// The characters up to the next accepted line end, which is consumed, or up to the end of the
    /// data. An empty line and the end of the data give the same; `peek` tells them apart.
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
    int m_last = -1;               ///< A character that was peeked at, -1 when there is none.
    std::ios* m_stream = nullptr;  ///< What the device reads from, if it tells.
};

/// Writes text; a line ends with a single line feed. Each operation gives the number of
/// characters that the device took; it goes on after a character that failed. Rows and columns are
/// counted after the character was written, so not for one that the device throws for. Each
/// character costs a call of the device.
class TextWriter : public TextStream {
  public:
    TextWriter() = default;

    /// @{
    /// Over a device that is shared as told for `TextStream`; null for none.
    explicit TextWriter(Device* device);
    explicit TextWriter(Device& device);
    /// @}

    /// @{
    /// Over a stream that must outlive the writer and its copies.
    explicit TextWriter(std::ostream& out);
    explicit TextWriter(std::iostream& inOut);
    /// @}

    /// Over a file (see `Device::fromFile`); the flags 0 stand for `OPEN_WRITE`.
    static TextWriter fromFile(const std::string& path, int openFlags = 0);

    /// The byte `(char)c`, or the line end for a line feed. The column counts a byte that failed.
    std::size_t write(int c);

    /// A line end. Row and column stay as they are when it fails.
    std::size_t writeLine();

    /// @{
    /// Every character as by `write(int)`, NULs too.
    std::size_t write(const char* buf, std::size_t len);
    std::size_t write(const std::string& str);
    /// @}

    /// Writes from index `i` up to, not including, index `len`: `len` is an end index. When it is
    /// npos or `i + len` lies past the end of `str`, the end is that of `str`.
    std::size_t write(const std::string& str, std::size_t i, std::size_t len);

    /// Text up to its NUL.
    std::size_t writeString(const char* str);

    /// Text up to its NUL, then a line end.
    std::size_t writeLine(const char* str);

    /// @{
    /// Pass on what the device holds back, and `close` closes its file (see `Device::close`).
    /// Whether nothing is lost of all that this writer, or the one that it is a copy of, was to
    /// write. A device that a writer leaves without them does the same and tells nobody.
    bool flush();
    bool close();
    /// @}

  private:
    bool m_put(char c) {
        const bool taken = m_device && m_device->write(c);
        m_lost = m_lost || !taken;
        return taken;
    }

    bool m_lost = false;  ///< Whether the device refused a character.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
