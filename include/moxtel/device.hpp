#pragma once

#include <cstddef>
#include <cstdint>
#include <ios>
#include <iosfwd>
#include <string>

#pragma GCC visibility push(default)

/// \file
/// Devices: byte sources and sinks under one interface. The text and binary streams and the table
/// parser read and write through devices only.
namespace moxtel::io {

class [[gnu::visibility("hidden")]] InPlace;
class TextReader;

/// What a file is opened for, as bit flags that are passed as `int`.
enum OpenMode : std::int32_t {
    OPEN_READ = 1,
    OPEN_WRITE = 2,
    OPEN_READ_WRITE = 3,
};

/// Where an offset counts from: the start, the position, or the end.
enum SeekWhence : std::int32_t {
    WHENCE_SET = 1,
    WHENCE_CUR = 2,
    WHENCE_END = 4,
};

/// The `fopen` mode for the low two bits of `flags`: "", "r", "w" or "rw". The mode "rw" opens for
/// reading only.
const char* fopenFlags(int flags);

/// A byte source, a byte sink or both. Failures are results, not exceptions, with two exceptions:
/// an operation that is not offered at all (`seekg` and the like), and a standard stream that has
/// been told to throw. A device belongs to one thread.
///
/// Only the factories make the library's kinds of device. Each returns a new device, never null,
/// that the caller owns. A text or binary stream that is made from its address takes it over;
/// otherwise the caller deletes it.
class Device {
  public:
    /// The result of a block transfer that failed.
    static constexpr std::size_t FAILED = static_cast<std::size_t>(-1);

    /// @{
    /// Devices over standard streams. A stream that is given by reference stays the caller's and
    /// must outlive the device. A stream that is given by pointer is deleted with the device. Over
    /// a null pointer, every operation that needs the stream throws `AccessException`.
    ///
    /// A block read fails when the stream has met its end before. It also fails when the stream
    /// meets its end during the read; the bytes before the end are then in the buffer, but not
    /// counted. A transfer in a direction that the stream lacks fails.
    static Device* wrap(std::istream& in);
    static Device* wrap(std::istream* in);
    static Device* wrap(std::ostream& out);
    static Device* wrap(std::ostream* out);
    static Device* wrap(std::iostream& inOut);
    static Device* wrap(std::iostream* inOut);
    /// @}

    /// A device over a file, which is opened with `fopenFlags(flags)` and closed with the device. A
    /// file that cannot be opened is not reported: it reads as empty, takes no byte, ignores
    /// seeking and has the position -1. Transfers stop short at the end of the file and at errors.
    ///
    /// `canRead` and `canWrite` both say whether `flags` has `OPEN_READ`.
    static Device* fromFile(const std::string& path, int flags);

    /// A device over `len` bytes at `buf`, which stay the caller's and must outlive the device.
    /// Reading and writing move one position from the first byte to the end of the block, where
    /// transfers stop short. Seeking is ignored. `buf` may be null when `len` is 0.
    ///
    /// `canRead` and `canWrite` both say whether `flags` has `OPEN_READ`; transfers ignore `flags`.
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
    /// Whether the device claims to be for reading or for writing; transfers do not ask. A standard
    /// stream claims its own directions, a string claims reading, and the factories of the other
    /// kinds say what these claim.
    virtual bool canRead() const = 0;
    virtual bool canWrite() const = 0;
    /// @}

    /// 1 for an input stream that is held by reference, 0 for every other kind. The number does not
    /// say whether `seekg` and `seekp` work.
    virtual int seekCapability() const = 0;

    /// Reads up to `n` bytes into `buf`. Returns the number of bytes read, or `FAILED`.
    virtual std::size_t read(char* buf, std::size_t n) = 0;

    /// Reads one byte, as a signed char; -1 at the end. A byte 0xFF cannot be told from the end.
    ///
    /// A device over a standard stream takes the byte from the buffer of the stream where that has
    /// some. The stream's `gcount` then stays as it was, and a tied stream is not flushed. A tied
    /// stream is flushed before every read that may have to wait for data.
    virtual int read();

    /// Writes `n` bytes. Returns the number of bytes written, or `FAILED`.
    virtual std::size_t write(const char* buf, std::size_t n) = 0;

    /// Writes one byte. Returns whether it was written.
    virtual bool write(char c);

    /// @{
    /// Move the position of reading and of writing by `off` bytes from `whence`. Success is not
    /// reported. Throw `UnsupportedOperationException` unless the kind offers them.
    virtual void seekg(long off, SeekWhence whence);
    virtual void seekp(long off, SeekWhence whence);
    /// @}

    /// @{
    /// The position of reading and of writing, in bytes; -1 when it is unknown. Throw
    /// `UnsupportedOperationException` unless the kind offers them.
    virtual std::streampos tellg();
    virtual std::streampos tellp();
    /// @}

    /// The device that a text or binary stream holds when it is made from a reference to this one;
    /// this one, unless the kind overrides the operation. Never null.
    virtual Device* makeProxy();

    /// Passes on the bytes that the device holds back. Returns false when that fails, or when bytes
    /// were lost that the device had taken before; true where nothing is held back.
    virtual bool flush();

    /// Flushes, with the result of `flush`, and closes a file, which then takes and gives no byte
    /// for any holder of the device. The other kinds are only flushed.
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
