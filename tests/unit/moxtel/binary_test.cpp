#include <moxtel/binary.hpp>

#include <array>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>
#include <moxtel/memory.hpp>

#include "binary_bytes.hpp"
#include "support/temp_dir.hpp"

namespace {

using namespace moxtel;
using namespace moxtel::io;
using namespace std::string_literals;
using support::fileContent;
using support::TempDir;

constexpr Endianness NO_ORDER = static_cast<Endianness>(5);

/// The bytes of a value as this machine keeps them.
template <class T>
std::string hostBytes(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
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
        count += out.writeUI64(UINT64_C(0x8000010203040506));
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
    EXPECT_EQ(little.readSI64(), static_cast<std::int64_t>(UINT64_C(0x8007060504030201)));
    EXPECT_EQ(little.readUI64(), UINT64_C(0x8007060504030201));

    BinaryReader big = readerOver(bytes, ENDIAN_BIG);
    EXPECT_EQ(big.readSI8(), -2);
    EXPECT_EQ(big.readUI8(), 0xFE);
    EXPECT_EQ(big.readSI16(), 0x0180);
    EXPECT_EQ(big.readUI16(), 0x0180);
    EXPECT_EQ(big.readSI32(), 0x01020380);
    EXPECT_EQ(big.readUI32(), 0x01020380U);
    EXPECT_EQ(big.readSI64(), 0x0102030405060780L);
    EXPECT_EQ(big.readUI64(), UINT64_C(0x0102030405060780));
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

TEST(BinaryStream, WithoutADeviceIsRefused) {
    Device* const none = nullptr;
    EXPECT_THROW(BinaryReader(none, ENDIAN_LITTLE), AccessException);
    EXPECT_THROW(BinaryWriter(none, ENDIAN_LITTLE), AccessException);
}

TEST(BinaryStream, CopiesShareTheDevice) {
    BinaryReader in = readerOver("\1\2\3", ENDIAN_LITTLE);
    BinaryReader copy(in);
    EXPECT_EQ(in.readUI8(), 1);
    EXPECT_EQ(copy.readUI8(), 2);
    EXPECT_EQ(in.readUI8(), 3);
    EXPECT_EQ(&*in.handle(), &*copy.handle());
}

TEST(BinaryStream, ArraysAreOpenedForReadingAndWriting) {
    std::array<char, 2> memory = {};
    for (const auto& device : {BinaryReader(memory.data(), memory.size(), ENDIAN_BIG).handle(),
                               BinaryWriter(memory.data(), memory.size(), ENDIAN_BIG).handle()}) {
        EXPECT_TRUE(device->canRead());
        EXPECT_TRUE(device->canWrite());
    }
}

TEST(BinaryStream, FilesAreLittleEndian) {
    const TempDir dir;
    const std::string path = dir / "number";
    {
        BinaryWriter out = BinaryWriter::fromFile(path);
        EXPECT_EQ(out.endian(), ENDIAN_LITTLE);
        EXPECT_EQ(out.writeUI32(0x01020304U), 4U);
    }
    EXPECT_EQ(fileContent(path), "\4\3\2\1");
    for (const int flags : {0, static_cast<int>(OPEN_READ), static_cast<int>(OPEN_READ_WRITE)}) {
        BinaryReader in = BinaryReader::fromFile(path, flags);
        EXPECT_EQ(in.endian(), ENDIAN_LITTLE);
        EXPECT_EQ(in.readUI32(), 0x01020304U);
        EXPECT_TRUE(in.handle()->canRead());
    }
}

TEST(BinaryStream, FilesAreOpenedAsTheFlagsSay) {
    const TempDir dir;
    const std::string path = dir.write("bytes", "ab");
    for (const int flags : {static_cast<int>(OPEN_READ), static_cast<int>(OPEN_READ_WRITE)}) {
        BinaryWriter out = BinaryWriter::fromFile(path, flags);
        EXPECT_EQ(out.writeUI8('x'), 0U);
        EXPECT_TRUE(out.handle()->canRead());
    }
    EXPECT_EQ(fileContent(path), "ab");
    BinaryReader in = BinaryReader::fromFile(path, OPEN_WRITE);
    EXPECT_EQ(in.readUI8(), 0U);
    EXPECT_FALSE(in.handle()->canRead());
    EXPECT_EQ(fileContent(path), "");
}

}  // namespace
