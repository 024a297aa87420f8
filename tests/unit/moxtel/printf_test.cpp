#include <moxtel/printf.hpp>

#include <cstdarg>
#include <cstddef>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "../../../src/libmoxtel/printf_specifier.hpp"

namespace moxtel::string {
namespace {

std::string format(const char* fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    try {
        std::string text = vstrprintf(fmt, args);
        va_end(args);
        return text;
    } catch (...) {
        va_end(args);
        throw;
    }
}

std::string formatString(const std::string* fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    std::string text = vstrprintf(*fmt, args);
    va_end(args);
    return text;
}

TEST(Vstrprintf, AStringServesAsFormatToo) {
    const std::string fmt = "%u items in %s";
    EXPECT_EQ(formatString(&fmt, 3U, "bag"), "3 items in bag");
}

TEST(Vstrprintf, EmptyFormatGivesAnEmptyString) {
    EXPECT_EQ(format(""), "");
}

TEST(Vstrprintf, LongTextIsNotTruncated) {
    const std::string text(10000, 'x');
    EXPECT_EQ(format("%s", text.c_str()), text);
}

TEST(Vstrprintf, FormatsByThePrintfRules) {
    EXPECT_EQ(format("%d%% of %-4s|%5.2f|%#x", 7, "ab", 3.14159, 255), "7% of ab  | 3.14|0xff");
}

TEST(Vstrprintf, EveryLengthAroundAPowerOfTwoIsWhole) {
    for (std::size_t length = 250; length < 260; ++length)
        EXPECT_EQ(format("<%s>", std::string(length, 'y').c_str()).size(), length + 2);
}

TEST(Vstrprintf, TextEndsAtANulCharacter) {
    EXPECT_EQ(format("a%cb", '\0'), "a");
}

TEST(Vstrprintf, EncodingErrorThrows) {
    const wchar_t noCharacter[] = {static_cast<wchar_t>(0x7fffffff), L'\0'};
    try {
        format("%ls", noCharacter);
        ADD_FAILURE() << "nothing thrown";
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "vstrprintf: a value cannot be encoded");
    }
}

/// The specifier begins at the text's `%`; an answer of -1 is its own position.
struct Specifier {
    const char* text;
    int answer;
};

TEST(ConsumePrintfSpecifier, GivesThePositionOfTheConversion) {
    const Specifier rows[] = {
        {"%d", 1},   {"%s", 1},   {"%%", 1},   {"%A", 1},   {"%E", 1},  {"%F", 1},   {"%G", 1},
        {"%X", 1},   {"%a", 1},   {"%e", 1},   {"%f", 1},   {"%g", 1},  {"%n", 1},   {"%o", 1},
        {"%p", 1},   {"%u", 1},   {"%x", 1},   {"%ld", 2},  {"%hd", 2}, {"%Lf", 2},  {"%jd", 2},
        {"%td", 2},  {"%zu", 2},  {"%lld", 3}, {"%hhu", 3}, {"%*d", 2}, {"%*ld", 3}, {"%*lld", 4},
        {"ab%d", 3}, {"%ddd", 1}, {"%*%", 2},
    };
    for (const Specifier& row : rows) {
        const std::string text = row.text;
        EXPECT_EQ(consumePrintfSpecifier(text, text.find('%'), text.size()),
                  static_cast<std::size_t>(row.answer))
            << text;
    }
}

TEST(ConsumePrintfSpecifier, GivesTheStartWhereNoKnownSpecifierFollows) {
    const char* const texts[] = {
        "%5d",  "%.2f", "%-d",   "%+d",  "%#x", "%0d", "% d",  "%c",   "%i",   "%-ld",
        "%0ld", "%.d",  "%.*d",  "%*5d", "%ll", "%l",  "%h",   "%*",   "%L",   "%-",
        "%lhd", "%hld", "%llld", "%lc",  "%y",  "%.",  "%**d", "%zzu", "%*-d", "%8d",
    };
    for (const std::string text : texts)
        EXPECT_EQ(consumePrintfSpecifier(text, 0, text.size()), 0U) << text;
}

TEST(ConsumePrintfSpecifier, PercentSignAtTheEndOfTheRegionIsItsOwnAnswer) {
    EXPECT_EQ(consumePrintfSpecifier("ab%", 2, 3), 2U);
    EXPECT_EQ(consumePrintfSpecifier("ab%d", 2, 3), 2U);
    EXPECT_EQ(consumePrintfSpecifier("ab%d", 2, 4), 3U);
}

TEST(ConsumePrintfSpecifier, RegionBoundsOnlyTheFirstCharacterAfterThePercentSign) {
    EXPECT_EQ(consumePrintfSpecifier("%ld", 0, 2), 2U);
}

}  // namespace
}  // namespace moxtel::string
