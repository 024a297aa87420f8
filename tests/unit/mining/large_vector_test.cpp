#include "large_vector.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include <gtest/gtest.h>

namespace quarvis::mining {
namespace {

TEST(LargeVector, HoldsWhatItHeldWhenItGrows) {
    LargeVector<std::uint32_t> values;
    for (std::uint32_t value = 0; value < 3 * LARGE_PAGE / sizeof(std::uint32_t); ++value)
        values.push_back(value);
    for (std::uint32_t value = 0; value < values.size(); ++value)
        ASSERT_EQ(value, values[value]);
}

/// Sizes around those at which arrays become long, and around whole pages.
TEST(LargeVector, IsWritableUpToItsEnd) {
    for (const std::size_t size :
         {LARGE_PAGE / 2 - 1, LARGE_PAGE / 2, LARGE_PAGE / 2 + 1, LARGE_PAGE - 1, LARGE_PAGE,
          LARGE_PAGE + 1, 3 * LARGE_PAGE / 2 - 1, 3 * LARGE_PAGE / 2, 2 * LARGE_PAGE + 1}) {
        LargeVector<std::uint8_t> bytes(size, 1);
        bytes.back() = 2;
        EXPECT_EQ(size + 1, std::accumulate(bytes.begin(), bytes.end(), std::size_t{0}));
    }
}

TEST(LargeVector, BeginsAtAPageWhenItIsLong) {
    const LargeVector<std::uint64_t> values(LARGE_PAGE / sizeof(std::uint64_t));
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(values.data()) % LARGE_PAGE);
}

TEST(LargeVector, HandsItsRoomOver) {
    LargeVector<std::uint64_t> from(LARGE_PAGE, 7);
    const std::uint64_t* const room = from.data();
    const LargeVector<std::uint64_t> to = std::move(from);
    EXPECT_EQ(room, to.data());
    EXPECT_EQ(static_cast<std::ptrdiff_t>(LARGE_PAGE), std::count(to.begin(), to.end(), 7));
}

TEST(LargeAllocator, RefusesMoreThanAnyArrayHas) {
    EXPECT_THROW(
        (void)LargeAllocator<std::uint64_t>().allocate(std::numeric_limits<std::size_t>::max() / 8),
        std::bad_alloc);
}

}  // namespace
}  // namespace quarvis::mining
