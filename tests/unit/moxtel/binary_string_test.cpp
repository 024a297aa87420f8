#include <moxtel/binary.hpp>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

#include "binary_bytes.hpp"

namespace moxtel::io {
namespace {

using namespace std::string_literals;

template <class Throw>
void expectIOException(Throw operation, const std::string& message) {
    try {
        operation();
        ADD_FAILURE() << "nothing thrown for: " << message;
    } catch (const IOException& e) {
        EXPECT_EQ(e.why(), message);
    }
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

/// Reads as a string does, and writes down how much is asked for.
class AskedDevice : public Device {
  public:
    explicit AskedDevice(std::string text) : m_peer(Device::wrapString(text, 0, text.size())) {}
    bool canRead() const override { return true; }
    bool canWrite() const override { return false; }
    int seekCapability() const override { return 0; }
    using Device::read;
    using Device::write;
    std::size_t read(char* buf, std::size_t n) override {
        asked.push_back(n);
        return m_peer->read(buf, n);
    }
    std::size_t write(const char*, std::size_t) override { return FAILED; }

    std::vector<std::size_t> asked;

  private:
    std::unique_ptr<Device> m_peer;
};

TEST(ReadPStr, ALengthIsNotTrusted) {
    auto* device = new AskedDevice(
        "\x00\x00\x00\x10"
        "a"s);
    EXPECT_EQ(BinaryReader(device, ENDIAN_LITTLE).readPStr32(), "a");
    device = new AskedDevice(
        "\xff\xff\xff\xff\xff\xff\xff\xff"
        "a"s);
    BinaryReader reader(device, ENDIAN_LITTLE);
    EXPECT_EQ(reader.readPStr64(), "a");
    EXPECT_EQ(device->asked, (std::vector<std::size_t>{8, 65536}));
}

TEST(ReadPStr, LongStringsComeInPieces) {
    constexpr std::size_t kibi = 1024;
    for (const std::size_t len : {64 * kibi, 64 * kibi + 1, 128 * kibi, 300 * kibi}) {
        std::string text;
        for (std::size_t i = 0; i < len; ++i)
            text += static_cast<char>(i * i / 7);
        const std::string bytes = written(
            ENDIAN_BIG, [&](BinaryWriter& writer) { return writer.writePStr32(text, 0, len); });
        auto* device = new AskedDevice(bytes);
        BinaryReader reader(device, ENDIAN_BIG);
        EXPECT_EQ(reader.readPStr32(), text);
        std::istringstream in(bytes);
        EXPECT_EQ(BinaryReader(in, ENDIAN_BIG).readPStr32(), text);
        if (len == 300 * kibi) {
            EXPECT_EQ(device->asked,
                      (std::vector<std::size_t>{4, 64 * kibi, 64 * kibi, 128 * kibi, 44 * kibi}));
        }
        std::istringstream cut(bytes.substr(0, bytes.size() - 1));
        expectIOException([&] { BinaryReader(cut, ENDIAN_BIG).readPStr32(); }, "Can't read PStr32");
    }
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
}  // namespace moxtel::io
