#include <moxtel/binary.hpp>

#include <algorithm>
#include <limits>

#include <moxtel/exception.hpp>

#include "length_prefix.hpp"

namespace moxtel::io {

namespace {

/// Bytes that the device does not deliver stay 0.
template <class T>
T readValue(Device& device) {
    T value = 0;
    device.read(reinterpret_cast<char*>(&value), sizeof value);
    return value;
}

std::string readText(Device& device, std::size_t len, const char* failure) {
    constexpr std::size_t firstPiece = 1 << 16;
    std::string text;
    while (true) {
        const std::size_t begin = text.size();
        const std::size_t piece = std::min(len - begin, std::max(begin, firstPiece));
        text.resize(begin + piece);
        const std::size_t got = device.read(text.data() + begin, piece);
        if (got == Device::FAILED)
            throw IOException(failure);
        text.resize(begin + got);
        if (got < piece || text.size() == len)
            return text;
    }
}

}  // namespace

BinaryStream::BinaryStream(Device* device, Endianness endian) : m_device(device), m_endian(endian) {
    if (device == nullptr)
        throw AccessException("The binary stream has no device.");
}

BinaryStream::BinaryStream(Device& device, Endianness endian)
    : BinaryStream(device.makeProxy(), endian) {}

BinaryReader::BinaryReader(std::istream& in, Endianness endian)
    : BinaryStream(Device::wrap(in), endian) {}

BinaryReader::BinaryReader(std::iostream& inOut, Endianness endian)
    : BinaryStream(Device::wrap(inOut), endian) {}

BinaryReader::BinaryReader(void* buf, std::size_t len, Endianness endian)
    : BinaryStream(Device::wrapArray(buf, len, OPEN_READ_WRITE), endian) {}

BinaryReader BinaryReader::fromFile(const std::string& path, int openFlags) {
    return BinaryReader(Device::fromFile(path, openFlags == 0 ? OPEN_READ : openFlags),
                        ENDIAN_LITTLE);
}

std::size_t BinaryReader::read(char* buf, std::size_t len) {
    return m_device->read(buf, len);
}

signed char BinaryReader::readSI8() {
    return readValue<signed char>(*m_device);
}

unsigned char BinaryReader::readUI8() {
    return readValue<unsigned char>(*m_device);
}

short BinaryReader::readSI16() {
    return toHostEndian16(readValue<short>(*m_device), m_endian);
}

unsigned short BinaryReader::readUI16() {
    return toHostEndian16(readValue<unsigned short>(*m_device), m_endian);
}

int BinaryReader::readSI32() {
    return toHostEndian32(readValue<int>(*m_device), m_endian);
}

unsigned int BinaryReader::readUI32() {
    return toHostEndian32(readValue<unsigned int>(*m_device), m_endian);
}

std::int64_t BinaryReader::readSI64() {
    return toHostEndian64(readValue<std::int64_t>(*m_device), m_endian);
}

std::uint64_t BinaryReader::readUI64() {
    return toHostEndian64(readValue<std::uint64_t>(*m_device), m_endian);
}

float BinaryReader::readFloat() {
    return readValue<float>(*m_device);
}

double BinaryReader::readDouble() {
    return readValue<double>(*m_device);
}

std::string BinaryReader::readPStr8() {
    return readText(*m_device, readUI8(), "Can't read PStr8");
}

std::string BinaryReader::readPStr16() {
    return readText(*m_device, readUI16(), "Can't read PStr16");
}

std::string BinaryReader::readPStr32() {
    return readText(*m_device, readUI32(), "Can't read PStr32");
}

std::string BinaryReader::readPStr64() {
    // Where memory is addressed by fewer bits, a greater length asks for all that is there.
    constexpr std::uint64_t greatest = std::numeric_limits<std::size_t>::max();
    const auto len = static_cast<std::size_t>(std::min(readUI64(), greatest));
    return readText(*m_device, len, "Can't read PStr64");
}

std::string BinaryReader::readNTS() {
    std::string text;
    for (int c = m_device->read(); c != 0 && c != -1; c = m_device->read())
        text += static_cast<char>(c);
    return text;
}

BinaryWriter::BinaryWriter(std::ostream& out, Endianness endian)
    : BinaryStream(Device::wrap(out), endian) {}

BinaryWriter::BinaryWriter(std::iostream& inOut, Endianness endian)
    : BinaryStream(Device::wrap(inOut), endian) {}

BinaryWriter::BinaryWriter(void* buf, std::size_t len, Endianness endian)
    : BinaryStream(Device::wrapArray(buf, len, OPEN_READ_WRITE), endian) {}

BinaryWriter BinaryWriter::fromFile(const std::string& path, int openFlags) {
    return BinaryWriter(Device::fromFile(path, openFlags == 0 ? OPEN_WRITE : openFlags),
                        ENDIAN_LITTLE);
}

std::size_t BinaryWriter::write(const char* buf, std::size_t len) {
    const std::size_t written = m_device->write(buf, len);
    m_lost = m_lost || written != len;
    return written;
}

bool BinaryWriter::flush() {
    const bool passedOn = m_device->flush();
    return passedOn && !m_lost;
}

bool BinaryWriter::close() {
    const bool passedOn = m_device->close();
    return passedOn && !m_lost;
}

template <class T>
std::size_t BinaryWriter::m_writeValue(T value) {
    return write(reinterpret_cast<const char*>(&value), sizeof value);
}

std::size_t BinaryWriter::writeSI8(signed char value) {
    return m_writeValue(value);
}

std::size_t BinaryWriter::writeUI8(unsigned char value) {
    return m_writeValue(value);
}

std::size_t BinaryWriter::writeSI16(short value) {
    return m_writeValue(toHostEndian16(value, m_endian));
}

std::size_t BinaryWriter::writeUI16(unsigned short value) {
    return m_writeValue(toHostEndian16(value, m_endian));
}

std::size_t BinaryWriter::writeSI32(int value) {
    return m_writeValue(toHostEndian32(value, m_endian));
}

std::size_t BinaryWriter::writeUI32(unsigned int value) {
    return m_writeValue(toHostEndian32(value, m_endian));
}

std::size_t BinaryWriter::writeSI64(std::int64_t value) {
    return m_writeValue(toHostEndian64(value, m_endian));
}

std::size_t BinaryWriter::writeUI64(std::uint64_t value) {
    return m_writeValue(toHostEndian64(value, m_endian));
}

std::size_t BinaryWriter::writeFloat(float value) {
    return m_writeValue(value);
}

std::size_t BinaryWriter::writeDouble(double value) {
    return m_writeValue(value);
}

std::size_t BinaryWriter::writePStr8(const std::string& str, std::size_t start, std::size_t len) {
    const auto prefix = lengthPrefix8(mem::makeInBounds(start, len, str.size()));
    const std::size_t written = writeUI8(prefix);
    return written + m_writePart(str, start, len);
}

std::size_t BinaryWriter::writePStr16(const std::string& str, std::size_t start, std::size_t len) {
    const auto prefix = lengthPrefix16(mem::makeInBounds(start, len, str.size()));
    const std::size_t written = writeUI16(prefix);
    return written + m_writePart(str, start, len);
}

std::size_t BinaryWriter::writePStr32(const std::string& str, std::size_t start, std::size_t len) {
    const auto prefix = lengthPrefix32(mem::makeInBounds(start, len, str.size()));
    const std::size_t written = writeUI32(prefix);
    return written + m_writePart(str, start, len);
}

std::size_t BinaryWriter::writePStr64(const std::string& str, std::size_t start, std::size_t len) {
    const auto prefix = lengthPrefix64(mem::makeInBounds(start, len, str.size()));
    const std::size_t written = writeUI64(prefix);
    return written + m_writePart(str, start, len);
}

std::size_t BinaryWriter::writeNTS(const std::string& str, std::size_t start, std::size_t len) {
    const std::size_t written = m_writePart(str, start, len);
    return written + writeUI8(0);
}

std::size_t BinaryWriter::m_writePart(const std::string& str, std::size_t start, std::size_t len) {
    return write(str.data() + std::min(start, str.size()),
                 mem::makeInBounds(start, len, str.size()));
}

}  // namespace moxtel::io
