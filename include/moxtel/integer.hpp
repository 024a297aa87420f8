#pragma once

#include <cstddef>
#include <cstdint>

#pragma GCC visibility push(default)

/// \file
/// Byte orders, and the conversion of integers between them. Any thread may call these functions.
namespace moxtel {

/// A byte order, as the integer whose bytes lie in the memory of such a machine as 3, 2, 1, 0.
enum Endianness : std::uint32_t {
    ENDIAN_LITTLE = 0x00010203,
    ENDIAN_BIG = 0x03020100,
};

/// The byte order of this machine.
extern const Endianness HOST_ENDIAN;

/// @{
/// The value with its bytes in reverse order.
unsigned short swap16(unsigned short value);
unsigned int swap32(unsigned int value);
int swap32(int value);
std::uint64_t swap64(std::uint64_t value);
/// @}

/// Reverses the order of `len` bytes in place; `buf` may be null when `len` is 0.
void cswap(char* buf, std::size_t len);

/// @{
/// The value with its bytes converted from the order `from` to the order `to`. Throws
/// `UnsupportedOperationException` when the orders are neither equal nor the reverse of each other.
short endianConvert16(short value, Endianness from, Endianness to);
unsigned short endianConvert16(unsigned short value, Endianness from, Endianness to);
int endianConvert32(int value, Endianness from, Endianness to);
unsigned int endianConvert32(unsigned int value, Endianness from, Endianness to);
std::int64_t endianConvert64(std::int64_t value, Endianness from, Endianness to);
std::uint64_t endianConvert64(std::uint64_t value, Endianness from, Endianness to);
/// @}

/// @{
/// `endianConvert` to the order of this machine. Since it reverses the bytes, it converts back,
/// too.
short toHostEndian16(short value, Endianness from);
unsigned short toHostEndian16(unsigned short value, Endianness from);
int toHostEndian32(int value, Endianness from);
unsigned int toHostEndian32(unsigned int value, Endianness from);
std::int64_t toHostEndian64(std::int64_t value, Endianness from);
std::uint64_t toHostEndian64(std::uint64_t value, Endianness from);
/// @}

}  // namespace moxtel

#pragma GCC visibility pop
