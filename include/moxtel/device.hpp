#pragma once

#include <cstddef>
#include <cstdint>
#include <ios>
#include <iosfwd>
#include <string>

#pragma GCC visibility push(default)

/// \file
/// Devices: byte sources and sinks under one interface. The text and binary streams and the table
/// parser read and write through them only.
namespace moxtel::io {

class [[gnu::visibility("hidden")]] InPlace;
class TextReader;

/// Bit flags, passed on as `int`.
enum OpenMode : std::int32_t {
    OPEN_READ = 1,
    OPEN_WRITE = 2,
    OPEN_READ_WRITE = 3,
};

/// What an offset counts from: the start, the position, or the end.
enum SeekWhence : std::int32_t {
    WHENCE_SET = 1,
    WHENCE_CUR = 2,
    WHENCE_END = 4,
};

/// The `fopen` mode for the low two bits of `flags`: "", "r", "w" or "rw". The last opens for
/// reading only.
const char* fopenFlags(int flags);

/// A byte source, a byte sink or both. Failures are results, not exceptions, except where an
/// operation is not offered at all (`seekg` and the like) and where a standard stream has been told
/// to throw.
///
/// The kinds of device are had from the factories only. Each gives a new device that the caller
/// owns; a stream made from its address takes it over.
class Device {
  public:
    /// The result of a block transfer that failed.
    static constexpr std::size_t FAILED = static_cast<std::size_t>(-1);

    /// @{
    /// Devices over standard streams. A stream given by reference stays the caller's and must
    /// outlive the device; a stream given by pointer is deleted with it. A device over a null
    /// pointer is refused when it is used: everything that needs the stream throws
    /// `AccessException`.
    ///
    /// A block read fails once the stream has met its end before, and also when it meets it during
    /// the read: the bytes before the end are then in the buffer, but not counted. A transfer in
    /// the direction that the stream lacks fails.
    static Device* wrap(std::istream& in);
    static Device* wrap(std::istream* in);
    static Device* wrap(std::ostream& out);
    static Device* wrap(std::ostream* out);
    static Device* wrap(std::iostream& inOut);
    static Device* wrap(std::iostream* inOut);
    /// @}

    /// A device over a file, opened with `fopenFlags(flags)` and closed with the device. A file
    /// that cannot be opened is not reported: it reads as empty, takes no byte, ignores seeking and
    /// tells the position -1. Transfers stop short at the end of the file and at an error.
    ///
    /// `canRead` and `canWrite` both ask whether `flags` holds `OPEN_READ`.
    static Device* fromFile(const std::string& path, int flags);

    /// A device over `len` bytes at `buf`, which stay the caller's. Reading and writing move one
    /// position from the first byte to the end of the block, where transfers stop short. Seeking is
    /// ignored.
    ///
    /// `canRead` and `canWrite` both ask whether `flags` holds `OPEN_READ`; no transfer heeds it.
    static Device* wrapArray(void* buf, std::size_t len, int flags);

    /// A device for reading `len` bytes at `buf`, which stay the caller's and must outlive the
    /// device. Writes transfer nothing and seeking is ignored.
    static Device* wrapArray(const void* buf, std::size_t len);

    /// A device for reading a copy of `s.substr(start, len)`; throws what `substr` throws. Writes
    /// transfer nothing and seeking is ignored.
    static Device* wrapString(const std::string& s, std::size_t start, std::size_t len);

    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    /// @{
    /// Whether the device claims to be for reading, or for writing; transfers do not ask. A stream
    /// claims its own direction, a string reading, and the other kinds what their factories say.
    virtual bool canRead() const = 0;
    virtual bool canWrite() const = 0;
    /// @}

    /// 1 for an input stream held by reference, 0 for every other kind. Says nothing of whether
    /// `seekg` and `seekp` work.
    virtual int seekCapability() const = 0;

    /// Reads up to `n` bytes into `buf`. The number read, or `FAILED`.
    virtual std::size_t read(char* buf, std::size_t n) = 0;

    /// One byte as a signed char, -1 at the end. A byte 0xFF cannot be told from the end.
    ///
    /// A device over a standard stream takes the byte from the stream's buffer where that holds
    /// some. The stream's `gcount` then stays as it was, and a stream that is tied to it is not
    /// flushed; it is flushed before every read that may have to wait for data.
    virtual int read();

    /// Writes `n` bytes. The number written, or `FAILED`.
    virtual std::size_t write(const char* buf, std::size_t n) = 0;

    /// One byte; whether it was written.
    virtual bool write(char c);

    /// @{
    /// Move the position of reading and of writing; whether that succeeded is not reported. Throw
    /// `UnsupportedOperationException` unless the kind offers them.
    virtual void seekg(long off, SeekWhence whence);
    virtual void seekp(long off, SeekWhence whence);
    /// @}

    /// @{
    /// The position of reading and of writing, in bytes; -1 when it is not known. Throw
    /// `UnsupportedOperationException` unless the kind offers them.
    virtual std::streampos tellg();
    virtual std::streampos tellp();
    /// @}

    /// The device that a stream made from a reference to this one is to hold; itself, unless the
    /// kind overrides it.
    virtual Device* makeProxy();

    /// Passes on what the device holds back of the bytes written to it. False when that fails, or
    /// when bytes were lost that the device had taken before; true where nothing is held back.
    virtual bool flush();

    /// As `flush`, and closes a file: it then takes and gives no byte any more, for every holder
    /// of the device. The other kinds are only flushed.
    virtual bool close();

  private:
    friend class InPlace;
    friend class TextReader;

    /// The standard stream that the device reads from, or null. A reader may take characters from
    /// the buffer of the stream itself as long as the stream is good and its buffer holds some. The
    /// stream's `gcount` does not tell of them.
    virtual std::istream* m_input();
};

}  // namespace moxtel::io

#pragma GCC visibility pop
