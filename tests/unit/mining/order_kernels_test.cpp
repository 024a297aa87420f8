#include "order_kernels.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/draws.hpp"

namespace quarvis::mining {
namespace {

using Orders = std::vector<std::uint8_t>;
using Words = std::vector<std::uint64_t>;

constexpr std::uint64_t WORD_GUARD = 0x0123456789abcdef;

/// A few orders, so that many are equal, and the least, the greatest and none.
Orders ordersOf(std::size_t lanes, oracle::Draws& draws) {
    Orders orders;
    for (std::size_t lane = 0; lane < lanes; ++lane)
        orders.push_back(
            draws.oneOf({std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{127}, std::uint8_t{128},
                         std::uint8_t{192}, std::uint8_t{254}, ABSENT}));
    return orders;
}

template <class Compare>
Words naive(const Orders& item, const Orders& set, Compare compare) {
    Words words(item.size() / 64 + 1);
    words.back() = WORD_GUARD;
    for (std::size_t lane = 0; lane < item.size(); ++lane)
        if (item[lane] != ABSENT && set[lane] != ABSENT && compare(item[lane], set[lane]))
            words[lane / 64] |= std::uint64_t{1} << (lane % 64);
    return words;
}

TEST(OrderKernels, TellWhereAnItemComesBeforeASetWithItAndAfterIt) {
    oracle::Draws draws(7);
    ASSERT_STREQ("portable", supportedOrderKernels().back().name);
    for (const OrderKernels& kernels : supportedOrderKernels())
        for (std::size_t words = 0; words <= 9; ++words)
            for (int round = 0; round < 20; ++round) {
                const Orders item = ordersOf(64 * words, draws);
                const Orders set = ordersOf(64 * words, draws);
                Words before(words + 1, WORD_GUARD);
                Words with(words + 1, WORD_GUARD);
                Words after(words + 1, WORD_GUARD);
                kernels.compare(item.data(), set.data(), words, before.data(), with.data(),
                                after.data());
                ASSERT_EQ(naive(item, set, std::less<>()), before) << kernels.name;
                ASSERT_EQ(naive(item, set, std::equal_to<>()), with) << kernels.name;
                ASSERT_EQ(naive(item, set, std::greater<>()), after) << kernels.name;
            }
}

}  // namespace
}  // namespace quarvis::mining
