#include "../../../src/libmoxtel/length_prefix.hpp"

#include <cstddef>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

namespace moxtel::io {
namespace {

/// The message of the exception that `prefix` ends with for a length.
template <class Prefix>
std::string tooLarge(Prefix (*prefix)(std::size_t), std::size_t len) {
    try {
        prefix(len);
    } catch (const IOException& e) {
        return e.why();
    }
    return "nothing thrown";
}

constexpr std::size_t MOST = std::numeric_limits<std::size_t>::max();

TEST(LengthPrefix, OfEightBitsEndsAt255) {
    EXPECT_EQ(lengthPrefix8(0), 0U);
    EXPECT_EQ(lengthPrefix8(255), 255U);
    EXPECT_EQ(tooLarge(lengthPrefix8, 256), "String too large to fit in a PStr8");
    EXPECT_EQ(tooLarge(lengthPrefix8, MOST), "String too large to fit in a PStr8");
}

TEST(LengthPrefix, OfSixteenBitsEndsAt65535) {
    EXPECT_EQ(lengthPrefix16(0), 0U);
    EXPECT_EQ(lengthPrefix16(65535), 65535U);
    EXPECT_EQ(tooLarge(lengthPrefix16, 65536), "String too large to fit in a PStr16");
    EXPECT_EQ(tooLarge(lengthPrefix16, MOST), "String too large to fit in a PStr16");
}

TEST(LengthPrefix, OfThirtyTwoBitsEndsAt4294967295AndNamesTheShorterForm) {
    EXPECT_EQ(lengthPrefix32(0), 0U);
    EXPECT_EQ(lengthPrefix32(65536), 65536U);
    EXPECT_EQ(lengthPrefix32(4294967295), 4294967295U);
    EXPECT_EQ(tooLarge(lengthPrefix32, 4294967296), "String too large to fit in a PStr16");
    EXPECT_EQ(tooLarge(lengthPrefix32, MOST), "String too large to fit in a PStr16");
}

TEST(LengthPrefix, OfSixtyFourBitsKeepsTheLowSixteen) {
    EXPECT_EQ(lengthPrefix64(65535), 65535U);
    EXPECT_EQ(lengthPrefix64(65536), 0U);
    EXPECT_EQ(lengthPrefix64(70000), 4464U);
    EXPECT_EQ(lengthPrefix64(MOST), 65535U);
}

}  // namespace
}  // namespace moxtel::io
