#include <moxtel/hash.hpp>

#include <bit>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace moxtel::util {
namespace {

std::uint32_t codeOf(const std::string& bytes) {
    return fnv1<32>(bytes.data(), bytes.size());
}

TEST(Fnv1, NoBytesGiveTheOffsetBasis) {
    EXPECT_EQ(fnv1<32>(nullptr, 0), 2166136261U);
}

TEST(Fnv1, BytesBelow0x80HashAsInTheUsualFnv1) {
    EXPECT_EQ(codeOf("a"), 0x050c5d7eU);
    EXPECT_EQ(codeOf("foobar"), 0x31f0b262U);
}

TEST(Fnv1, Byte0xFFDiffersFromTheUsualFnv1ByTheSignExtension) {
    constexpr std::uint32_t usual = 0x050c5de0;
    EXPECT_EQ(codeOf("\xff"), usual ^ 0xffffff00U);
}

TEST(Fnv1, SignExtensionBeginsAt0x80) {
    // 0x811c9dc5 times the prime is 0x050c5d1f.
    EXPECT_EQ(codeOf("\x7f"), 0x050c5d1fU ^ 0x0000007fU);
    EXPECT_EQ(codeOf("\x80"), 0x050c5d1fU ^ 0xffffff80U);
}

TEST(DefaultHash, CharIsHashedOverItsOneByte) {
    EXPECT_EQ(DefaultHash<char>()('a'), 0x050c5d7eU);
    EXPECT_EQ(DefaultHash<char>()('\xff'), 0xfaf3a2e0U);
}

TEST(DefaultHash, UnsignedIntIsHashedOverItsBytesAsTheyLieInMemory) {
    const bool little = std::endian::native == std::endian::little;
    EXPECT_EQ((DefaultHash<unsigned int, 32>()(0x64636261)), codeOf(little ? "abcd" : "dcba"));
    EXPECT_EQ((DefaultHash<unsigned int, 32>()(1)),
              codeOf(std::string(little ? "\1\0\0\0" : "\0\0\0\1", 4)));
}

TEST(DefaultHash, StringIsHashedOverItsSizeWithoutATerminator) {
    EXPECT_EQ(DefaultHash<std::string>()(""), 0x811c9dc5U);
    EXPECT_EQ(DefaultHash<std::string>()("foobar"), 0x31f0b262U);
    EXPECT_NE(DefaultHash<std::string>()(std::string("foobar\0", 7)), 0x31f0b262U);
}

TEST(DefaultHash, EnumerationIsHashedAsItsNumber) {
    enum class Colour : unsigned char { RED = 'a' };
    EXPECT_EQ(DefaultHash<Colour>()(Colour::RED), codeOf("a"));
}

}  // namespace
}  // namespace moxtel::util
