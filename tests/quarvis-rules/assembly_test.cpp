#include "assembly.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// Settings that let every rule pass.
Configuration unfiltered() {
    Configuration config;
    config.minCount = 0;
    return config;
}

RuleSet::Stats someStats() {
    RuleSet::Stats stats;
    stats.count = 3;
    stats.icount = 3;
    stats.support = 0.25;
    stats.confidence = 0.75;
    stats.lift = 1.5;
    stats.conviction = 2;
    stats.probability = 0.5;
    stats.certainty = 0.5;
    return stats;
}

TEST(Filter, BoundsAreInclusive) {
    struct Row {
        const char* bound;
        void (*set)(Configuration& config, double value);
        double inclusive;
        double exclusive;
    };
    const Row rows[] = {
        {"minCount", [](Configuration& c, double v) { c.minCount = static_cast<std::uint32_t>(v); },
         3, 4},
        {"minSupport", [](Configuration& c, double v) { c.minSupport = v; }, 0.25, 0.2500001},
        {"minConfidence", [](Configuration& c, double v) { c.minConfidence = v; }, 0.75, 0.7500001},
        {"minLift", [](Configuration& c, double v) { c.minLift = v; }, 1.5, 1.5000001},
        {"maxConviction", [](Configuration& c, double v) { c.maxConviction = v; }, 2, 1.9999999},
    };
    for (const Row& row : rows) {
        Configuration config = unfiltered();
        row.set(config, row.inclusive);
        EXPECT_TRUE(filter(config, someStats())) << row.bound;
        row.set(config, row.exclusive);
        EXPECT_FALSE(filter(config, someStats())) << row.bound;
    }
}

TEST(Filter, NotANumberFailsForTheFourMeasuresWithBounds) {
    for (double RuleSet::Stats::*measure : {&RuleSet::Stats::support, &RuleSet::Stats::confidence,
                                            &RuleSet::Stats::lift, &RuleSet::Stats::conviction}) {
        RuleSet::Stats stats = someStats();
        stats.*measure = NOT_A_NUMBER;
        EXPECT_FALSE(filter(unfiltered(), stats));
    }
}

TEST(Filter, NotANumberAsABoundFailsEveryRule) {
    for (double Configuration::*bound : {&Configuration::minSupport, &Configuration::minConfidence,
                                         &Configuration::minLift, &Configuration::maxConviction}) {
        Configuration config = unfiltered();
        config.*bound = NOT_A_NUMBER;
        EXPECT_FALSE(filter(config, someStats()));
    }
}

TEST(Filter, ProbabilityAndCertaintyHaveNoBounds) {
    RuleSet::Stats stats = someStats();
    stats.probability = NOT_A_NUMBER;
    stats.certainty = -INF;
    EXPECT_TRUE(filter(unfiltered(), stats));
}

TEST(Filter, TheCountOfTheUnionHasNoBound) {
    Configuration config = unfiltered();
    config.minCount = 3;
    RuleSet::Stats stats = someStats();
    stats.icount = 0;
    EXPECT_TRUE(filter(config, stats));
}

TEST(Filter, InfiniteConvictionPassesOnlyAnInfiniteBound) {
    RuleSet::Stats stats = someStats();
    stats.conviction = INF;
    Configuration config = unfiltered();
    EXPECT_TRUE(filter(config, stats));
    config.maxConviction = std::numeric_limits<double>::max();
    EXPECT_FALSE(filter(config, stats));
}

TEST(Filter, CountsAreComparedWhole) {
    RuleSet::Stats stats = someStats();
    stats.count = std::size_t{1} << 32;
    Configuration config = unfiltered();
    config.minCount = std::numeric_limits<std::uint32_t>::max();
    EXPECT_TRUE(filter(config, stats));
}

}  // namespace
}  // namespace quarvis::rule
