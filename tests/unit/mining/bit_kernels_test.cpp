#include "bit_kernels.hpp"

#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

using Words = std::vector<std::uint64_t>;

constexpr std::size_t MAX_WORDS = 200;

/// The common bits, looked at one by one.
std::uint32_t plainCount(const std::uint64_t* a, const std::uint64_t* b, std::size_t words) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < words * 64; ++i)
        bits += (a[i / 64] >> (i % 64) & b[i / 64] >> (i % 64) & 1) != 0 ? 1 : 0;
    return bits;
}

/// Words of which about one bit in 2^`sparsity` is set.
Words randomWords(std::size_t words, std::mt19937_64& random, unsigned sparsity) {
    Words made(words, ~std::uint64_t{0});
    for (std::uint64_t& word : made)
        for (unsigned i = 0; i < sparsity; ++i)
            word &= random();
    return made;
}

class EveryBitKernel : public testing::TestWithParam<BitKernels> {};

TEST_P(EveryBitKernel, CountsAsBitByBit) {
    std::mt19937_64 random(1);
    for (std::size_t words = 0; words <= MAX_WORDS; ++words)
        for (unsigned sparsity = 0; sparsity < 4; ++sparsity) {
            // The first of them lies anywhere, the second at a multiple of 8 only.
            const Words a = randomWords(words, random, sparsity);
            const Words b = randomWords(words + 1, random, 1);
            EXPECT_EQ(plainCount(a.data(), b.data() + 1, words),
                      GetParam().countCommon(a.data(), b.data() + 1, words))
                << words << " words";
        }
}

TEST_P(EveryBitKernel, CountsAllBits) {
    const Words full(MAX_WORDS, ~std::uint64_t{0});
    for (std::size_t words = 0; words <= MAX_WORDS; ++words)
        EXPECT_EQ(words * 64, GetParam().countCommon(full.data(), full.data(), words));
}

TEST_P(EveryBitKernel, CountsEverySingleBit) {
    constexpr std::size_t words = 17;
    const Words full(words, ~std::uint64_t{0});
    for (std::size_t bit = 0; bit < words * 64; ++bit) {
        Words one(words);
        one[bit / 64] = std::uint64_t{1} << (bit % 64);
        EXPECT_EQ(1U, GetParam().countCommon(full.data(), one.data(), words)) << "bit " << bit;
        EXPECT_EQ(1U, GetParam().countCommon(one.data(), full.data(), words)) << "bit " << bit;
    }
}

TEST_P(EveryBitKernel, CountsWithEachOfSeveral) {
    std::mt19937_64 random(2);
    for (std::size_t words = 0; words <= MAX_WORDS; words += words < 40 ? 1 : 13)
        for (std::size_t n = 0; n < 10; ++n) {
            const Words a = randomWords(words, random, 1);
            std::vector<Words> others;
            std::vector<const std::uint64_t*> pointers;
            std::vector<std::uint32_t> expected;
            for (std::size_t i = 0; i < n; ++i)
                others.push_back(randomWords(words, random, static_cast<unsigned>(i % 3)));
            for (const Words& other : others) {
                pointers.push_back(other.data());
                expected.push_back(plainCount(a.data(), other.data(), words));
            }
            // The place after the last count is not touched.
            constexpr std::uint32_t untouched = 12345;
            std::vector<std::uint32_t> counts(n + 1, untouched);
            expected.push_back(untouched);
            GetParam().countCommonEach(a.data(), pointers.data(), n, words, counts.data());
            EXPECT_EQ(expected, counts) << n << " of " << words << " words";
        }
}

INSTANTIATE_TEST_SUITE_P(Supported, EveryBitKernel, testing::ValuesIn(supportedBitKernels()),
                         [](const auto& kernels) { return std::string(kernels.param.name); });

TEST(BitKernels, ThePortableFormIsAlwaysThereAndLast) {
    ASSERT_FALSE(supportedBitKernels().empty());
    EXPECT_STREQ("portable", supportedBitKernels().back().name);
}

TEST(BitKernels, TheFirstSupportedFormIsTheBest) {
    EXPECT_EQ(&supportedBitKernels().front(), &bitKernels());
}

}  // namespace
}  // namespace quarvis::rule
