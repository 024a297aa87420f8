#include <moxtel/binary.hpp>

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>
#include <moxtel/memory.hpp>

namespace {

using namespace moxtel;
using namespace moxtel::io;
using namespace std::string_literals;

constexpr Endianness NO_ORDER = static_cast<Endianness>(5);

/// The bytes that `write` writes; it has to give their number.
template <class Write>
std::string written(Endianness endian, Write write) {
    std::ostringstream out;
    BinaryWriter writer(out, endian);
    const std::size_t count = write(writer);
    EXPECT_EQ(count, out.str().size());
    return out.str();
}

/// A reader over a copy of the bytes.
BinaryReader readerOver(const std::string& bytes, Endianness endian) {
    return BinaryReader(Device::wrapString(bytes, 0, bytes.size()), endian);
}

/// The bytes of a value as this machine keeps them.
template <class T>
std::string hostBytes(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <class Throw>
void expectIOException(Throw operation, const std::string& message) {
    try {
        operation();
        ADD_FAILURE() << "nothing thrown for: " << message;
    } catch (const IOException& e) {
        EXPECT_EQ(e.why(), message);
    }
}

template <class Throw>
void expectCannotHandleEndian(Throw operation) {
    try {
        operation();
        ADD_FAILURE() << "nothing thrown";
    } catch (const UnsupportedOperationException& e) {
        EXPECT_EQ(e.why(), "Can't handle endian.");
    }
}

/// Fails every transfer after the first `good` ones, which transfer all that is asked for.
class FailingDevice : public Device {
  public:
    explicit FailingDevice(int good) : m_good(good) {}
    bool canRead() const override { return true; }
    bool canWrite() const override { return true; }
    int seekCapability() const override { return 0; }
    using Device::read;
    using Device::write;
    std::size_t read(char* buf, std::size_t n) override {
        if (m_good-- <= 0)
            return FAILED;
        std::memset(buf, 1, n);
        return n;
    }
    std::size_t write(const char*, std::size_t n) override { return m_good-- <= 0 ? FAILED : n; }

  private:
    int m_good;
};

TEST(BinaryWriter, UnsignedShortInBothOrders) {
    const auto write = [](BinaryWriter& out) { return out.writeUI16(0x0102); };
    EXPECT_EQ(written(ENDIAN_BIG, write), "\x01\x02");
    EXPECT_EQ(written(ENDIAN_LITTLE, write), "\x02\x01");
}

TEST(BinaryWriter, IntegersInBothOrders) {
    const auto write = [](BinaryWriter& out) {
        std::size_t count = out.writeSI8(-2);
        count += out.writeUI8(0xFE);
        count += out.writeSI16(-2);
        count += out.writeUI16(0x8001);
        count += out.writeSI32(-2);
        count += out.writeUI32(0x80000102U);
        count += out.writeSI64(-2);
        count += out.writeUI64(0x8000010203040506UL);
        return count;
    };
    EXPECT_EQ(written(ENDIAN_BIG, write),
              "\xFE\xFE\xFF\xFE\x80\x01\xFF\xFF\xFF\xFE\x80\x00\x01\x02"
              "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE\x80\x00\x01\x02\x03\x04\x05\x06"s);
    EXPECT_EQ(written(ENDIAN_LITTLE, write),
              "\xFE\xFE\xFE\xFF\x01\x80\xFE\xFF\xFF\xFF\x02\x01\x00\x80"
              "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x06\x05\x04\x03\x02\x01\x00\x80"s);
}

TEST(BinaryReader, IntegersInBothOrders) {
    const std::string bytes =
        "\xFE\xFE\x01\x80\x01\x80\x01\x02\x03\x80\x01\x02\x03\x80"
        "\x01\x02\x03\x04\x05\x06\x07\x80\x01\x02\x03\x04\x05\x06\x07\x80"s;
    BinaryReader little = readerOver(bytes, ENDIAN_LITTLE);
    EXPECT_EQ(little.readSI8(), -2);
    EXPECT_EQ(little.readUI8(), 0xFE);
    EXPECT_EQ(little.readSI16(), -0x7FFF);
    EXPECT_EQ(little.readUI16(), 0x8001);
    EXPECT_EQ(little.readSI32(), -0x7FFCFDFF);
    EXPECT_EQ(little.readUI32(), 0x80030201U);
    EXPECT_EQ(little.readSI64(), static_cast<long>(0x8007060504030201UL));
    EXPECT_EQ(little.readUI64(), 0x8007060504030201UL);

    BinaryReader big = readerOver(bytes, ENDIAN_BIG);
    EXPECT_EQ(big.readSI8(), -2);
    EXPECT_EQ(big.readUI8(), 0xFE);
    EXPECT_EQ(big.readSI16(), 0x0180);
    EXPECT_EQ(big.readUI16(), 0x0180);
    EXPECT_EQ(big.readSI32(), 0x01020380);
    EXPECT_EQ(big.readUI32(), 0x01020380U);
    EXPECT_EQ(big.readSI64(), 0x0102030405060780L);
    EXPECT_EQ(big.readUI64(), 0x0102030405060780UL);
}

TEST(BinaryReader, ReadsBackWhatTheWriterWrote) {
    for (const Endianness order : {ENDIAN_LITTLE, ENDIAN_BIG}) {
        std::stringstream stream;
        BinaryWriter out(static_cast<std::iostream&>(stream), order);
        BinaryReader in(static_cast<std::iostream&>(stream), order);
        for (const long value : {0L, 1L, -1L, 0x1234L, std::numeric_limits<long>::min(),
                                 std::numeric_limits<long>::max()}) {
            out.writeSI8(static_cast<signed char>(value));
            out.writeSI16(static_cast<short>(value));
            out.writeUI16(static_cast<unsigned short>(value));
            out.writeSI32(static_cast<int>(value));
            out.writeUI32(static_cast<unsigned int>(value));
            out.writeSI64(value);
            out.writeUI64(static_cast<unsigned long>(value));
            out.writeDouble(static_cast<double>(value));
            EXPECT_EQ(in.readSI8(), static_cast<signed char>(value));
            EXPECT_EQ(in.readSI16(), static_cast<short>(value));
            EXPECT_EQ(in.readUI16(), static_cast<unsigned short>(value));
            EXPECT_EQ(in.readSI32(), static_cast<int>(value));
            EXPECT_EQ(in.readUI32(), static_cast<unsigned int>(value));
            EXPECT_EQ(in.readSI64(), value);
            EXPECT_EQ(in.readUI64(), static_cast<unsigned long>(value));
            EXPECT_EQ(in.readDouble(), static_cast<double>(value));
        }
    }
}

TEST(BinaryReader, BytesThatAreMissingCountAsZero) {
    BinaryReader little = readerOver("\x01\x02\x03", ENDIAN_LITTLE);
    EXPECT_EQ(little.readUI32(), 0x00030201U);
    BinaryReader big = readerOver("\x01\x02\x03", ENDIAN_BIG);
    EXPECT_EQ(big.readUI32(), 0x01020300U);
    for (BinaryReader in : {readerOver("", ENDIAN_LITTLE), readerOver("", ENDIAN_BIG)}) {
        EXPECT_EQ(in.readSI8(), 0);
        EXPECT_EQ(in.readUI8(), 0);
        EXPECT_EQ(in.readSI16(), 0);
        EXPECT_EQ(in.readUI16(), 0);
        EXPECT_EQ(in.readSI32(), 0);
        EXPECT_EQ(in.readUI32(), 0U);
        EXPECT_EQ(in.readSI64(), 0);
        EXPECT_EQ(in.readUI64(), 0U);
        EXPECT_EQ(in.readFloat(), 0.0F);
        EXPECT_EQ(in.readDouble(), 0.0);
    }
}

TEST(BinaryReader, FloatsAreNotConverted) {
    const std::string bytes = "\x00\x00\x80\x3F\x00\x00\x00\x00\x00\x00\xF0\x3F"s;
    float single = 0;
    std::memcpy(&single, bytes.data(), sizeof single);
    double twice = 0;
    std::memcpy(&twice, bytes.data() + sizeof single, sizeof twice);
    for (const Endianness order : {ENDIAN_LITTLE, ENDIAN_BIG, NO_ORDER}) {
        BinaryReader in = readerOver(bytes, order);
        EXPECT_EQ(in.readFloat(), single);
        EXPECT_EQ(in.readDouble(), twice);
    }
}

TEST(BinaryWriter, FloatsAreNotConverted) {
    for (const Endianness order : {ENDIAN_LITTLE, ENDIAN_BIG, NO_ORDER}) {
        const auto write = [](BinaryWriter& out) {
            const std::size_t count = out.writeFloat(1.5F);
            return count + out.writeDouble(-2.25);
        };
        EXPECT_EQ(written(order, write), hostBytes(1.5F) + hostBytes(-2.25));
    }
}

TEST(BinaryStream, UnknownOrderCannotBeHandled) {
    BinaryReader in = readerOver(std::string(30, '\1'), NO_ORDER);
    EXPECT_EQ(in.readSI8(), 1);
    EXPECT_EQ(in.readUI8(), 1);
    expectCannotHandleEndian([&in] { in.readSI16(); });
    expectCannotHandleEndian([&in] { in.readUI16(); });
    expectCannotHandleEndian([&in] { in.readSI32(); });
    expectCannotHandleEndian([&in] { in.readUI32(); });
    expectCannotHandleEndian([&in] { in.readSI64(); });
    expectCannotHandleEndian([&in] { in.readUI64(); });

    std::ostringstream bytes;
    BinaryWriter out(bytes, NO_ORDER);
    expectCannotHandleEndian([&out] { out.writeSI16(1); });
    expectCannotHandleEndian([&out] { out.writeUI64(1); });
    EXPECT_EQ(bytes.str(), "");
}

TEST(BinaryStream, OrderCanBeChangedBetweenValues) {
    BinaryReader in = readerOver("\1\2\1\2", ENDIAN_BIG);
    EXPECT_EQ(in.endian(), ENDIAN_BIG);
    EXPECT_EQ(in.readUI16(), 0x0102);
    in.endian(ENDIAN_LITTLE);
    EXPECT_EQ(in.endian(), ENDIAN_LITTLE);
    EXPECT_EQ(in.readUI16(), 0x0201);
}

TEST(BinaryStream, BlocksPassUnchanged) {
    std::array<char, 4> memory = {'a', 'b', 'c', 'd'};
    BinaryReader in(memory.data(), memory.size(), ENDIAN_BIG);
    std::array<char, 3> block = {};
    EXPECT_EQ(in.read(block.data(), 3), 3U);
    EXPECT_EQ(std::string(block.data(), 3), "abc");
    EXPECT_EQ(in.read(block.data(), 3), 1U);
    EXPECT_EQ(block[0], 'd');
    EXPECT_EQ(in.read(block.data(), 3), 0U);
    EXPECT_EQ(BinaryReader(new FailingDevice(0), ENDIAN_BIG).read(block.data(), 3), Device::FAILED);

    BinaryWriter out(memory.data(), memory.size(), ENDIAN_BIG);
    EXPECT_EQ(out.write("xyz", 3), 3U);
    EXPECT_EQ(out.write("uvw", 3), 1U);
    EXPECT_EQ(std::string(memory.data(), 4), "xyzu");
    EXPECT_EQ(out.write("uvw", 3), 0U);
    EXPECT_EQ(BinaryWriter(new FailingDevice(0), ENDIAN_BIG).write("xyz", 3), Device::FAILED);
}

TEST(BinaryStream, DeviceGivenByReferenceIsShared) {
    FailingDevice device(1);
    ASSERT_TRUE(mem::protect(&device));
    {
        BinaryReader in(device, ENDIAN_LITTLE);
        EXPECT_EQ(&*in.handle(), &device);
        EXPECT_EQ(in.readUI8(), 1);
    }
    EXPECT_TRUE(device.canRead());
    mem::free(&device);
}

TEST(BinaryStream, CopiesShareTheDevice) {
    BinaryReader in = readerOver("\1\2\3", ENDIAN_LITTLE);
    BinaryReader copy(in);
    EXPECT_EQ(in.readUI8(), 1);
    EXPECT_EQ(copy.readUI8(), 2);
    EXPECT_EQ(in.readUI8(), 3);
    EXPECT_EQ(&*in.handle(), &*copy.handle());
}

TEST(BinaryStream, FilesAreLittleEndian) {
    const std::string path = testing::TempDir() + "moxtel_binary_test.bin";
    {
        BinaryWriter out = BinaryWriter::fromFile(path);
        EXPECT_EQ(out.endian(), ENDIAN_LITTLE);
        EXPECT_EQ(out.writeUI32(0x01020304U), 4U);
    }
    std::stringstream bytes;
    bytes << std::ifstream(path).rdbuf();
    EXPECT_EQ(bytes.str(), "\4\3\2\1");
    {
        BinaryReader in = BinaryReader::fromFile(path, OPEN_READ);
        EXPECT_EQ(in.endian(), ENDIAN_LITTLE);
        EXPECT_EQ(in.readUI32(), 0x01020304U);
        BinaryReader withDefault = BinaryReader::fromFile(path, 0);
        EXPECT_EQ(withDefault.readUI16(), 0x0304);
        EXPECT_TRUE(withDefault.handle()->canRead());
    }
    std::remove(path.c_str());
}

TEST(WritePStr, EightBitLengthIsLimited) {
    const std::string text(300, 'x');
    std::ostringstream bytes;
    BinaryWriter out(bytes, ENDIAN_BIG);
    expectIOException([&] { out.writePStr8(text, 0, 300); }, "String too large to fit in a PStr8");
    expectIOException([&] { out.writePStr8(text, 44, 1000); },
                      "String too large to fit in a PStr8");
    EXPECT_EQ(bytes.str(), "");
    EXPECT_EQ(out.writePStr8(text, 45, 1000), 256U);
    EXPECT_EQ(bytes.str(), "\xFF" + std::string(255, 'x'));
}

TEST(WritePStr, RangeIsCutToTheString) {
    const std::string text(300, 'x');
    const auto write = [&text](BinaryWriter& out) { return out.writePStr8(text, 100, 1000); };
    EXPECT_EQ(written(ENDIAN_BIG, write), "\xC8" + std::string(200, 'x'));
}

TEST(WritePStr, PartOfAString) {
    struct Row {
        std::size_t start;
        std::size_t len;
        std::string body;
    };
    const std::size_t all = std::string::npos;
    const Row rows[] = {
        {0, 5,
         "ab\0\xFF"
         "e"s},
        {0, all,
         "ab\0\xFF"
         "e"s},
        {1, 2, "b\0"s},
        {4, all, "e"},
        {4, 1, "e"},
        {5, 1, ""},
        {6, all, ""},
        {all, all, ""},
        {0, 0, ""},
    };
    const std::string text =
        "ab\0\xFF"
        "e"s;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.start) + " " + std::to_string(row.len));
        const char size = static_cast<char>(row.body.size());
        EXPECT_EQ(
            written(ENDIAN_BIG,
                    [&](BinaryWriter& out) { return out.writePStr8(text, row.start, row.len); }),
            size + row.body);
        EXPECT_EQ(
            written(ENDIAN_BIG,
                    [&](BinaryWriter& out) { return out.writePStr16(text, row.start, row.len); }),
            "\0"s + size + row.body);
        EXPECT_EQ(
            written(ENDIAN_LITTLE,
                    [&](BinaryWriter& out) { return out.writePStr32(text, row.start, row.len); }),
            size + "\0\0\0"s + row.body);
        EXPECT_EQ(
            written(ENDIAN_LITTLE,
                    [&](BinaryWriter& out) { return out.writePStr64(text, row.start, row.len); }),
            size + "\0\0\0\0\0\0\0"s + row.body);
        EXPECT_EQ(
            written(ENDIAN_BIG,
                    [&](BinaryWriter& out) { return out.writeNTS(text, row.start, row.len); }),
            row.body + '\0');
    }
}

TEST(WritePStr, SixteenBitLengthIsLimited) {
    const std::string text(65536, 'x');
    std::ostringstream bytes;
    BinaryWriter out(bytes, ENDIAN_BIG);
    expectIOException([&] { out.writePStr16(text, 0, 65536); },
                      "String too large to fit in a PStr16");
    EXPECT_EQ(bytes.str(), "");
    EXPECT_EQ(out.writePStr16(text, 1, 65536), 65537U);
    EXPECT_EQ(bytes.str(), "\xFF\xFF" + std::string(65535, 'x'));
}

TEST(WritePStr, ThirtyTwoBitLengthTakesWhatSixteenCannot) {
    const std::string text(65536, 'x');
    const auto write = [&text](BinaryWriter& out) { return out.writePStr32(text, 0, 65536); };
    EXPECT_EQ(written(ENDIAN_BIG, write), "\0\1\0\0"s + text);
}

TEST(WritePStr, SixtyFourBitLengthKeepsItsLowSixteenBits) {
    const std::string text(70000, 'x');
    const auto write = [&text](BinaryWriter& out) { return out.writePStr64(text, 0, 70000); };
    EXPECT_EQ(written(ENDIAN_BIG, write), "\0\0\0\0\0\0\x11\x70"s + text);  // 4464
    const auto most = [&text](BinaryWriter& out) { return out.writePStr64(text, 0, 65535); };
    EXPECT_EQ(written(ENDIAN_LITTLE, most), "\xFF\xFF\0\0\0\0\0\0"s + text.substr(0, 65535));
    const auto zero = [&text](BinaryWriter& out) { return out.writePStr64(text, 0, 65536); };
    EXPECT_EQ(written(ENDIAN_LITTLE, zero), std::string(8, '\0') + text.substr(0, 65536));
}

TEST(WritePStr, FailedTransfersCountAsFailedInTheSum) {
    EXPECT_EQ(BinaryWriter(new FailingDevice(0), ENDIAN_BIG).writePStr8("ab", 0, 2),
              Device::FAILED + Device::FAILED);
    EXPECT_EQ(BinaryWriter(new FailingDevice(1), ENDIAN_BIG).writePStr32("ab", 0, 2),
              4 + Device::FAILED);
    EXPECT_EQ(BinaryWriter(new FailingDevice(1), ENDIAN_BIG).writeNTS("ab", 0, 2),
              2 + Device::FAILED);
}

TEST(ReadPStr, LengthsOfEveryWidthInBothOrders) {
    const std::string text = "\xFFz\0"s;
    BinaryReader big = readerOver(
        "\3"s + text + "\0\3"s + text + "\0\0\0\3"s + text + "\0\0\0\0\0\0\0\3"s + text + "rest",
        ENDIAN_BIG);
    EXPECT_EQ(big.readPStr8(), text);
    EXPECT_EQ(big.readPStr16(), text);
    EXPECT_EQ(big.readPStr32(), text);
    EXPECT_EQ(big.readPStr64(), text);
    EXPECT_EQ(big.readSI8(), 'r');
    BinaryReader little = readerOver(
        "\3"s + text + "\3\0"s + text + "\3\0\0\0"s + text + "\3\0\0\0\0\0\0\0"s + text + "rest",
        ENDIAN_LITTLE);
    EXPECT_EQ(little.readPStr8(), text);
    EXPECT_EQ(little.readPStr16(), text);
    EXPECT_EQ(little.readPStr32(), text);
    EXPECT_EQ(little.readPStr64(), text);
    EXPECT_EQ(little.readSI8(), 'r');
}

TEST(ReadPStr, LengthIsUnsigned) {
    const std::string body(200, 'y');
    BinaryReader in =
        readerOver("\xC8" + body + "\x88\xFF" + std::string(65416, 'z'), ENDIAN_LITTLE);
    EXPECT_EQ(in.readPStr8(), body);
    EXPECT_EQ(in.readPStr16(), std::string(65416, 'z'));
}

TEST(ReadPStr, ShortDataGivesAShorterString) {
    EXPECT_EQ(readerOver("\5ab", ENDIAN_BIG).readPStr8(), "ab");
    EXPECT_EQ(readerOver("\5", ENDIAN_BIG).readPStr8(), "");
    EXPECT_EQ(readerOver("", ENDIAN_BIG).readPStr64(), "");
    EXPECT_EQ(readerOver("\0ab"s, ENDIAN_BIG).readPStr8(), "");
}

TEST(ReadPStr, FailedReadThrows) {
    const auto failing = [] { return BinaryReader(new FailingDevice(1), ENDIAN_BIG); };
    expectIOException([&] { failing().readPStr8(); }, "Can't read PStr8");
    expectIOException([&] { failing().readPStr16(); }, "Can't read PStr16");
    expectIOException([&] { BinaryReader(new FailingDevice(0), ENDIAN_BIG).readPStr32(); },
                      "Can't read PStr32");
    expectIOException([&] { BinaryReader(new FailingDevice(0), ENDIAN_BIG).readPStr64(); },
                      "Can't read PStr64");
}

TEST(ReadPStr, StandardStreamThatEndsEarlyIsAFailedRead) {
    std::istringstream bytes("\5ab");
    BinaryReader in(bytes, ENDIAN_BIG);
    expectIOException([&] { in.readPStr8(); }, "Can't read PStr8");
}

TEST(ReadNTS, EndsAtItsTerminatorAndLeavesTheRest) {
    BinaryReader in = readerOver("ab\0c"s, ENDIAN_LITTLE);
    EXPECT_EQ(in.readNTS(), "ab");
    EXPECT_EQ(in.readSI8(), 'c');
}

TEST(ReadNTS, EndsWithTheData) {
    BinaryReader in = readerOver("ab", ENDIAN_LITTLE);
    EXPECT_EQ(in.readNTS(), "ab");
    EXPECT_EQ(in.readNTS(), "");
}

TEST(ReadNTS, AllBitsSetCountAsTheEnd) {
    BinaryReader in = readerOver("a\xFE\x80\xFF"s + "b\0"s, ENDIAN_LITTLE);
    EXPECT_EQ(in.readNTS(), "a\xFE\x80");
    EXPECT_EQ(in.readNTS(), "b");
}

TEST(WriteNTS, TextThenNul) {
    EXPECT_EQ(written(ENDIAN_BIG, [](BinaryWriter& out) { return out.writeNTS("abcd", 1, 2); }),
              "bc\0"s);
    EXPECT_EQ(written(ENDIAN_BIG, [](BinaryWriter& out) { return out.writeNTS("", 0, 0); }), "\0"s);
}

}  // namespace
