/// Binary streams over memory of any type, const memory among it.

#include <moxtel/binary.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <gtest/gtest.h>

namespace moxtel::io {
namespace {

TEST(BinaryMemory, ConstMemoryIsReadAndNotWritten) {
    static constexpr unsigned char BYTES[] = {1, 2, 3, 2, 'a', 'b'};
    BinaryReader reader(BYTES, sizeof BYTES, ENDIAN_BIG);
    EXPECT_EQ(reader.readUI8(), 1);
    EXPECT_EQ(reader.readUI16(), 0x0203);
    EXPECT_TRUE(reader.handle()->canRead());
    EXPECT_FALSE(reader.handle()->canWrite());
    EXPECT_EQ(reader.handle()->write("x", 1), 0U);
    EXPECT_FALSE(reader.handle()->write('x'));
    EXPECT_EQ(reader.readPStr8(), "ab");
    EXPECT_EQ(reader.readUI32(), 0U);
}

TEST(BinaryMemory, MemoryThatIsNotConstIsBothReadAndWritten) {
    char bytes[] = {1, 2};
    BinaryReader reader(bytes, sizeof bytes, ENDIAN_BIG);
    EXPECT_TRUE(reader.handle()->canWrite());
    EXPECT_EQ(reader.readUI16(), 0x0102);
}

TEST(BinaryMemory, BlocksOfAnyTypeAreMovedAsBytes) {
    const std::array<std::uint16_t, 2> values = {0x0102, 0x0304};
    std::array<std::byte, 6> bytes{};
    BinaryWriter writer(bytes.data(), bytes.size(), ENDIAN_BIG);
    EXPECT_EQ(writer.write(values.data(), sizeof values), 4U);
    const void* untyped = values.data();
    EXPECT_EQ(writer.write(untyped, 4), 2U);
    EXPECT_FALSE(writer.flush());

    std::array<std::uint16_t, 3> read{};
    BinaryReader reader(static_cast<const std::byte*>(bytes.data()), bytes.size(), ENDIAN_BIG);
    void* target = read.data();
    EXPECT_EQ(reader.read(target, 2), 2U);
    EXPECT_EQ(reader.read(read.data() + 1, 4), 4U);
    EXPECT_EQ(read, (std::array<std::uint16_t, 3>{0x0102, 0x0304, 0x0102}));
    EXPECT_EQ(reader.read(read.data(), 6), 0U);
}

TEST(BinaryMemory, NoBytesNeedNoMemory) {
    BinaryReader reader(nullptr, 0, ENDIAN_LITTLE);
    EXPECT_EQ(reader.read(nullptr, 0), 0U);
    BinaryWriter writer(nullptr, 0, ENDIAN_LITTLE);
    EXPECT_EQ(writer.write(nullptr, 0), 0U);
    EXPECT_TRUE(writer.flush());
}

}  // namespace
}  // namespace moxtel::io
