#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <memory>
#include <sstream>
#include <string>

#include <moxtel/binary.hpp>
#include <moxtel/exception.hpp>

#include "chunk_buffer.hpp"
#include "input.hpp"
#include "require.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::ENDIAN_BIG;
using moxtel::ENDIAN_LITTLE;
using moxtel::Endianness;
using moxtel::io::BinaryReader;
using moxtel::io::BinaryWriter;
using moxtel::io::Device;

constexpr std::size_t MOST_BYTES = 300;

/// Longer strings are merely expensive.
constexpr std::uint64_t MOST_LENGTH = 4096;

std::uint64_t wordOf(Input& input) {
    std::uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word = word << 8 | input.byte();
    return word;
}

/// The lowest `size` bytes of a number, in the given byte order.
std::string bytesOf(std::uint64_t value, std::size_t size, Endianness endian) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * (endian == ENDIAN_LITTLE ? i : size - 1 - i));
    return bytes;
}

std::uint64_t numberOf(const std::string& bytes, Endianness endian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])}
                 << 8 * (endian == ENDIAN_LITTLE ? i : bytes.size() - 1 - i);
    return value;
}

/// The bytes that a writer must have written, limited by the room for them.
struct Written {
    std::string bytes;
    std::size_t room;

    std::size_t add(const std::string& more) {
        const std::size_t n = std::min(more.size(), room - bytes.size());
        bytes.append(more, 0, n);
        return n;
    }
};

/// A part of a string by start and length, both cut to what the string has.
struct Part {
    std::string text;
    std::size_t start;
    std::size_t size;

    explicit Part(Input& input)
        : text(input.text(MOST_BYTES)), start(input.byte()), size(input.byte()) {}

    std::string cut() const { return start < text.size() ? text.substr(start, size) : ""; }
};

void write(Input& input, BinaryWriter& writer, Written& expected) {
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const Endianness endian = code < 128 ? ENDIAN_LITTLE : ENDIAN_BIG;
        writer.endian(endian);
        const auto number = [&](auto type, auto operation) {
            const std::uint64_t word = wordOf(input);
            requireEqual("a number", (writer.*operation)(static_cast<decltype(type)>(word)),
                         expected.add(bytesOf(word, sizeof type, endian)));
        };
        const auto text = [&](std::size_t prefix, auto operation) {
            const Part part(input);
            const std::string cut = part.cut();
            if (prefix == 1 && cut.size() > 255) {
                try {
                    (writer.*operation)(part.text, part.start, part.size);
                } catch (const moxtel::IOException&) {
                    return;
                }
                throw Failure("a string that is too long is written");
            }
            const std::size_t size = expected.add(bytesOf(cut.size(), prefix, endian));
            requireEqual("a string", (writer.*operation)(part.text, part.start, part.size),
                         size + expected.add(cut));
        };
        switch (code % 16) {
            case 0:
                number(std::int8_t(), &BinaryWriter::writeSI8);
                break;
            case 1:
                number(std::uint8_t(), &BinaryWriter::writeUI8);
                break;
            case 2:
                number(std::int16_t(), &BinaryWriter::writeSI16);
                break;
            case 3:
                number(std::uint16_t(), &BinaryWriter::writeUI16);
                break;
            case 4:
                number(std::int32_t(), &BinaryWriter::writeSI32);
                break;
            case 5:
                number(std::uint32_t(), &BinaryWriter::writeUI32);
                break;
            case 6:
                number(std::int64_t(), &BinaryWriter::writeSI64);
                break;
            case 7:
                number(std::uint64_t(), &BinaryWriter::writeUI64);
                break;
            case 8: {
                const std::uint64_t word = wordOf(input);
                requireEqual("a double", writer.writeDouble(std::bit_cast<double>(word)),
                             expected.add(bytesOf(word, 8, ENDIAN_LITTLE)));
                break;
            }
            case 9: {
                const auto word = static_cast<std::uint32_t>(wordOf(input));
                requireEqual("a float", writer.writeFloat(std::bit_cast<float>(word)),
                             expected.add(bytesOf(word, 4, ENDIAN_LITTLE)));
                break;
            }
            case 10:
                text(1, &BinaryWriter::writePStr8);
                break;
            case 11:
                text(2, &BinaryWriter::writePStr16);
                break;
            case 12:
                text(4, &BinaryWriter::writePStr32);
                break;
            case 13:
                text(8, &BinaryWriter::writePStr64);
                break;
            case 14: {
                const Part part(input);
                const std::size_t size = expected.add(part.cut());
                requireEqual("a string", writer.writeNTS(part.text, part.start, part.size),
                             size + expected.add(std::string(1, '\0')));
                break;
            }
            default: {
                const std::string block = input.text(MOST_BYTES);
                requireEqual("a block", writer.write(block.data(), block.size()),
                             expected.add(block));
            }
        }
    }
}

/// The bytes to read. A stream that reaches its end fails, and then fails immediately each time.
/// Other devices return the bytes that are left.
class Source {
  public:
    Source(std::string bytes, bool isStream) : m_bytes(std::move(bytes)), m_isStream(isStream) {}

    /// The content of a block of `n` zeros after a read into it. `counted` is the result of the
    /// read.
    std::string block(std::size_t n, std::size_t& counted) {
        std::string taken;
        if (!m_ended) {
            taken = m_bytes.substr(m_at, n);
            m_at += taken.size();
        }
        const bool fails = m_isStream && (m_ended || taken.size() < n);
        m_ended = m_ended || fails;
        counted = fails ? Device::FAILED : taken.size();
        taken.resize(n);
        return taken;
    }
    std::uint64_t number(std::size_t size, Endianness endian) {
        std::size_t counted = 0;
        return numberOf(block(size, counted), endian);
    }
    /// The number that would be read next.
    std::uint64_t ahead(std::size_t size, Endianness endian) const {
        Source copy(*this);
        return copy.number(size, endian);
    }

  private:
    std::string m_bytes;
    bool m_isStream;
    std::size_t m_at = 0;
    bool m_ended = false;
};

void read(Input& input, BinaryReader& reader, Source& source) {
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const Endianness endian = code < 128 ? ENDIAN_LITTLE : ENDIAN_BIG;
        reader.endian(endian);
        const auto number = [&](auto operation) {
            const auto got = (reader.*operation)();
            requireEqual("a number", got,
                         static_cast<decltype(got)>(source.number(sizeof got, endian)));
        };
        const auto text = [&](std::size_t prefix, auto operation) {
            if (source.ahead(prefix, endian) > MOST_LENGTH)
                return;
            const std::uint64_t size = source.number(prefix, endian);
            std::size_t counted = 0;
            const std::string expected = source.block(size, counted);
            try {
                const std::string got = (reader.*operation)();
                requireEqual("whether a string is read", counted != Device::FAILED, true);
                requireEqual("a string", got, expected.substr(0, counted));
            } catch (const moxtel::IOException&) {
                requireEqual("whether a string is refused", counted, Device::FAILED);
            }
        };
        std::size_t counted = 0;
        switch (code % 16) {
            case 0:
                number(&BinaryReader::readSI8);
                break;
            case 1:
                number(&BinaryReader::readUI8);
                break;
            case 2:
                number(&BinaryReader::readSI16);
                break;
            case 3:
                number(&BinaryReader::readUI16);
                break;
            case 4:
                number(&BinaryReader::readSI32);
                break;
            case 5:
                number(&BinaryReader::readUI32);
                break;
            case 6:
                number(&BinaryReader::readSI64);
                break;
            case 7:
                number(&BinaryReader::readUI64);
                break;
            case 8:
                requireEqual("a double", std::bit_cast<std::uint64_t>(reader.readDouble()),
                             source.number(8, ENDIAN_LITTLE));
                break;
            case 9:
                requireEqual("a float", std::bit_cast<std::uint32_t>(reader.readFloat()),
                             source.number(4, ENDIAN_LITTLE));
                break;
            case 10:
                text(1, &BinaryReader::readPStr8);
                break;
            case 11:
                text(2, &BinaryReader::readPStr16);
                break;
            case 12:
                text(4, &BinaryReader::readPStr32);
                break;
            case 13:
                text(8, &BinaryReader::readPStr64);
                break;
            case 14: {
                std::string expected;
                for (std::string c = source.block(1, counted);
                     counted == 1 && c[0] != '\0' && c[0] != '\xff'; c = source.block(1, counted))
                    expected += c;
                requireEqual("a string", reader.readNTS(), expected);
                break;
            }
            default: {
                std::string got(input.byte(), '\0');
                const std::string expected = source.block(got.size(), counted);
                requireEqual("the size of a block", reader.read(got.data(), got.size()), counted);
                requireEqual("a block", got, expected);
            }
        }
    }
}

void readAll(Input& input) {
    const unsigned kind = input.byte();
    std::string bytes = input.text(MOST_BYTES);
    switch (kind % 3) {
        case 0: {
            const std::unique_ptr<char[]> array(new char[bytes.size()]);
            std::copy(bytes.begin(), bytes.end(), array.get());
            BinaryReader reader(array.get(), bytes.size(), ENDIAN_LITTLE);
            Source source(bytes, false);
            return read(input, reader, source);
        }
        case 1: {
            std::istringstream in(bytes);
            BinaryReader reader(in, ENDIAN_LITTLE);
            Source source(bytes, true);
            return read(input, reader, source);
        }
        default: {
            ChunkBuffer buffer(bytes, 1 + kind / 3 % 16);
            std::istream in(&buffer);
            BinaryReader reader(in, ENDIAN_LITTLE);
            Source source(bytes, true);
            return read(input, reader, source);
        }
    }
}

void writeAll(Input& input) {
    const bool isStream = input.byte() % 2 != 0;
    if (isStream) {
        std::ostringstream out;
        BinaryWriter writer(out, ENDIAN_LITTLE);
        Written expected{"", static_cast<std::size_t>(-1)};
        write(input, writer, expected);
        requireEqual("the bytes", out.str(), expected.bytes);
        return;
    }
    const std::size_t room = input.byte();
    const std::unique_ptr<char[]> array(new char[room]());
    BinaryWriter writer(array.get(), room, ENDIAN_LITTLE);
    Written expected{"", room};
    write(input, writer, expected);
    expected.bytes.resize(room);
    requireEqual("the bytes", std::string(array.get(), room), expected.bytes);
}

}  // namespace

void fuzzBinaryStreams(Bytes bytes) {
    Input input(bytes);
    input.byte() % 2 == 0 ? writeAll(input) : readAll(input);
}

}  // namespace fuzz
