#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>

#include <moxtel/device.hpp>
#include <moxtel/integer.hpp>
#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

/// \file
/// Numbers and strings as bytes over a device.
namespace moxtel::io {

/// Whether memory that a `T*` points to can be read and written as bytes. For `char` there is no
/// need to ask.
template <class T>
constexpr bool isBytes() {
    using Plain = std::remove_cv_t<T>;
    return !std::is_same_v<Plain, char> && (std::is_void_v<T> || std::is_trivially_copyable_v<T>);
}

/// What readers and writers have in common: the device, never null, and the byte order of the data.
/// Copies share the device. A stream and its copies belong to one thread.
///
/// A device that is given by pointer is shared through the registry of managed memory and destroyed
/// with its last holder. Of a device that is given by reference, the stream holds the `makeProxy()`
/// in the same way. The stream thus takes a device over, unless its owner has registered it with
/// `mem::protect` before.
class BinaryStream {
  public:
    /// Over `device`, which is shared as said above. Throws `AccessException` for null.
    BinaryStream(Device* device, Endianness endian);

    /// Over the proxy of `device`.
    BinaryStream(Device& device, Endianness endian);

    BinaryStream(const BinaryStream&) = default;
    BinaryStream& operator=(const BinaryStream&) = default;
    virtual ~BinaryStream() = default;

    /// A share of the device.
    mem::Pointer<Device> handle() const { return m_device; }

    /// @{
    /// The byte order of the integers that are read or written from now on. With any value but the
    /// two of `Endianness`, reading or writing an integer of more than one byte throws
    /// `UnsupportedOperationException`.
    Endianness endian() const { return m_endian; }
    void endian(Endianness endian) { m_endian = endian; }
    /// @}

  protected:
    mem::Pointer<Device> m_device;  ///< Never null.
    Endianness m_endian;            ///< See `endian()`.
};

/// Reads numbers and strings. A number that is cut off by the end of the data is no error: missing
/// bytes count as 0. The reader buffers nothing. A number costs one read of the device, a string
/// behind its length costs two (a long one costs more), and a string that ends with a NUL costs one
/// for each byte.
class BinaryReader : public BinaryStream {
  public:
    using BinaryStream::BinaryStream;

    /// @{
    /// Over a stream that must outlive the reader and its copies.
    BinaryReader(std::istream& in, Endianness endian);
    BinaryReader(std::iostream& inOut, Endianness endian);
    /// @}

    /// @{
    /// Over `len` bytes at `buf`, which stay the caller's and must outlive the reader and its
    /// copies.
    BinaryReader(void* buf, std::size_t len, Endianness endian);
    template <class Bytes>
    requires(std::is_const_v<Bytes>) BinaryReader(Bytes* buf, std::size_t len, Endianness endian)
        : BinaryStream(Device::wrapArray(static_cast<const void*>(buf), len), endian) {}
    /// @}

    /// Over a file (see `Device::fromFile`) of little-endian data. The flags 0 stand for
    /// `OPEN_READ`.
    static BinaryReader fromFile(const std::string& path, int openFlags = 0);

    /// @{
    /// The block read of the device: up to `len` bytes, whatever `buf` points to. Returns the
    /// number of bytes read, or `Device::FAILED`.
    std::size_t read(char* buf, std::size_t len);
    template <class Other>
    requires(isBytes<Other>() && !std::is_const_v<Other>) std::size_t
        read(Other* buf, std::size_t len) {
        return read(static_cast<char*>(static_cast<void*>(buf)), len);
    }
    /// @}

    /// @{
    /// Read an integer of so many bits, signed or unsigned, in the byte order `endian()`.
    signed char readSI8();
    unsigned char readUI8();
    short readSI16();
    unsigned short readUI16();
    int readSI32();
    unsigned int readUI32();
    std::int64_t readSI64();
    std::uint64_t readUI64();
    /// @}

    /// @{
    /// Read the bytes in the order of this machine, whatever `endian()` is.
    float readFloat();
    double readDouble();
    /// @}

    /// @{
    /// Read a string behind its length, an unsigned integer of so many bits. The string is shorter
    /// where the data ends early, as far as the device counts that. Throw `IOException` when a read
    /// of the device fails, and `std::bad_alloc` when there is no memory for the data.
    ///
    /// The length is not trusted. More than 64 KiB is read in pieces, each as long as the text
    /// before it, so memory grows with the data alone.
    std::string readPStr8();
    std::string readPStr16();
    std::string readPStr32();
    std::string readPStr64();
    /// @}

    /// Reads the bytes up to a NUL, which is consumed, or up to the end of the data. A byte 0xFF
    /// counts as that end.
    std::string readNTS();
};

/// Writes numbers and strings. Each operation returns the number of bytes that the device wrote; a
/// transfer that failed counts as `Device::FAILED`, also in a sum.
///
/// A part of a string is given by its start and its length, and is cut to what lies inside the
/// string.
class BinaryWriter : public BinaryStream {
  public:
    using BinaryStream::BinaryStream;

    /// @{
    /// Over a stream that must outlive the writer and its copies.
    BinaryWriter(std::ostream& out, Endianness endian);
    BinaryWriter(std::iostream& inOut, Endianness endian);
    /// @}

    /// Over `len` bytes at `buf`, which stay the caller's and must outlive the writer and its
    /// copies. Nothing is written past them.
    BinaryWriter(void* buf, std::size_t len, Endianness endian);

    /// Over a file (see `Device::fromFile`) of little-endian data. The flags 0 stand for
    /// `OPEN_WRITE`.
    static BinaryWriter fromFile(const std::string& path, int openFlags = 0);

    /// @{
    /// The block write of the device: `len` bytes, whatever `buf` points to.
    std::size_t write(const char* buf, std::size_t len);
    template <class Other>
    requires(isBytes<Other>()) std::size_t write(const Other* buf, std::size_t len) {
        return write(static_cast<const char*>(static_cast<const void*>(buf)), len);
    }
    /// @}

    /// @{
    /// Write an integer of so many bits, signed or unsigned, in the byte order `endian()`.
    std::size_t writeSI8(signed char value);
    std::size_t writeUI8(unsigned char value);
    std::size_t writeSI16(short value);
    std::size_t writeUI16(unsigned short value);
    std::size_t writeSI32(int value);
    std::size_t writeUI32(unsigned int value);
    std::size_t writeSI64(std::int64_t value);
    std::size_t writeUI64(std::uint64_t value);
    /// @}

    /// @{
    /// Write the bytes in the order of this machine, whatever `endian()` is.
    std::size_t writeFloat(float value);
    std::size_t writeDouble(double value);
    /// @}

    /// @{
    /// Write a part of a string behind its length, an unsigned integer of so many bits. Throw
    /// `IOException` and write nothing when the length does not fit. `writePStr64` has no limit,
    /// but writes only the low 16 bits of the length; only strings of up to 65535 bytes read back.
    std::size_t writePStr8(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr16(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr32(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr64(const std::string& str, std::size_t start, std::size_t len);
    /// @}

    /// Writes a part of a string, then a NUL.
    std::size_t writeNTS(const std::string& str, std::size_t start, std::size_t len);

    /// @{
    /// Pass on what the device holds back; `close` also closes its file (see `Device::close`).
    /// Return whether nothing is lost of all that this writer, or the one that it was copied from,
    /// was to write. Without these calls the device does the same when it goes, and reports
    /// nothing.
    bool flush();
    bool close();
    /// @}

  private:
    template <class T>
    std::size_t m_writeValue(T value);
    std::size_t m_writePart(const std::string& str, std::size_t start, std::size_t len);

    bool m_lost = false;  ///< Whether the device has once written less than it was to write.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
