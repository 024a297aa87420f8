// Bytes outside the printable ASCII characters. The byte 0xFF, written \377 here, reads like the
// end of the data, but only once: reading it consumes it, and the next read returns the byte after
// it.

#include <string>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using namespace std::string_literals;
using tool::expectReading;

TEST(InputBytes, HighBytesMayBeginAnItem) {
    expectReading("h\ne\t1\t\xC3\xA9\tz\n", 1, 1,
                  {{1, {"z", "\xC3\xA9"}}, {1, {"z"}}, {1, {"\xC3\xA9"}}});
    expectReading("h\ne\t1\t\x80\t\xFE\n", 1, 1,
                  {{1, {"\x80", "\xFE"}}, {1, {"\x80"}}, {1, {"\xFE"}}});
    expectReading("h\ne\t1\t\"\x80\"\t\"\xFE\tx\"\n", 1, 1,
                  {{1, {"\x80", "\xFE\tx"}}, {1, {"\x80"}}, {1, {"\xFE\tx"}}});
}

TEST(InputBytes, EveryOtherByteMayBeginAKey) {
    std::string table = "h\n";
    std::size_t keys = 0;
    for (int byte = 0; byte < 0xFF; ++byte) {
        // A carriage return would form one line end with the line feed before it.
        if (byte == '\t' || byte == '\n' || byte == '\r' || byte == '"')
            continue;
        ++keys;
        table += static_cast<char>(byte) + "\t1\tx\n"s;
    }
    expectReading(table, keys, keys, {{keys, {"x"}}});
}

TEST(InputBytes, EveryOtherByteMayStandInsideAnItem) {
    std::string item = "x";
    for (int byte = 0; byte < 0xFF; ++byte)
        if (byte != '\t' && byte != '\n' && byte != '\r')
            item += static_cast<char>(byte);
    expectReading("h\ne\t1\t" + item + "\n", 1, 1, {{1, {item}}});
    expectReading("h\ne\t1\ty\t" + item, 1, 1, {{1, {item, "y"}}, {1, {item}}, {1, {"y"}}});
}

TEST(InputBytes, NulIsText) {
    expectReading("h\ne\0a\t1\ta\0b\ne\0b\t1\ta\0c\ne\t1\t\0\n"s, 3, 3,
                  {{1, {"\0"s}}, {1, {"a\0b"s}}, {1, {"a\0c"s}}});
    // The number ends before the NUL.
    expectReading("h\ne\t1\0002\ta\ne\t1\tb\n"s, 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputBytes, ByteFfEndsItsCell) {
    expectReading("h\ne\t1\tab\377cd\n", 1, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\3771\tab\ne\t1\tcd\n", 1, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\t1\3772\tab\ne\t1\tcd\n", 1, 1,
                  {{1, {"2", "ab"}},
                   {1, {"2", "cd"}},
                   {1, {"2"}},
                   {1, {"ab", "cd"}},
                   {1, {"ab"}},
                   {1, {"cd"}}});
    expectReading("h\ne\t1\tab\377\tcd\n", 1, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
}

TEST(InputBytes, ByteFfAtTheBeginningOfACellIsAnEmptyCell) {
    expectReading("h\ne\t1\t\377ab\n", 1, 1, {{1, {"ab"}}});
    expectReading("h\ne\t1\t\377\tab\n", 1, 1, {{1, {"ab"}}});
    expectReading("h\ne\t\3771\tab\ne\t0\t1\n", 1, 1, {{1, {"1", "ab"}}, {1, {"1"}}, {1, {"ab"}}});
}

TEST(InputBytes, ByteFfAtTheEndOfARowIsLost) {
    expectReading("h\ne\t1\tab\377\ne\t1\tcd\377\n", 1, 1,
                  {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\t1\tab\377", 1, 1, {{1, {"ab"}}});
}

TEST(InputBytes, TwoBytesFfEndTheirRow) {
    expectReading("h\ne\t1\tab\377\377e\t1\tcd\n", 1, 1,
                  {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\t1\tab\377\377\ne\t1\tcd\n", 1, 1,
                  {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
}

TEST(InputBytes, ByteFfBeforeTheFirstRowEndsTheReading) {
    expectReading("h\n\377e\t1\ta\n", 0, 0, {});
}

TEST(InputBytes, ByteFfAfterALineEndIsLostAndTwoEndTheReading) {
    expectReading("h\ne\t1\ta\n\377e\t1\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\ne\t1\ta\n\377\377e\t1\tb\n", 1, 1, {{1, {"a"}}});
}

TEST(InputBytes, ByteFfAfterACarriageReturnIsLost) {
    expectReading("h\ne\t1\ta\r\377b\n", 1, 1, {{1, {"a\nb"}}});
}

TEST(InputBytes, ByteFfInsideQuotesLeavesTheCellRaw) {
    // The quoted text ends at the byte; the rest, including the closing quote, is plain text.
    expectReading("h\ne\t1\t\"ab\377cd\"\n", 1, 1, {{1, {"\"ab\"cd\""}}});
    expectReading("h\ne\t1\t\"ab\377\"\n", 1, 1, {{1, {"\"ab\"\""}}});
    expectReading("h\ne\t1\t\"\377\"\n", 1, 1, {{1, {"\"\"\""}}});
}

TEST(InputBytes, ByteFfInsideQuotesBeforeADelimiterClosesTheCell) {
    expectReading("h\ne\t1\t\"ab\377\tcd\n", 1, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\t1\t\"ab\377\ne\t1\tcd\n", 1, 1,
                  {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
}

TEST(InputBytes, ByteFfInsideQuotesAfterALineEndIsLost) {
    expectReading("h\ne\t1\t\"a\n\377b\"\n", 1, 1, {{1, {"a\nb"}}});
    expectReading("h\ne\t1\t\"a\r\377b\"\n", 1, 1, {{1, {"a\rb"}}});
}

TEST(InputBytes, ByteFfAfterTheClosingQuoteIsLost) {
    expectReading("h\ne\t1\t\"ab\"\377\tcd\n", 1, 1, {{1, {"ab", "cd"}}, {1, {"ab"}}, {1, {"cd"}}});
    expectReading("h\ne\t1\t\"ab\"\377cd\n", 1, 1, {{1, {"\"ab\"cd"}}});
}

}  // namespace
