#include <quarvis/mining/measures.hpp>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace quarvis::mining {
namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// Equal to the last bit, except that one NaN is as good as another.
testing::AssertionResult isExactly(double expected, double actual) {
    const bool same = std::isnan(expected)
                          ? std::isnan(actual)
                          : expected == actual && std::signbit(expected) == std::signbit(actual);
    if (same)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual << " instead of " << expected;
}

TEST(Support, IsTheShareOfTheTotal) {
    EXPECT_TRUE(isExactly(0.5, support(2, 4)));
    EXPECT_TRUE(isExactly(0.0, support(0, 4)));
    EXPECT_TRUE(isExactly(1.0, support(4, 4)));
    EXPECT_TRUE(isExactly(2.0, support(4, 2)));
    EXPECT_TRUE(isExactly(1.0 / 3.0, support(1, 3)));
}

TEST(Support, OfATotalOfZeroIsInfinite) {
    EXPECT_TRUE(isExactly(INF, support(3, 0)));
}

TEST(Support, OfNothingInNothingIsNotANumber) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, support(0, 0)));
}

TEST(Support, TakesTheWholeRangeOfCounts) {
    constexpr unsigned int greatest = std::numeric_limits<unsigned int>::max();
    EXPECT_TRUE(isExactly(1.0, support(greatest, greatest)));
    EXPECT_TRUE(isExactly(4294967295.0, support(greatest, 1)));
}

struct TwoArguments {
    double first;
    double second;
    double expected;
};

TEST(Confidence, Table) {
    const TwoArguments rows[] = {
        {0.4, 0.0, 0.0},  {0.0, 0.5, 0.0}, {0.2, 0.4, 0.5},          {0.0, 0.0, 0.0},
        {0.4, -0.0, 0.0}, {INF, 0.5, INF}, {INF, INF, NOT_A_NUMBER}, {0.5, INF, 0.0},
        {0.5, 0.25, 2.0}, {0.3, 0.3, 1.0},
    };
    for (const auto& [both, antecedent, expected] : rows)
        EXPECT_TRUE(isExactly(expected, confidence(both, antecedent)))
            << both << " of " << antecedent;
}

TEST(Confidence, NotANumberPassesTheGuard) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, confidence(0.5, NOT_A_NUMBER)));
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, confidence(NOT_A_NUMBER, 0.5)));
}

TEST(Confidence, OfAnAntecedentThatNeverOccursIsZeroWhateverTheRest) {
    EXPECT_TRUE(isExactly(0.0, confidence(NOT_A_NUMBER, 0.0)));
    EXPECT_TRUE(isExactly(0.0, confidence(INF, 0.0)));
}

TEST(Lift, Table) {
    struct Row {
        double both;
        double antecedent;
        double subsequent;
        double expected;
    };
    const Row rows[] = {
        {0.2, 0.4, 0.5, 1.0}, {0.2, 0.0, 0.5, 0.0}, {0.2, 0.5, 0.0, 0.0},
        {0.5, 0.5, 0.5, 2.0}, {0.0, 0.5, 0.5, 0.0}, {0.25, 1.0, 0.5, 0.5},
    };
    for (const auto& [both, antecedent, subsequent, expected] : rows)
        EXPECT_TRUE(isExactly(expected, lift(both, antecedent, subsequent)))
            << both << " of " << antecedent << " and " << subsequent;
}

TEST(Lift, IsZeroWhenTheProductUnderflowsToZero) {
    EXPECT_TRUE(isExactly(0.0, lift(0.5, 1e-200, 1e-200)));
}

TEST(Lift, NotANumberPassesTheGuard) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, lift(0.5, NOT_A_NUMBER, 0.5)));
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, lift(0.5, 0.0, NOT_A_NUMBER)));
}

TEST(Conviction, Table) {
    const TwoArguments rows[] = {
        {0.5, 1.0, INF}, {0.5, 0.75, 2.0}, {1.0, 0.5, 0.0},  {0.5, 0.5, 1.0},
        {1.0, 1.0, INF}, {0.5, 0.0, 0.5},  {0.5, 2.0, -0.5}, {0.25, 0.25, 1.0},
    };
    for (const auto& [subsequent, confidenceOfRule, expected] : rows)
        EXPECT_TRUE(isExactly(expected, conviction(subsequent, confidenceOfRule)))
            << subsequent << " with " << confidenceOfRule;
}

TEST(Conviction, TakesOnlyExactlyOneForCertain) {
    const double almostOne = std::nextafter(1.0, 0.0);
    EXPECT_TRUE(isExactly(0.5 / (1.0 - almostOne), conviction(0.5, almostOne)));
    EXPECT_LT(conviction(0.5, almostOne), INF);
}

TEST(Conviction, NotANumberPassesTheGuard) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, conviction(0.5, NOT_A_NUMBER)));
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, conviction(NOT_A_NUMBER, 0.5)));
}

TEST(Conviction, OfACertainRuleIsInfiniteWhateverTheRest) {
    EXPECT_TRUE(isExactly(INF, conviction(NOT_A_NUMBER, 1.0)));
}

TEST(Probability, Table) {
    const TwoArguments rows[] = {
        {0.4, 0.0, 0.0}, {0.0, 0.5, 0.0}, {0.2, 0.4, 0.5}, {0.3, 0.3, 1.0}, {0.0, 0.0, 0.0},
    };
    for (const auto& [both, subsequent, expected] : rows)
        EXPECT_TRUE(isExactly(expected, probability(both, subsequent)))
            << both << " of " << subsequent;
}

TEST(Probability, NotANumberPassesTheGuard) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, probability(0.5, NOT_A_NUMBER)));
}

TEST(Certainty, Table) {
    const TwoArguments rows[] = {
        {0.3, 0.3, INF}, {0.25, 0.75, 0.5}, {0.5, 0.25, -2.0}, {0.0, 0.0, INF},
        {0.0, 0.5, 0.0}, {0.5, 0.0, -1.0},  {INF, INF, INF},
    };
    for (const auto& [both, subsequent, expected] : rows)
        EXPECT_TRUE(isExactly(expected, certainty(both, subsequent)))
            << both << " and " << subsequent;
}

TEST(Certainty, OfDecimalFractionsIsAsCloseAsTheyAre) {
    EXPECT_DOUBLE_EQ(0.5, certainty(0.2, 0.6));
    EXPECT_DOUBLE_EQ(-2.0, certainty(0.4, 0.2));
}

TEST(Certainty, NotANumberPassesTheGuard) {
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, certainty(0.5, NOT_A_NUMBER)));
    EXPECT_TRUE(isExactly(NOT_A_NUMBER, certainty(NOT_A_NUMBER, NOT_A_NUMBER)));
}

}  // namespace
}  // namespace quarvis::mining
