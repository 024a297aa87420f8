#include <moxtel/integer.hpp>

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

namespace {

using namespace moxtel;

constexpr Endianness NEITHER_ORDER = static_cast<Endianness>(5);

TEST(Endianness, ValuesAreReversalsOfEachOther) {
    EXPECT_EQ(ENDIAN_LITTLE, 0x00010203U);
    EXPECT_EQ(ENDIAN_BIG, 0x03020100U);
    EXPECT_EQ(swap32(0x00010203U), 0x03020100U);
}

TEST(Endianness, HostOrderHasTheBytesThreeTwoOneZero) {
    const Endianness expected =
        std::endian::native == std::endian::little ? ENDIAN_LITTLE : ENDIAN_BIG;
    EXPECT_EQ(HOST_ENDIAN, expected);
    unsigned char bytes[4];
    std::memcpy(bytes, &HOST_ENDIAN, sizeof bytes);
    EXPECT_THAT(bytes, testing::ElementsAre(3, 2, 1, 0));
}

TEST(Swap, BytesAreReversed) {
    EXPECT_EQ(swap16(0x0102), 0x0201);
    EXPECT_EQ(swap16(0xFF00), 0x00FF);
    EXPECT_EQ(swap32(0x11223344U), 0x44332211U);
    EXPECT_EQ(swap32(0x000000FFU), 0xFF000000U);
    EXPECT_EQ(swap64(UINT64_C(0x1122334455667788)), UINT64_C(0x8877665544332211));
    EXPECT_EQ(swap64(UINT64_C(0x00000000000000FF)), UINT64_C(0xFF00000000000000));
}

TEST(Swap, SignedIntReversesIntoTheSignBit) {
    EXPECT_EQ(swap32(0x00000080), std::numeric_limits<int>::min());
    EXPECT_EQ(swap32(std::numeric_limits<int>::min()), 0x00000080);
    EXPECT_EQ(swap32(-2), static_cast<int>(0xFEFFFFFFU));
}

TEST(Cswap, ReversesInPlace) {
    const std::string text = "abcdefg";
    for (std::size_t len = 0; len <= text.size(); ++len) {
        std::string buffer = text;
        cswap(buffer.data(), len);
        const std::string head = text.substr(0, len);
        EXPECT_EQ(buffer, std::string(head.rbegin(), head.rend()) + text.substr(len));
    }
}

TEST(Cswap, NothingForNoBytes) {
    char byte = 'a';
    cswap(&byte, 0);
    EXPECT_EQ(byte, 'a');
    EXPECT_NO_THROW(cswap(nullptr, 0));
}

TEST(EndianConvert, DifferentOrdersReverseTheBytes) {
    EXPECT_EQ(endianConvert32(0x11223344, ENDIAN_LITTLE, ENDIAN_BIG), 0x44332211);
    EXPECT_EQ(endianConvert32(0x11223344U, ENDIAN_BIG, ENDIAN_LITTLE), 0x44332211U);
    EXPECT_EQ(endianConvert16(static_cast<unsigned short>(0x1122), ENDIAN_LITTLE, ENDIAN_BIG),
              0x2211);
    EXPECT_EQ(endianConvert16(static_cast<short>(0x0080), ENDIAN_BIG, ENDIAN_LITTLE), -32768);
    EXPECT_EQ(endianConvert64(UINT64_C(0x1122334455667788), ENDIAN_LITTLE, ENDIAN_BIG),
              UINT64_C(0x8877665544332211));
    EXPECT_EQ(endianConvert64(std::int64_t{-2}, ENDIAN_BIG, ENDIAN_LITTLE),
              static_cast<std::int64_t>(UINT64_C(0xFEFFFFFFFFFFFFFF)));
}

TEST(EndianConvert, EqualOrdersKeepTheValue) {
    for (const Endianness order : {ENDIAN_LITTLE, ENDIAN_BIG, NEITHER_ORDER}) {
        EXPECT_EQ(endianConvert16(static_cast<short>(-2), order, order), -2);
        EXPECT_EQ(endianConvert16(static_cast<unsigned short>(258), order, order), 258);
        EXPECT_EQ(endianConvert32(0x11223344, order, order), 0x11223344);
        EXPECT_EQ(endianConvert32(0x11223344U, order, order), 0x11223344U);
        EXPECT_EQ(endianConvert64(std::int64_t{-2}, order, order), -2L);
        EXPECT_EQ(endianConvert64(UINT64_C(258), order, order), UINT64_C(258));
    }
}

template <class Operation>
void expectCannotHandle(Operation operation) {
    try {
        operation();
        ADD_FAILURE() << "converted between unknown orders";
    } catch (const UnsupportedOperationException& e) {
        EXPECT_STREQ(e.what(), "Can't handle endian.");
    }
}

TEST(EndianConvert, UnknownOrderCannotBeHandled) {
    expectCannotHandle([] { endianConvert32(1, NEITHER_ORDER, ENDIAN_BIG); });
    expectCannotHandle([] { endianConvert32(1U, ENDIAN_LITTLE, NEITHER_ORDER); });
    expectCannotHandle(
        [] { endianConvert16(static_cast<short>(1), NEITHER_ORDER, ENDIAN_LITTLE); });
    expectCannotHandle(
        [] { endianConvert16(static_cast<unsigned short>(1), ENDIAN_BIG, NEITHER_ORDER); });
    expectCannotHandle([] { endianConvert64(1L, NEITHER_ORDER, ENDIAN_BIG); });
    expectCannotHandle([] { endianConvert64(UINT64_C(1), NEITHER_ORDER, ENDIAN_BIG); });
    expectCannotHandle([] { toHostEndian32(1, NEITHER_ORDER); });
}

TEST(ToHostEndian, ForeignOrderIsReversedAndTheOwnKept) {
    const Endianness foreign = HOST_ENDIAN == ENDIAN_LITTLE ? ENDIAN_BIG : ENDIAN_LITTLE;
    EXPECT_EQ(toHostEndian16(static_cast<short>(0x0102), foreign), 0x0201);
    EXPECT_EQ(toHostEndian16(static_cast<unsigned short>(0x0102), foreign), 0x0201);
    EXPECT_EQ(toHostEndian32(0x01020304, foreign), 0x04030201);
    EXPECT_EQ(toHostEndian32(0x01020304U, foreign), 0x04030201U);
    EXPECT_EQ(toHostEndian64(0x0102030405060708L, foreign), 0x0807060504030201L);
    EXPECT_EQ(toHostEndian64(UINT64_C(0x0102030405060708), foreign), UINT64_C(0x0807060504030201));
    EXPECT_EQ(toHostEndian16(static_cast<short>(0x0102), HOST_ENDIAN), 0x0102);
    EXPECT_EQ(toHostEndian16(static_cast<unsigned short>(0x0102), HOST_ENDIAN), 0x0102);
    EXPECT_EQ(toHostEndian32(0x01020304, HOST_ENDIAN), 0x01020304);
    EXPECT_EQ(toHostEndian32(0x01020304U, HOST_ENDIAN), 0x01020304U);
    EXPECT_EQ(toHostEndian64(0x0102030405060708L, HOST_ENDIAN), 0x0102030405060708L);
    EXPECT_EQ(toHostEndian64(UINT64_C(0x0102030405060708), HOST_ENDIAN),
              UINT64_C(0x0102030405060708));
}

}  // namespace
