#include "bit_kernels.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/draws.hpp"

namespace quarvis::mining {
namespace {

constexpr std::uint64_t GUARD = 0x0123456789abcdef;
constexpr std::uint32_t COUNT_GUARD = 0x89abcdef;

using Words = std::vector<std::uint64_t>;

/// Bitmaps of all densities.
Words bitmaps(std::size_t words, oracle::Draws& draws) {
    constexpr std::uint64_t all = static_cast<std::uint64_t>(-1);
    Words made;
    for (std::size_t i = 0; i < words; ++i) {
        const std::uint64_t any = draws.upTo(all - 1);
        made.push_back(draws.oneOf({any, any, any & draws.upTo(all - 1), any | draws.upTo(all - 1),
                                    std::uint64_t{0}, all}));
    }
    return made;
}

struct Joined {
    Words result;
    std::vector<std::uint32_t> kept;
    std::vector<std::uint32_t> counts;

    bool operator==(const Joined&) const = default;
};

std::vector<std::uint32_t> naiveCounts(const Words& a, const Words& b, std::size_t n) {
    std::vector<std::uint32_t> counts;
    for (std::size_t i = 0; i < n; ++i) {
        int bits = 0;
        for (std::size_t word = 0; word < a.size(); ++word)
            bits += std::popcount(a[word] & b[i * a.size() + word]);
        counts.push_back(static_cast<std::uint32_t>(bits));
    }
    return counts;
}

Joined naiveJoin(const Words& a, const Words& b, std::size_t n, std::uint32_t least) {
    const std::vector<std::uint32_t> counts = naiveCounts(a, b, n);
    Joined joined;
    for (std::uint32_t i = 0; i < n; ++i) {
        if (counts[i] < least)
            continue;
        joined.kept.push_back(i);
        joined.counts.push_back(counts[i]);
        for (std::size_t word = 0; word < a.size(); ++word)
            joined.result.push_back(a[word] & b[i * a.size() + word]);
    }
    return joined;
}

/// What the kernel yields, once it is known to write nowhere else.
Joined join(const BitKernels& kernels, const Words& a, const Words& b, std::size_t n,
            std::uint32_t least) {
    Joined joined;
    joined.result.assign(n * a.size() + 1, GUARD);
    joined.kept.assign(n + 1, COUNT_GUARD);
    joined.counts.assign(n + 1, COUNT_GUARD);
    const std::size_t found =
        kernels.join(a.data(), b.data(), n, a.size(), least, joined.result.data(),
                     joined.kept.data(), joined.counts.data());
    EXPECT_EQ(GUARD, joined.result.back());
    EXPECT_EQ(COUNT_GUARD, joined.kept.back());
    EXPECT_EQ(COUNT_GUARD, joined.counts.back());
    joined.result.resize(found * a.size());
    joined.kept.resize(found);
    joined.counts.resize(found);
    return joined;
}

std::vector<std::uint32_t> count(const BitKernels& kernels, const Words& a, const Words& b,
                                 std::size_t n) {
    std::vector<std::uint32_t> counts(n + 1, COUNT_GUARD);
    kernels.count(a.data(), b.data(), n, a.size(), counts.data());
    EXPECT_EQ(COUNT_GUARD, counts.back());
    counts.pop_back();
    return counts;
}

TEST(BitKernels, ThePortableFormIsTheLastThatIsSupported) {
    ASSERT_FALSE(supportedBitKernels().empty());
    EXPECT_STREQ("portable", supportedBitKernels().back().name);
    EXPECT_EQ(&supportedBitKernels().front(), &bitKernels());
}

class BitKernelsOfForm : public testing::TestWithParam<std::size_t> {
  protected:
    const BitKernels& m_kernels = supportedBitKernels()[GetParam()];
};

TEST_P(BitKernelsOfForm, CountTheBitsThatBothHave) {
    const Words a = {0xff, 1};
    const Words b = {0x0f, 1, 0, 0, 0xf0ff, 3};
    EXPECT_EQ((std::vector<std::uint32_t>{5, 0, 9}), count(m_kernels, a, b, 3));
}

TEST_P(BitKernelsOfForm, KeepTheIntersectionsThatHaveEnoughBits) {
    const Words a = {0xff, 1};
    const Words b = {0x0f, 1, 0, 0, 0xf0ff, 3};
    EXPECT_EQ((Joined{{0x0f, 1, 0xff, 1}, {0, 2}, {5, 9}}), join(m_kernels, a, b, 3, 5));
    EXPECT_EQ((Joined{{0xff, 1}, {2}, {9}}), join(m_kernels, a, b, 3, 6));
    EXPECT_EQ((Joined{}), join(m_kernels, a, b, 3, 10));
    EXPECT_EQ((Joined{{0x0f, 1, 0, 0, 0xff, 1}, {0, 1, 2}, {5, 0, 9}}),
              join(m_kernels, a, b, 3, 0));
    EXPECT_EQ((Joined{}), join(m_kernels, a, b, 0, 0));
}

TEST_P(BitKernelsOfForm, DoAsTheNaiveLoopsForBitmapsOfAnyLength) {
    oracle::Draws draws(1);
    for (std::size_t words = 0; words <= 40; ++words)
        for (const std::size_t n : {0U, 1U, 2U, 5U}) {
            const Words a = bitmaps(words, draws);
            const Words b = bitmaps(n * words, draws);
            const std::vector<std::uint32_t> counts = naiveCounts(a, b, n);
            ASSERT_EQ(counts, count(m_kernels, a, b, n)) << words << " words";
            ASSERT_EQ(naiveJoin(a, b, n, 0), join(m_kernels, a, b, n, 0)) << words << " words";
            for (const std::uint32_t border : counts) {
                ASSERT_EQ(naiveJoin(a, b, n, border), join(m_kernels, a, b, n, border))
                    << words << " words";
                ASSERT_EQ(naiveJoin(a, b, n, border + 1), join(m_kernels, a, b, n, border + 1))
                    << words << " words";
            }
        }
}

TEST_P(BitKernelsOfForm, CountFullBitmapsOfManyWords) {
    const Words full(1000, static_cast<std::uint64_t>(-1));
    EXPECT_EQ(std::vector<std::uint32_t>{64'000}, count(m_kernels, full, full, 1));
}

INSTANTIATE_TEST_SUITE_P(Supported, BitKernelsOfForm,
                         testing::Range(std::size_t{0}, supportedBitKernels().size()),
                         [](const testing::TestParamInfo<std::size_t>& form) {
                             return std::string(supportedBitKernels()[form.param].name);
                         });

}  // namespace
}  // namespace quarvis::mining
