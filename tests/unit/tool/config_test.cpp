#include "config.hpp"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(Configuration, NamesNoFilesByDefault) {
    const Configuration config;
    EXPECT_EQ("", config.inputFile);
    EXPECT_EQ("", config.outputFile);
    EXPECT_EQ("", config.itemSetFile);
}

TEST(Configuration, CopiesAreIndependent) {
    Configuration config;
    config.inputFile = "in";
    config.minCount = 7;
    Configuration copy = config;
    copy.inputFile = "other";
    copy.minCount = 8;
    EXPECT_EQ("in", config.inputFile);
    EXPECT_EQ(7U, config.minCount);
}

TEST(Configuration, CountsAreThirtyTwoBitsWide) {
    constexpr std::uint32_t greatest = std::numeric_limits<std::uint32_t>::max();
    Configuration config;
    config.minCount = config.maxOrder = config.windowSize = greatest;
    ++config.minCount;
    EXPECT_EQ(0U, config.minCount);
    EXPECT_EQ(greatest, config.maxOrder);
    EXPECT_EQ(greatest, config.windowSize);
}

}  // namespace
