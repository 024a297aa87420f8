// Line ends other than the line feed. A row ends where the next byte is a line feed. Any other line
// end, such as a carriage return, reads as a line feed inside the cell that contains it.

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectReading;

TEST(InputLineEnds, CrLfIsAbsorbedByTheLastCell) {
    expectReading("h\r\ne0\t1\ta\r\ne0\t2\tb\r\n", 1, 1,
                  {{1, {"2", "a\ne0"}},
                   {1, {"2", "b\n"}},
                   {1, {"2"}},
                   {1, {"a\ne0", "b\n"}},
                   {1, {"a\ne0"}},
                   {1, {"b\n"}}});
}

TEST(InputLineEnds, CrLfAfterATimeJoinsTheNextKeyToIt) {
    expectReading(
        "h\r\ne0\t7\r\ne1\t8\tb\ne0\t7\tc\n", 1, 1,
        {{1, {"8", "b"}}, {1, {"8", "c"}}, {1, {"8"}}, {1, {"b", "c"}}, {1, {"b"}}, {1, {"c"}}});
}

TEST(InputLineEnds, CrLfAfterAKeyJoinsTheNextKeyToIt) {
    expectReading("h\ne0\r\ne1\t8\tb\n\"e0\ne1\"\t8\tc\n", 1, 1,
                  {{1, {"b", "c"}}, {1, {"b"}}, {1, {"c"}}});
}

TEST(InputLineEnds, CrLfBeforeTheFirstRowBelongsToItsKey) {
    expectReading("h\n\r\ne0\t1\ta\ne0\t1\tb\n", 2, 2, {{1, {"a"}}, {1, {"b"}}});
}

TEST(InputLineEnds, LoneCrIsALineFeedInItsCell) {
    expectReading("h\ne0\t1\ta\re0\t2\tb\n", 1, 1,
                  {{1, {"2", "a\ne0"}},
                   {1, {"2", "b"}},
                   {1, {"2"}},
                   {1, {"a\ne0", "b"}},
                   {1, {"a\ne0"}},
                   {1, {"b"}}});
    expectReading("h\ne0\t1\ta\r\tb\n", 1, 1, {{1, {"a\n", "b"}}, {1, {"a\n"}}, {1, {"b"}}});
    expectReading("h\ne0\t1\t\ra\r\rb\r", 1, 1, {{1, {"\na\n\nb\n"}}});
    expectReading("h\n\re0\t1\ta\n\"\ne0\"\t1\tb\n", 1, 1,
                  {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputLineEnds, LoneCrDoesNotEndTheHeader) {
    expectReading("h\re0\t1\ta\r", 0, 0, {});
    expectReading("h\re0\t1\ta\ne0\t1\tb\n", 1, 1, {{1, {"b"}}});
}

TEST(InputLineEnds, LfCrIsOneLineEnd) {
    // The header ends at its line feed, so the first row keeps the carriage return in its key.
    expectReading("h\n\re0\t1\ta\n\re0\t1\tb\n\re0\t1\tc\n\r", 2, 2,
                  {{1, {"a"}}, {1, {"b", "c"}}, {1, {"b"}}, {1, {"c"}}});
}

TEST(InputLineEnds, LfCrLfIsALineEndAndAnEmptyLine) {
    expectReading("h\ne0\t1\ta\n\r\ne0\t1\tb\n", 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    expectReading("h\ne0\t1\ta\n\r\n", 2, 2, {{1, {"a"}}});
}

TEST(InputLineEnds, OtherLineBreaksAreText) {
    expectReading("h\ne0\t1\ta\v\fb\xC2\x85\xE2\x80\xA8\n", 1, 1,
                  {{1, {"a\v\fb\xC2\x85\xE2\x80\xA8"}}});
}

}  // namespace
