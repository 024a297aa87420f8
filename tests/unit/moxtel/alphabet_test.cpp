#include <moxtel/alphabet.hpp>

#include <string>

#include <gtest/gtest.h>

namespace {

using moxtel::mem::Array;
using moxtel::string::Alphabet;
using namespace std::string_literals;

constexpr std::size_t NO_INDEX = static_cast<std::size_t>(-1);

/// Every character there is.
std::string allCharacters() {
    std::string all;
    for (int code = -128; code < 128; ++code)
        all += static_cast<char>(code);
    return all;
}

std::string matchedBy(const Alphabet& alphabet) {
    std::string matched;
    for (const char c : allCharacters())
        if (alphabet.match(c))
            matched += c;
    return matched;
}

/// Holds the class against its characters in ascending order of signed code.
void expectHolds(const Alphabet& alphabet, const std::string& expected) {
    EXPECT_EQ(matchedBy(alphabet), expected);
    EXPECT_EQ(alphabet.empty(), expected.empty());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(alphabet[i], expected[i]) << i;
}

Array<char> arrayOf(const std::string& characters) {
    Array<char> array(characters.size());
    array.copyFrom(characters.data(), characters.size());
    return array;
}

TEST(Alphabet, TextIsSortedAndRepeatsVanish) {
    const Alphabet alphabet("cabba", false);
    expectHolds(alphabet, "abc");
    EXPECT_EQ(alphabet[0], 'a');
    EXPECT_TRUE(alphabet.match('b'));
    EXPECT_FALSE(alphabet.match('d'));
}

TEST(Alphabet, HyphenStandsForItself) {
    expectHolds(Alphabet("-a", false), "-a");
    expectHolds(Alphabet("a-z", false), "-az");
}

TEST(Alphabet, CaretStandsForItself) {
    expectHolds(Alphabet("^a", false), "^a");
}

TEST(Alphabet, OrderIsThatOfSignedCharacters) {
    expectHolds(Alphabet("\x7F\xFF\x01\x80", false), "\x80\xFF\x01\x7F");
    expectHolds(Alphabet("a\xE4"s),
                "\xE4"
                "a");
}

TEST(Alphabet, EmptyClassMatchesNothing) {
    expectHolds(Alphabet("", false), "");
    expectHolds(Alphabet("", true), "");
    expectHolds(Alphabet(""s), "");
    expectHolds(Alphabet(Array<char>()), "");
}

TEST(Alphabet, PreparedTextIsTakenAsItIs) {
    expectHolds(Alphabet("abc", true), "abc");
    const Alphabet unsorted("caa", true);
    EXPECT_EQ(unsorted[0], 'c');
    EXPECT_EQ(unsorted[1], 'a');
    EXPECT_EQ(unsorted[2], 'a');
}

TEST(Alphabet, StringEndsAtItsFirstNul) {
    expectHolds(Alphabet("ba\0c"s), "ab");
}

TEST(Alphabet, ArrayMayHoldNul) {
    expectHolds(Alphabet(arrayOf("b\0ab\xFF"s)), "\xFF\0ab"s);
}

TEST(Alphabet, ArrayIsNotChangedAndNotShared) {
    Array<char> array = arrayOf("ba");
    const Alphabet alphabet(array);
    EXPECT_EQ(array[0], 'b');
    array[0] = 'z';
    expectHolds(alphabet, "ab");
}

TEST(Alphabet, SubsetsOfEverySizeMatchTheirCharactersOnly) {
    const std::string characters = "\x80\xFF\x01 0Az\x7F";
    for (unsigned subset = 0; subset < 256; ++subset) {
        std::string chosen;
        for (std::size_t bit = 0; bit < characters.size(); ++bit)
            if ((subset >> bit & 1U) != 0)
                chosen += characters[bit];
        const std::string backwards(chosen.rbegin(), chosen.rend());
        expectHolds(Alphabet(backwards), chosen);
        expectHolds(Alphabet(chosen.c_str(), true), chosen);
    }
}

TEST(Alphabet, ClassOfAllCharactersMatchesAll) {
    expectHolds(Alphabet(arrayOf(allCharacters())), allCharacters());
}

TEST(Alphabet, CopiesHoldTheSameAndOutliveTheirOrigin) {
    Alphabet assigned("x", false);
    {
        const Alphabet origin("ba", false);
        Alphabet copy(origin);
        expectHolds(copy, "ab");
        copy = Alphabet("y", false);
        expectHolds(origin, "ab");
        assigned = origin;
    }
    expectHolds(assigned, "ab");
}

TEST(Alphabet, WhitespaceIsBlankTabAndTheLineEnds) {
    expectHolds(Alphabet::WHITESPACE, "\t\n\r ");
}

TEST(NextMismatch, TextIsScannedFromTheIndex) {
    const Alphabet digits("0123456789", true);
    const char* text = "12a4b";
    EXPECT_EQ(digits.nextMismatch(text, 0), 2U);
    EXPECT_EQ(digits.nextMismatch(text, 2), 2U);
    EXPECT_EQ(digits.nextMismatch(text, 3), 4U);
    EXPECT_EQ(digits.nextMismatch(text, 5), NO_INDEX);
    EXPECT_EQ(digits.nextMismatch("123", 0), NO_INDEX);
    EXPECT_EQ(digits.nextMismatch("12\xB2", 1), 2U);
    EXPECT_EQ(digits.nextMismatch("", 0), NO_INDEX);
}

TEST(NextMismatch, TextEndsAtItsTerminatorThoughTheClassHoldsNul) {
    EXPECT_EQ(Alphabet(arrayOf("a\0"s)).nextMismatch("aa\0b", 0), NO_INDEX);
}

TEST(NextMismatch, StringGivesZeroOrNoPositionOnly) {
    const Alphabet digits("0123456789", true);
    EXPECT_EQ(digits.nextMismatch("12a4"s, 0), 0U);
    EXPECT_EQ(digits.nextMismatch("123a"s, 0), 0U);
    EXPECT_EQ(digits.nextMismatch("a123"s, 0), 0U);
    EXPECT_EQ(digits.nextMismatch("1234"s, 0), NO_INDEX);
    EXPECT_EQ(digits.nextMismatch(""s, 0), NO_INDEX);
}

TEST(NextMismatch, StringIsScannedFromItsStartWhateverTheIndex) {
    const Alphabet digits("0123456789", true);
    EXPECT_EQ(digits.nextMismatch("a123"s, 1), 0U);
    EXPECT_EQ(digits.nextMismatch("a123"s, 99), 0U);
    EXPECT_EQ(digits.nextMismatch("1234"s, 99), NO_INDEX);
}

TEST(NextMismatch, StringIsScannedPastNul) {
    const Alphabet digits("0123456789", true);
    EXPECT_EQ(digits.nextMismatch("12\0"s, 0), 0U);
    EXPECT_EQ(Alphabet(arrayOf("1\0"s)).nextMismatch("1\0001"s, 0), NO_INDEX);
}

}  // namespace
