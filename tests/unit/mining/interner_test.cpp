#include "interner.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

TEST(Interner, NumbersTextsAsTheyAreFirstMet) {
    Interner interner;
    EXPECT_EQ(interner.size(), 0U);
    EXPECT_EQ(interner.number("b"), 0U);
    EXPECT_EQ(interner.number("a"), 1U);
    EXPECT_EQ(interner.number("b"), 0U);
    EXPECT_EQ(interner.number(""), 2U);
    EXPECT_EQ(interner.number("a"), 1U);
    EXPECT_EQ(interner.number(""), 2U);
    EXPECT_EQ(interner.size(), 3U);
}

TEST(Interner, TellsTextsApartThatDifferInOneByteOrInLength) {
    Interner interner;
    std::deque<std::string> texts;
    for (std::size_t size = 0; size <= 40; ++size) {
        texts.emplace_back(size, '\0');
        for (std::size_t at = 0; at < size; ++at)
            for (const char c : {'a', '\xff'}) {
                texts.emplace_back(size, '\0');
                texts.back()[at] = c;
            }
    }
    for (int pass = 0; pass < 2; ++pass)
        for (std::uint32_t i = 0; i < texts.size(); ++i)
            ASSERT_EQ(interner.number(texts[i]), i) << ::testing::PrintToString(texts[i]);
    EXPECT_EQ(interner.size(), texts.size());
}

TEST(Interner, KeepsItsNumbersWhileItGrows) {
    Interner interner;
    std::map<std::string, std::uint32_t> numbers;
    std::mt19937 random(7);
    for (int i = 0; i < 100'000; ++i) {
        const std::string text = std::to_string(random() % 20'000);
        const auto [known, added] =
            numbers.try_emplace(text, static_cast<std::uint32_t>(numbers.size()));
        ASSERT_EQ(interner.number(known->first), known->second) << text;
    }
    EXPECT_EQ(interner.size(), numbers.size());
}

}  // namespace
}  // namespace quarvis::rule
