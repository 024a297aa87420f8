#include <moxtel/parse.hpp>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// A type from another library, parsed from a whole text.
struct Shout {
    std::string text;
};

}  // namespace

template <>
Shout moxtel::string::parse<Shout>(const std::string& s) {
    return Shout{s + "!"};
}

namespace {

using moxtel::string::parse;
using moxtel::string::ParseImpl;

template <class T>
struct Row {
    const char* text;
    T value;
    std::size_t used;
};

/// The bits of a real, so that the two zeros and values one step apart are told from each other;
/// all that is not a number counts as one.
template <class T>
auto bitsOf(T value) {
    if constexpr (std::is_same_v<T, float>)
        return std::isnan(value) ? 0x7FC00000U : std::bit_cast<std::uint32_t>(value);
    else if constexpr (std::is_same_v<T, double>)
        return std::isnan(value) ? 0x7FF8000000000000U : std::bit_cast<std::uint64_t>(value);
    else
        return value;
}

/// Parses every text twice, the second time onto a running count.
template <class T>
void expectRows(const std::vector<Row<T>>& rows) {
    for (const Row<T>& row : rows) {
        SCOPED_TRACE(std::string("text: \"") + row.text + "\"");
        std::size_t used = 0;
        const T value = parse<T>(row.text, used);
        EXPECT_EQ(bitsOf(value), bitsOf(row.value)) << value << " for " << row.value;
        EXPECT_EQ(used, row.used);
        std::size_t running = 70;
        EXPECT_EQ(bitsOf(parse<T>(row.text, running)), bitsOf(row.value));
        EXPECT_EQ(running, 70 + row.used);
        EXPECT_EQ(bitsOf(parse<T>(std::string(row.text))), bitsOf(row.value));
    }
}

/// What every integer type makes of these.
template <class T>
void expectCommonIntegers() {
    expectRows<T>({
        {"", 0, 0},    {"0", 0, 1},      {"-0", 0, 2},   {"7", 7, 1},     {"+7", 7, 2},
        {"12", 12, 2}, {"00012", 12, 5}, {"12x", 12, 2}, {"12 ", 12, 2},  {"1.5", 1, 1},
        {"1e3", 1, 1}, {"0x1F", 0, 1},   {"+", 0, 1},    {"-", 0, 1},     {"+x", 0, 1},
        {"-x", 0, 1},  {"--1", 0, 1},    {"+-1", 0, 1},  {" 1", 0, 0},    {"x1", 0, 0},
        {"/", 0, 0},   {":", 0, 0},      {"\xB2", 0, 0}, {"1\xB2", 1, 1},
    });
}

template <class T>
T power(int exponent);

/// Powers of ten the long way: as many products as the exponent says.
template <>
double power<double>(int exponent) {
    double factor = 1;
    for (; exponent > 0; --exponent)
        factor = factor * 10;
    for (; exponent < 0; ++exponent)
        factor = factor * 0.1;
    return factor;
}

template <>
float power<float>(int exponent) {
    float factor = 1;
    for (; exponent > 0; --exponent)
        factor = factor * 10.0F;
    for (; exponent < 0; ++exponent)
        factor = static_cast<float>(static_cast<double>(factor) * 0.1);
    return factor;
}

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr float INF_F = std::numeric_limits<float>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

// The weights of the digits behind the point.
const double W1 = 0.1;
const double W2 = W1 * 0.1;
const double W3 = W2 * 0.1;
const float W1_F = 0.1F;
const float W2_F = static_cast<float>(static_cast<double>(W1_F) * 0.1);
const float W3_F = static_cast<float>(static_cast<double>(W2_F) * 0.1);

TEST(ParseInteger, EveryTypeReadsSignDigitsAndIgnoresTheRest) {
    expectCommonIntegers<short>();
    expectCommonIntegers<unsigned short>();
    expectCommonIntegers<int>();
    expectCommonIntegers<unsigned int>();
    expectCommonIntegers<long>();
    expectCommonIntegers<unsigned long>();
    expectCommonIntegers<long long>();
    expectCommonIntegers<unsigned long long>();
}

TEST(ParseInteger, NegativeIntTakesThreeCharacters) {
    expectRows<int>({{"-12", -12, 3}});
}

TEST(ParseInteger, PlusSignIsSkipped) {
    expectRows<int>({{"+7", 7, 2}});
}

TEST(ParseInteger, IntOverflowGivesZeroAndUsesNothing) {
    expectRows<int>({{"2147483648", 0, 0}});
}

TEST(ParseInteger, MinusOneAsUnsignedIntWrapsToTheLargestValue) {
    expectRows<unsigned int>({{"-1", 4294967295U, 2}});
}

TEST(ParseInteger, UnsignedLongOfAStringIgnoresWhatFollows) {
    EXPECT_EQ(parse<unsigned long>(std::string("42 apples")), 42U);
}

// An overflow shows only where the value wraps below what it was before the digit: the last rows of
// each table wrap to something larger.

TEST(ParseInteger, ShortLimits) {
    expectRows<short>({
        {"32767", 32767, 5},
        {"-32767", -32767, 6},
        {"32768", 0, 0},
        {"-32768", 0, 0},
        {"+32768", 0, 0},
        {"65535", 0, 0},
        {"65536", 0, 0},
        {"327670", 0, 0},
        {"800000", 0, 0},  // 14464 * 10 wraps to 13568
        {"80000", 14464, 5},
        {"-80000", -14464, 6},
        {"80000x", 14464, 5},
    });
}

TEST(ParseInteger, UnsignedShortLimits) {
    expectRows<unsigned short>({
        {"65535", 65535, 5},
        {"-65535", 1, 6},
        {"-5", 65531, 2},
        {"65536", 0, 0},
        {"-65536", 0, 0},
        {"70000", 0, 0},  // 4464, less than 7000
        {"655350", 0, 0},
        {"80000", 14464, 5},
        {"99999", 34463, 5},
        {"-99999", 31073, 6},
    });
}

TEST(ParseInteger, IntLimits) {
    expectRows<int>({
        {"2147483647", 2147483647, 10},
        {"-2147483647", -2147483647, 11},
        {"-2147483648", 0, 0},
        {"4294967295", 0, 0},
        {"4294967296", 0, 0},
        {"21474836470", 0, 0},
        {"5000000000", 705032704, 10},
        {"-5000000000", -705032704, 11},
        {"9999999999", 1410065407, 10},
    });
}

TEST(ParseInteger, UnsignedIntLimits) {
    expectRows<unsigned int>({
        {"4294967295", 4294967295U, 10},
        {"-4294967295", 1, 11},
        {"-5", 4294967291U, 2},
        {"4294967296", 0, 0},
        {"42949672960", 0, 0},
        {"42949672950", 0, 0},
        {"5000000000", 705032704U, 10},
        {"9999999999", 1410065407U, 10},
    });
}

template <class T>
void expectSignedEightByteLimits() {
    static_assert(sizeof(T) == 8);
    expectRows<T>({
        {"9223372036854775807", std::numeric_limits<T>::max(), 19},
        {"-9223372036854775807", -std::numeric_limits<T>::max(), 20},
        {"9223372036854775808", 0, 0},
        {"-9223372036854775808", 0, 0},
        {"18446744073709551616", 0, 0},
        {"4294967296", 4294967296, 10},
        {"25000000000000000000", 6553255926290448384, 20},
        {"-25000000000000000000", -6553255926290448384, 21},
    });
}

TEST(ParseInteger, Int64Limits) {
    expectSignedEightByteLimits<std::int64_t>();
}

TEST(ParseInteger, LongLongLimits) {
    expectSignedEightByteLimits<long long>();
}

template <class T>
void expectUnsignedEightByteLimits() {
    static_assert(sizeof(T) == 8);
    expectRows<T>({
        {"18446744073709551615", std::numeric_limits<T>::max(), 20},
        {"-1", std::numeric_limits<T>::max(), 2},
        {"-18446744073709551615", 1, 21},
        {"18446744073709551616", 0, 0},
        {"9223372036854775808", 9223372036854775808U, 19},
        {"25000000000000000000", 6553255926290448384U, 20},
    });
}

TEST(ParseInteger, UnsignedInt64Limits) {
    expectUnsignedEightByteLimits<std::uint64_t>();
}

TEST(ParseInteger, UnsignedLongLongLimits) {
    expectUnsignedEightByteLimits<unsigned long long>();
}

TEST(ParseReal, DigitsPointAndExponent) {
    expectRows<double>({{"1.25e2", 125.0, 6}});
}

TEST(ParseReal, FractionWithoutIntegerPart) {
    expectRows<double>({{".5", 0.5, 2}});
    expectRows<float>({{".5", 0.5F, 2}});
}

TEST(ParseReal, ExponentAloneMultipliesOne) {
    expectRows<double>({{"-e2", -100.0, 3}, {"e3", 1000.0, 2}, {"E3", 1000.0, 2}});
}

TEST(ParseReal, WordsWithAnInitialIAreInfinity) {
    expectRows<double>({
        {"inf", INF, 3},
        {"Infinity", INF, 8},
        {"iguana", INF, 6},
        {"i", INF, 1},
        {"I", INF, 1},
        {"inf 12", INF, 6},
        {"+inf", INF, 4},
        {"-INF", -INF, 4},
        {"-iguana", -INF, 7},
    });
    expectRows<float>({{"iguana", INF_F, 6}, {"-INF", -INF_F, 4}});
}

TEST(ParseReal, NanIsNotANumber) {
    expectRows<double>({
        {"nan", NOT_A_NUMBER, 3},
        {"NaN", NOT_A_NUMBER, 3},
        {"NAN", NOT_A_NUMBER, 3},
        {"+nan", NOT_A_NUMBER, 4},
        {"-nan", NOT_A_NUMBER, 4},
    });
    expectRows<float>({{"nan", std::numeric_limits<float>::quiet_NaN(), 3}});
}

TEST(ParseReal, SignOfNanIsIgnored) {
    EXPECT_FALSE(std::signbit(parse<double>(std::string("-nan"))));
    EXPECT_FALSE(std::signbit(parse<float>(std::string("-nan"))));
}

TEST(ParseReal, NanoIsZeroWithNothingUsed) {
    expectRows<double>({{"nano", 0.0, 0}});
}

TEST(ParseReal, OtherTextsAreZeroWithOnlyTheSignUsed) {
    expectRows<double>({
        {"", 0.0, 0},
        {"+", 0.0, 1},
        {"-", 0.0, 1},
        {"x", 0.0, 0},
        {"-x", 0.0, 1},
        {"n", 0.0, 0},
        {"na", 0.0, 0},
        {"nan ", 0.0, 0},
        {"-nano", 0.0, 1},
        {"--1", 0.0, 1},
        {"+-1", 0.0, 1},
        {" 1", 0.0, 0},
        {",5", 0.0, 0},
        {"\xE9", 0.0, 0},
    });
}

TEST(ParseReal, PointAtTheEndOfTheTextGivesZeroWithNothingUsed) {
    expectRows<double>({{"5.", 0.0, 0}, {"-5.", 0.0, 0}, {".", 0.0, 0}, {"-.", 0.0, 0}});
}

TEST(ParseReal, PointBeforeAnExponentNeedsNoDigits) {
    expectRows<double>({{"5.e1", 50.0, 4}, {".e2", 0.0, 3}, {"-.e2", -0.0, 4}});
}

TEST(ParseReal, PointBeforeOtherTextIsUsed) {
    expectRows<double>({{"5.x", 5.0, 2}, {"5. ", 5.0, 2}, {"5..", 5.0, 2}, {".x", 0.0, 1}});
}

TEST(ParseReal, ExponentMarkAtTheEndOfTheTextGivesZeroWithNothingUsed) {
    expectRows<double>({
        {"5e", 0.0, 0},
        {"5E", 0.0, 0},
        {"-5e", 0.0, 0},
        {"1.5e", 0.0, 0},
        {"5.e", 0.0, 0},
        {".e", 0.0, 0},
        {"e", 0.0, 0},
        {"-E", 0.0, 0},
    });
}

TEST(ParseReal, ExponentWithoutDigitsIsZero) {
    expectRows<double>({
        {"5e+", 5.0, 3},
        {"5e-", 5.0, 3},
        {"5e+x", 5.0, 3},
        {"5ex", 5.0, 2},
        {"5e ", 5.0, 2},
        {"5ee", 5.0, 2},
        {"e-", 1.0, 2},
        {"ex", 1.0, 1},
        {"-elephant", -1.0, 2},
        {"5e--1", 5.0, 3},
    });
}

TEST(ParseReal, WhatFollowsTheNumberIsNotUsed) {
    expectRows<double>({
        {"12abc", 12.0, 2},
        {"1,5", 1.0, 1},
        {"1.5.5", 1.5, 3},
        {"1e2e3", 100.0, 3},
        {"1e2.5", 100.0, 3},
        {"0x10", 0.0, 1},
        {"1-1", 1.0, 1},
        {"1inf", 1.0, 1},
    });
}

TEST(ParseReal, SignIsAppliedToZero) {
    expectRows<double>({{"0", 0.0, 1}, {"-0", -0.0, 2}, {"-0.0", -0.0, 4}, {"-0e5", -0.0, 4}});
}

TEST(ParseReal, FloatDigitsBehindThePointAreWeightedByProductsFormedInDouble) {
    struct FloatRow {
        const char* text;
        float value;
        float nearest;
        bool isNearest;
    };
    const FloatRow rows[] = {
        {"0.1", W1_F, 0.1F, true},
        {"0.3", 3.0F * W1_F, 0.3F, true},
        {"0.7", 7.0F * W1_F, 0.7F, true},
        {"0.9", 9.0F * W1_F, 0.9F, false},
        {"0.01", W2_F, 0.01F, true},
        {"0.05", 5.0F * W2_F, 0.05F, false},
        {"0.12", 1.0F * W1_F + 2.0F * W2_F, 0.12F, false},
        {"0.25", 2.0F * W1_F + 5.0F * W2_F, 0.25F, true},
        {"0.35", 3.0F * W1_F + 5.0F * W2_F, 0.35F, false},
        {"0.45", 4.0F * W1_F + 5.0F * W2_F, 0.45F, true},  // other bits without a rounded product
        {"0.65", 6.0F * W1_F + 5.0F * W2_F, 0.65F, false},
        {"0.001", W3_F, 0.001F, false},
    };
    for (const FloatRow& row : rows) {
        expectRows<float>({{row.text, row.value, std::string(row.text).size()}});
        EXPECT_EQ(row.value == row.nearest, row.isNearest) << row.text;
    }
    // In float alone the weight of the second digit would be another one.
    EXPECT_NE(W2_F, W1_F * 0.1F);
}

TEST(ParseReal, DoubleDigitsBehindThePointAreSummedByWeight) {
    struct DoubleRow {
        const char* text;
        double value;
        double nearest;
        bool isNearest;
    };
    const DoubleRow rows[] = {
        {"0.1", W1, 0.1, true},
        {"0.3", 3 * W1, 0.3, false},
        {"0.6", 6 * W1, 0.6, false},
        {"0.9", 9 * W1, 0.9, true},
        {"0.01", W2, 0.01, false},
        {"0.05", 5 * W2, 0.05, false},
        {"0.12", 1 * W1 + 2 * W2, 0.12, false},
        {"0.25", 2 * W1 + 5 * W2, 0.25, true},
        {"0.35", 3 * W1 + 5 * W2, 0.35, false},
        {"0.59", 5 * W1 + 9 * W2, 0.59, false},  // other bits without a rounded product
        {"0.500", 5 * W1, 0.5, true},
        {"7.125", 7 + (1 * W1 + 2 * W2 + 5 * W3), 7.125, true},
    };
    for (const DoubleRow& row : rows) {
        expectRows<double>({{row.text, row.value, std::string(row.text).size()}});
        EXPECT_EQ(row.value == row.nearest, row.isNearest) << row.text;
    }
}

TEST(ParseReal, FractionIsSummedBeforeItIsAddedToTheInteger) {
    const float fraction = 1.0F * W1_F + 7.0F * W2_F;
    ASSERT_NE(1.0F + fraction, (1.0F + 1.0F * W1_F) + 7.0F * W2_F);
    expectRows<float>({{"1.17", 1.0F + fraction, 4}});
}

TEST(ParseReal, IntegerDigitsAreAccumulatedInTheirType) {
    expectRows<float>({
        {"16777216", 16777216.0F, 8},
        {"16777217", 16777216.0F, 8},
        {"16777219", 16777220.0F, 8},
        // 10000001 * 10 is rounded to 100000008, a step of 8, and adding 2 does not change it.
        {"100000012", 100000008.0F, 9},
    });
    EXPECT_NE(100000008.0F, 100000012.0F);
    expectRows<double>({
        {"9007199254740992", 9007199254740992.0, 16},
        {"9007199254740993", 9007199254740992.0, 16},
        // With the digit before the last, 7562473810857620 * 10 lies half way between two values 16
        // apart and is rounded down by 8, which the last one makes a whole step of 128.
        {"756247381085762037", 756247381085761920.0, 18},
    });
    EXPECT_EQ(756247381085762037.0, 756247381085762048.0);
}

TEST(ParseReal, LongTextsOverflowToInfinity) {
    const std::string digits = "1" + std::string(400, '0');
    expectRows<double>({{digits.c_str(), INF, 401}});
    expectRows<float>({{digits.c_str(), INF_F, 401}});
    const std::string negative = "-" + digits + ".5e-400x";
    std::size_t used = 0;
    EXPECT_TRUE(std::isnan(parse<double>(negative.c_str(), used)));
    EXPECT_EQ(used, negative.size() - 1);
}

TEST(ParseReal, LongFractionsVanishBeyondTheLeastValue) {
    const std::string zeros = "0." + std::string(400, '0') + "9";
    expectRows<double>({{zeros.c_str(), 0.0, 403}});
    expectRows<float>({{zeros.c_str(), 0.0F, 403}});
}

template <class T>
void expectPowers(int from, int to) {
    for (int exponent = from; exponent <= to; ++exponent) {
        const std::string text = "1e" + std::to_string(exponent);
        expectRows<T>({{text.c_str(), power<T>(exponent), text.size()}});
    }
}

TEST(ParseReal, PowersOfTenAreRepeatedProducts) {
    expectPowers<double>(-400, 400);
    expectPowers<float>(-400, 400);
}

TEST(ParseReal, PowersOfTenAreNotTheNearestValues) {
    ASSERT_NE(power<double>(-2), 1e-2);
    ASSERT_NE(power<double>(25), 1e25);
    expectRows<double>({{"1e-2", 0.1 * 0.1, 4}, {"35e-2", 35 * (0.1 * 0.1), 5}});
}

TEST(ParseReal, HugeExponentsReachInfinityOrZero) {
    expectRows<double>({
        {"1e308", power<double>(308), 5},
        {"1e309", INF, 5},
        {"-1e309", -INF, 6},
        {"1e2000000000", INF, 12},
        {"-1e2000000000", -INF, 13},
        {"1e2147483647", INF, 12},
        {"1e-324", 0.0, 6},
        {"1e-2000000000", 0.0, 13},
        {"-1e-2147483647", -0.0, 14},
        {"0e2000000000", NOT_A_NUMBER, 12},
        {"e2000000000", INF, 11},
    });
    expectRows<float>({
        {"1e38", power<float>(38), 4},
        {"1e39", INF_F, 4},
        {"1e-46", 0.0F, 5},
        {"1e2000000000", INF_F, 12},
        {"1e-2000000000", 0.0F, 13},
    });
}

TEST(ParseReal, OverflowingExponentIsLeftUnused) {
    expectRows<double>({
        {"3e2147483648", 3.0, 2},
        {"3e-2147483648", 3.0, 2},
        {"3e99999999999", 3.0, 2},
        {"3e5000000000", INF, 12},  // wraps to 705032704, which goes unnoticed
    });
}

TEST(ParseBool, WholeWordsInAnyCase) {
    expectRows<bool>({
        {"true", true, 4},
        {"TRUE", true, 4},
        {"True", true, 4},
        {"yes", true, 3},
        {"YES", true, 3},
        {"false", false, 5},
        {"FALSE", false, 5},
        {"fAlSe", false, 5},
        {"no", false, 2},
        {"NO", false, 2},
        {"No", false, 2},
    });
}

TEST(ParseBool, YesInCapitalsUsesThree) {
    expectRows<bool>({{"YES", true, 3}});
}

TEST(ParseBool, NoUsesTwo) {
    expectRows<bool>({{"no", false, 2}});
}

TEST(ParseBool, NopeUsesItsFirstLetter) {
    expectRows<bool>({{"nope", false, 1}});
}

TEST(ParseBool, OneIsTrueWithNothingUsed) {
    expectRows<bool>({{"1", true, 0}});
}

TEST(ParseBool, FirstLetterCountsWhereTheTextIsNoWord) {
    expectRows<bool>({
        {"t", true, 1},
        {"T", true, 1},
        {"y", true, 1},
        {"Y", true, 1},
        {"f", false, 1},
        {"F", false, 1},
        {"n", false, 1},
        {"N", false, 1},
        {"true ", true, 1},
        {"truth", true, 1},
        {"tru", true, 1},
        {"yesterday", true, 1},
        {"ye", true, 1},
        {"false\t", false, 1},
        {"fals", false, 1},
        {"no ", false, 1},
        {"tru\xC5", true, 1},
    });
}

TEST(ParseBool, OtherTextsAreTrueWithNothingUsed) {
    expectRows<bool>({
        {"", true, 0},
        {"0", true, 0},
        {" false", true, 0},
        {"-no", true, 0},
        {"off", true, 0},
        {"\xE6", true, 0},
    });
}

TEST(Parse, NulEndsTheTextOfAString) {
    using namespace std::string_literals;
    EXPECT_EQ(parse<int>("4\0002"s), 4);
    EXPECT_EQ(parse<double>("5\000.5"s), 5.0);
    EXPECT_EQ(parse<double>("5.\0005"s), 0.0);
    EXPECT_FALSE(parse<bool>("no\0pe"s));
    EXPECT_EQ(parse<int>("\0001"s), 0);
}

TEST(Parse, ParserNamesItsValueType) {
    static_assert(std::is_same_v<ParseImpl<bool>::ValueType, bool>);
    static_assert(std::is_same_v<ParseImpl<float>::ValueType, float>);
    static_assert(std::is_same_v<ParseImpl<unsigned short>::ValueType, unsigned short>);
    std::size_t used = 1;
    EXPECT_EQ(ParseImpl<long long>::parse("-40 ", used), -40);
    EXPECT_EQ(used, 4U);
}

TEST(Parse, AnotherLibraryCanSpecialiseTheWholeTextForm) {
    EXPECT_EQ(parse<Shout>(std::string("bread")).text, "bread!");
}

}  // namespace
