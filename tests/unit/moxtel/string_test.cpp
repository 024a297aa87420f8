#include <moxtel/string.hpp>

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using moxtel::string::Alphabet;
using moxtel::string::indexOf;
using moxtel::string::lastIndexOf;
using moxtel::string::ltrim;
using moxtel::string::rtrim;
using moxtel::string::startsWith;
using moxtel::string::startsWithAny;
using moxtel::string::strcmpi;
using moxtel::string::substrRange;
using moxtel::string::trim;
using namespace std::string_literals;

constexpr std::size_t NPOS = static_cast<std::size_t>(-1);

struct TrimRow {
    std::string text;
    std::string left;   ///< After `ltrim`.
    std::string right;  ///< After `rtrim`.
    std::string both;   ///< After `trim`.
};

/// Holds every form against the row: the default, null, the whitespace written out as a list, and
/// the class.
void expectTrims(const TrimRow& row) {
    SCOPED_TRACE("text: \"" + row.text + "\"");
    const char* list = " \t\r\n";
    const Alphabet& whitespace = Alphabet::WHITESPACE;
    EXPECT_EQ(ltrim(row.text), row.left);
    EXPECT_EQ(ltrim(row.text, nullptr), row.left);
    EXPECT_EQ(ltrim(row.text, list), row.left);
    EXPECT_EQ(ltrim(row.text, whitespace), row.left);
    EXPECT_EQ(rtrim(row.text), row.right);
    EXPECT_EQ(rtrim(row.text, nullptr), row.right);
    EXPECT_EQ(rtrim(row.text, list), row.right);
    EXPECT_EQ(rtrim(row.text, whitespace), row.right);
    EXPECT_EQ(trim(row.text), row.both);
    EXPECT_EQ(trim(row.text, nullptr), row.both);
    EXPECT_EQ(trim(row.text, list), row.both);
    EXPECT_EQ(trim(row.text, whitespace), row.both);
}

TEST(Trim, OneCharacterCoreTrimsToNothing) {
    expectTrims({" x ", "x ", " x", ""});
    expectTrims({"x", "x", "x", ""});
    expectTrims({" x", "x", " x", ""});
    expectTrims({"x ", "x ", "x", ""});
}

TEST(Trim, TwoCharacterCoreIsKept) {
    expectTrims({" xy ", "xy ", " xy", "xy"});
}

TEST(Trim, BlanksTrimToNothing) {
    expectTrims({" ", "", "", ""});
    expectTrims({"  ", "", "", ""});
    expectTrims({" \t\r\n", "", "", ""});
}

TEST(Trim, EmptyTextStaysEmpty) {
    expectTrims({"", "", "", ""});
}

TEST(Trim, OneCharacterCoreIsKeptOnOneSide) {
    EXPECT_EQ(ltrim("  a"), "a");
    EXPECT_EQ(rtrim("a  "), "a");
    EXPECT_EQ(ltrim("a"), "a");
    EXPECT_EQ(rtrim("a"), "a");
}

TEST(Trim, CoresOfEveryLengthBetweenBlanks) {
    for (const std::string& core : {""s, "x"s, "xy"s, "x y"s, "xyz"s, "a\tb\nc"s}) {
        for (const std::string& before : {""s, " "s, "\t\n"s, " \r \n"s}) {
            for (const std::string& after : {""s, " "s, "\r\n"s, "\t\t "s}) {
                const std::string left = core.empty() ? "" : core + after;
                const std::string right = core.empty() ? "" : before + core;
                std::string text = before;
                text.append(core).append(after);
                expectTrims({text, left, right, core.size() == 1 ? "" : core});
            }
        }
    }
}

TEST(Trim, OtherCharactersAreNoWhitespace) {
    expectTrims({"\v\f", "\v\f", "\v\f", "\v\f"});
    expectTrims({"\xA0x\xA0", "\xA0x\xA0", "\xA0x\xA0", "\xA0x\xA0"});
    expectTrims({"\0 "s, "\0 "s, "\0"s, ""});
    expectTrims({" \0\0 "s, "\0\0 "s, " \0\0"s, "\0\0"s});
}

TEST(Trim, ListHoldsWhatIsTrimmed) {
    EXPECT_EQ(ltrim("--a-b--", "-"), "a-b--");
    EXPECT_EQ(rtrim("--a-b--", "-"), "--a-b");
    EXPECT_EQ(trim("--a-b--", "-"), "a-b");
    EXPECT_EQ(trim("-=-a=b-", "=-="), "a=b");
    EXPECT_EQ(trim("--a--", "-"), "");
    EXPECT_EQ(trim(" ab ", "-"), " ab ");
    EXPECT_EQ(trim("\xFF\x80xy\x80", "\x80\xFF"), "xy");
}

TEST(Trim, EmptyListTrimsNothing) {
    EXPECT_EQ(ltrim(" a ", ""), " a ");
    EXPECT_EQ(rtrim(" a ", ""), " a ");
    EXPECT_EQ(trim(" a ", ""), " a ");
    EXPECT_EQ(trim("a", ""), "");
}

TEST(Trim, ListDoesNotHoldItsTerminator) {
    const std::string text = "\0-ab-\0"s;
    EXPECT_EQ(ltrim(text, "-"), text);
    EXPECT_EQ(rtrim(text, "-"), text);
    EXPECT_EQ(trim(text, "-"), text);
}

TEST(Trim, ClassHoldsWhatIsTrimmed) {
    moxtel::mem::Array<char> array(2);
    array[0] = '-';
    const Alphabet dashAndNul(array);
    const std::string text = "\0-ab-\0"s;
    EXPECT_EQ(ltrim(text, dashAndNul), "ab-\0"s);
    EXPECT_EQ(rtrim(text, dashAndNul), "\0-ab"s);
    EXPECT_EQ(trim(text, dashAndNul), "ab");
    EXPECT_EQ(trim("-a-", dashAndNul), "");
    EXPECT_EQ(trim(" ab ", Alphabet("", false)), " ab ");
}

TEST(SubstrRange, CharactersBetweenTwoIndices) {
    struct Row {
        std::size_t lo;
        std::size_t hi;
        const char* expected;
    };
    const Row rows[] = {
        {0, 3, "abc"},    {0, 1, "a"},      {1, 2, "b"}, {2, 3, "c"},  {1, 3, "bc"},
        {0, 0, ""},       {3, 3, ""},       {9, 9, ""},  {3, 5, ""},   {1, 99, "bc"},
        {0, NPOS, "abc"}, {NPOS, NPOS, ""}, {2, 1, "c"}, {1, 0, "bc"}, {3, 0, ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(substrRange("abc", row.lo, row.hi), row.expected) << row.lo << ' ' << row.hi;
    EXPECT_EQ(substrRange("a\0b"s, 1, 3), "\0b"s);
}

TEST(SubstrRange, StartBeyondTheEndIsOutOfRange) {
    EXPECT_THROW(substrRange("abc", 4, 5), std::out_of_range);
    EXPECT_THROW(substrRange("abc", 4, 1), std::out_of_range);
    EXPECT_THROW(substrRange("", 1, 0), std::out_of_range);
}

TEST(IndexOf, FirstIndexAtOrAfterTheStart) {
    const char* text = "abcab";
    EXPECT_EQ(indexOf(text, 'a', 0), 0U);
    EXPECT_EQ(indexOf(text, 'a', 1), 3U);
    EXPECT_EQ(indexOf(text, 'a', 3), 3U);
    EXPECT_EQ(indexOf(text, 'a', 4), NPOS);
    EXPECT_EQ(indexOf(text, 'b', 4), 4U);
    EXPECT_EQ(indexOf(text, 'x', 0), NPOS);
    EXPECT_EQ(indexOf("", 'a', 0), NPOS);
    EXPECT_EQ(indexOf("x\xE4", '\xE4', 0), 1U);
}

TEST(IndexOf, StartAtOrBeyondTheTerminatorFindsNothing) {
    EXPECT_EQ(indexOf("ab\0b", 'b', 2), NPOS);
    EXPECT_EQ(indexOf("ab\0b", 'b', 3), NPOS);
    EXPECT_EQ(indexOf("ab", 'b', NPOS), NPOS);
}

TEST(IndexOf, NulIsNeverFound) {
    EXPECT_EQ(indexOf("ab", '\0', 0), NPOS);
    EXPECT_EQ(indexOf("ab", '\0', 2), NPOS);
    EXPECT_EQ(indexOf("", '\0', 0), NPOS);
}

TEST(LastIndexOf, LastOccurrenceRegardlessOfTheStart) {
    const std::string text = "ab--ab";
    for (const std::size_t start : {std::size_t{0}, std::size_t{3}, std::size_t{6}, NPOS}) {
        EXPECT_EQ(lastIndexOf(text, "ab", start), 4U) << start;
        EXPECT_EQ(lastIndexOf(text, "-", start), 3U) << start;
        EXPECT_EQ(lastIndexOf(text, text, start), 0U) << start;
        EXPECT_EQ(lastIndexOf(text, "ba", start), NPOS) << start;
        EXPECT_EQ(lastIndexOf(text, "", start), 6U) << start;
        EXPECT_EQ(lastIndexOf("", "a", start), NPOS) << start;
        EXPECT_EQ(lastIndexOf("", "", start), 0U) << start;
    }
    EXPECT_EQ(lastIndexOf("aaa", "aa", 0), 1U);
    EXPECT_EQ(lastIndexOf("a\0a"s, "\0a"s, 0), 1U);
}

TEST(Strcmpi, DifferenceOfTheFirstCharactersThatDiffer) {
    struct Row {
        const char* a;
        const char* b;
        int expected;
    };
    const Row rows[] = {
        {"", "", 0},
        {"abc", "abc", 0},
        {"aBc", "AbC", 0},
        {"1-2", "1-2", 0},
        {"a", "b", 'A' - 'B'},
        {"B", "a", 'B' - 'A'},
        {"ab", "aX", 'B' - 'X'},
        {"a_", "ab", '_' - 'B'},  // '_' lies between the upper and the lower case
        {"a[", "aa", '[' - 'A'},
        {"@", "`", '@' - '`'},
        {"\xE4", "\xE4", 0},
        {"\xE4", "\xC4", 0xE4 - 0xC4},
        {"\xE4", "a", -28 - 'A'},
        {"a", "\xFF", 'A' + 1},
    };
    for (const Row& row : rows)
        EXPECT_EQ(strcmpi(row.a, row.b), row.expected) << row.a << ' ' << row.b;
}

TEST(Strcmpi, WhereOneTextEndsTheRawCharacterCounts) {
    EXPECT_EQ(strcmpi("ab", "a"), 'b');
    EXPECT_EQ(strcmpi("aB", "a"), 'B');
    EXPECT_EQ(strcmpi("a", "ab"), -'b');
    EXPECT_EQ(strcmpi("", "x"), -'x');
    EXPECT_EQ(strcmpi("x", ""), 'x');
    EXPECT_EQ(strcmpi("\xFF", ""), -1);
    EXPECT_EQ(strcmpi("", "\x80"), 128);
}

TEST(StartsWith, WholeKeyStandsAtTheBeginning) {
    struct Row {
        const char* subject;
        const char* key;
        bool expected;
    };
    const Row rows[] = {
        {"infinity", "inf", true}, {"inf", "inf", true},     {"in", "inf", false},
        {"Inf", "inf", false},     {"an inf", "inf", false}, {"infx", "infy", false},
        {"inf", "", true},         {"", "", true},           {"", "i", false},
        {"\xE4x", "\xE4", true},   {"\xE4", "\xC4", false},
    };
    for (const Row& row : rows) {
        std::size_t i = 3;
        EXPECT_EQ(startsWith(row.subject, row.key, i, false), row.expected)
            << row.subject << ' ' << row.key;
        EXPECT_EQ(i, 3U);
    }
}

TEST(StartsWith, WithoutCaseTheFirstCharacterDecides) {
    struct Row {
        const char* subject;
        const char* key;
        bool expected;
    };
    const Row rows[] = {
        {"x", "xyz", true},  {"xab", "xyz", true},    {"X", "xyz", true},      {"xab", "X", true},
        {"y", "xyz", false}, {"yx", "xyz", false},    {"", "xyz", false},      {"xyz", "", false},
        {"", "", true},      {"\xE4", "\xE4z", true}, {"\xE4", "\xC4", false}, {"1", "1", true},
        {"@", "`", false},
    };
    for (const Row& row : rows) {
        std::size_t i = 1;
        EXPECT_EQ(startsWith(row.subject, row.key, i, true), row.expected)
            << row.subject << ' ' << row.key;
        EXPECT_EQ(i, 1U);
    }
}

TEST(StartsWithAny, AnyKeyWillDoAndTheIndexStays) {
    const char* const keys[] = {"inf", "infinity", "no"};
    struct Row {
        const char* subject;
        std::size_t count;
        bool caseInsensitive;
        bool expected;
    };
    const Row rows[] = {
        {"info", 3, false, true},  {"note", 3, false, true},  {"note", 2, false, false},
        {"Note", 3, false, false}, {"Nite", 3, true, true},   {"iguana", 3, false, false},
        {"iguana", 1, true, true}, {"info", 0, false, false}, {"info", 0, true, false},
        {"", 3, false, false},     {"", 3, true, false},
    };
    for (const Row& row : rows) {
        for (const std::size_t start : {std::size_t{0}, std::size_t{2}, NPOS}) {
            std::size_t i = start;
            EXPECT_EQ(startsWithAny(row.subject, keys, row.count, i, row.caseInsensitive),
                      row.expected)
                << row.subject << ' ' << row.count;
            EXPECT_EQ(i, start);
        }
    }
}

}  // namespace
