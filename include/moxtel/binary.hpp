#pragma once

#include <cstddef>
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
/// Copies share the device.
///
/// A device given by pointer is shared through the registry of managed memory and destroyed with
/// its last holder. A device given by reference is asked for its `makeProxy()`, which is held in
/// the same way: unless the owner of the device has registered it with `mem::protect` before, the
/// stream takes it over.
class BinaryStream {
  public:
    /// Over `device`, which is shared as told above. Throws `AccessException` for null.
    BinaryStream(Device* device, Endianness endian);

    /// Over the proxy of `device`.
    BinaryStream(Device& device, Endianness endian);

    BinaryStream(const BinaryStream&) = default;
    BinaryStream& operator=(const BinaryStream&) = default;
    virtual ~BinaryStream() = default;

    /// A share of the device.
    mem::Pointer<Device> handle() const { return m_device; }

    /// @{
    /// The byte order of integers, for what is read or written from here on. With another than the
    /// two of `Endianness`, reading or writing an integer of more than one byte throws
    /// `UnsupportedOperationException`.
    Endianness endian() const { return m_endian; }
    void endian(Endianness endian) { m_endian = endian; }
    /// @}

  protected:
    mem::Pointer<Device> m_device;  ///< Never null.
    Endianness m_endian;            ///< See `endian()`.
};

/// Reads numbers and strings. A number of which the device has not all the bytes is no error: the
/// bytes that are missing count as 0. Nothing is buffered here: a value costs a read of the device,
/// a string behind its length two (a long one more), and one that ends with a NUL one for each
/// byte.
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

    /// Over a file (see `Device::fromFile`) of little-endian data; the flags 0 stand for
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
    /// An integer of so many bits, signed or unsigned, in the byte order `endian()`.
    signed char readSI8();
    unsigned char readUI8();
    short readSI16();
    unsigned short readUI16();
    int readSI32();
    unsigned int readUI32();
    long readSI64();
    unsigned long readUI64();
    /// @}

    /// @{
    /// The bytes in the order of this machine, whatever `endian()` is.
    float readFloat();
    double readDouble();
    /// @}

    /// @{
    /// A string behind its length, an unsigned integer of so many bits. Shorter than that where the
    /// data ends early, as far as the device counts it. Throws `IOException` when the device's read
    /// fails, and `std::bad_alloc` when there is no memory for the data.
    ///
    /// The length is not trusted: more than 64 KiB is read in pieces, each as long as what is there
    /// already, so that memory grows with the data alone.
    std::string readPStr8();
    std::string readPStr16();
    std::string readPStr32();
    std::string readPStr64();
    /// @}

    /// The bytes up to a NUL, which is consumed, or up to the end of the data. A byte 0xFF counts
    /// as that end.
    std::string readNTS();
};

/// Writes numbers and strings. Each operation gives the number of bytes that the device wrote; a
/// transfer that failed counts as `Device::FAILED`, also in a sum.
///
/// A part of a string is given by its start and length, and cut to what lies inside the string.
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

    /// Over a file (see `Device::fromFile`) of little-endian data; the flags 0 stand for
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
    /// An integer of so many bits, signed or unsigned, in the byte order `endian()`.
    std::size_t writeSI8(signed char value);
    std::size_t writeUI8(unsigned char value);
    std::size_t writeSI16(short value);
    std::size_t writeUI16(unsigned short value);
    std::size_t writeSI32(int value);
    std::size_t writeUI32(unsigned int value);
    std::size_t writeSI64(long value);
    std::size_t writeUI64(unsigned long value);
    /// @}

    /// @{
    /// The bytes in the order of this machine, whatever `endian()` is.
    std::size_t writeFloat(float value);
    std::size_t writeDouble(double value);
    /// @}

    /// @{
    /// A part of a string behind its length, an unsigned integer of so many bits. Throws
    /// `IOException`, with nothing written, when the length does not fit. `writePStr64` has no
    /// limit but writes only the low 16 bits of the length, so what it writes reads back only up to
    /// 65535 bytes.
    std::size_t writePStr8(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr16(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr32(const std::string& str, std::size_t start, std::size_t len);
    std::size_t writePStr64(const std::string& str, std::size_t start, std::size_t len);
    /// @}

    /// A part of a string, then a NUL.
    std::size_t writeNTS(const std::string& str, std::size_t start, std::size_t len);

    /// @{
    /// Pass on what the device holds back, and `close` closes its file (see `Device::close`).
    /// Whether nothing is lost of all that this writer, or the one that it is a copy of, was to
    /// write. A device that a writer leaves without them does the same and tells nobody.
    bool flush();
    bool close();
    /// @}

  private:
    template <class T>
    std::size_t m_writeValue(T value);
    std::size_t m_writePart(const std::string& str, std::size_t start, std::size_t len);

    bool m_lost = false;  ///< Whether the device did not write all of something.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
