#include <moxtel/integer.hpp>

#include <algorithm>
#include <array>
#include <bit>

#include <moxtel/exception.hpp>

namespace moxtel {

namespace {

static_assert(sizeof(short) == 2 && sizeof(int) == 4,
              "the widths in the names are those of the types");

template <class T>
T reversed(T value) {
    cswap(reinterpret_cast<char*>(&value), sizeof value);
    return value;
}

template <class T>
T convert(T value, Endianness from, Endianness to) {
    if (from == to)
        return value;
    if (swap32(static_cast<unsigned int>(to)) != from)
        throw UnsupportedOperationException("Can't handle endian.");
    return reversed(value);
}

}  // namespace

constinit const Endianness HOST_ENDIAN =
    std::bit_cast<Endianness>(std::array<unsigned char, 4>{3, 2, 1, 0});

unsigned short swap16(unsigned short value) {
    return reversed(value);
}

unsigned int swap32(unsigned int value) {
    return reversed(value);
}

int swap32(int value) {
    return reversed(value);
}

std::uint64_t swap64(std::uint64_t value) {
    return reversed(value);
}

void cswap(char* buf, std::size_t len) {
    std::reverse(buf, buf + len);
}

short endianConvert16(short value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

unsigned short endianConvert16(unsigned short value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

int endianConvert32(int value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

unsigned int endianConvert32(unsigned int value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

std::int64_t endianConvert64(std::int64_t value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

std::uint64_t endianConvert64(std::uint64_t value, Endianness from, Endianness to) {
    return convert(value, from, to);
}

short toHostEndian16(short value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

unsigned short toHostEndian16(unsigned short value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

int toHostEndian32(int value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

unsigned int toHostEndian32(unsigned int value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

std::int64_t toHostEndian64(std::int64_t value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

std::uint64_t toHostEndian64(std::uint64_t value, Endianness from) {
    return convert(value, from, HOST_ENDIAN);
}

}  // namespace moxtel
