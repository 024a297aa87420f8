#include <moxtel/text.hpp>

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temp_dir.hpp"
#include "text_streams.hpp"

namespace moxtel::io {
namespace {

using moxtel_tests::Sheet;

TEST(TextWriter, ALineFeedAdvancesTheRowAndResetsTheColumn) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write('a'), 1U);
    EXPECT_EQ(sheet.writer.col(), 1U);
    EXPECT_EQ(sheet.writer.write('\n'), 1U);
    EXPECT_EQ(sheet.writer.row(), 1U);
    EXPECT_EQ(sheet.writer.col(), 0U);
    EXPECT_EQ(sheet.out.str(), "a\n");
}

TEST(TextWriter, ACarriageReturnIsAnOrdinaryCharacter) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write("\r\n", 2), 2U);
    EXPECT_EQ(sheet.writer.write('\r'), 1U);
    EXPECT_EQ(sheet.writer.row(), 1U);
    EXPECT_EQ(sheet.writer.col(), 1U);
    EXPECT_EQ(sheet.out.str(), "\r\n\r");
}

TEST(TextWriter, ACharacterIsWrittenAsItsLowByte) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write(-1), 1U);
    EXPECT_EQ(sheet.writer.write(-128), 1U);
    EXPECT_EQ(sheet.writer.write(0x141), 1U);
    EXPECT_EQ(sheet.writer.write(0x10a), 1U);
    EXPECT_EQ(sheet.writer.write(0), 1U);
    EXPECT_EQ(sheet.out.str(), std::string("\xff\x80"
                                           "A\n\0",
                                           5));
    EXPECT_EQ(sheet.writer.row(), 0U);
    EXPECT_EQ(sheet.writer.col(), 5U);
}

TEST(TextWriter, ABlockIsWrittenWholeWithItsNulsAndLineEnds) {
    const std::string text("a\0\xff\nb", 5);
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write(text.data(), text.size()), 5U);
    EXPECT_EQ(sheet.writer.write(text), 5U);
    EXPECT_EQ(sheet.writer.write(text.data(), 0), 0U);
    EXPECT_EQ(sheet.writer.row(), 2U);
    EXPECT_EQ(sheet.writer.col(), 1U);
    EXPECT_EQ(sheet.out.str(), text + text);
}

TEST(TextWriter, ALengthOfNposWritesTheWholeString) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write(std::string("abc"), 0, std::string::npos), 3U);
    EXPECT_EQ(sheet.out.str(), "abc");
}

TEST(TextWriter, TheLengthOfAPartIsAnEndIndex) {
    const std::string text = "0123456789";
    constexpr std::size_t npos = std::string::npos;
    struct Row {
        std::size_t i;
        std::size_t len;
        std::string written;
    };
    const std::vector<Row> rows = {
        {0, 4, "0123"},
        {2, 3, "2"},
        {2, 2, ""},
        {3, 2, ""},
        {2, 8, "234567"},
        // From here on the part goes beyond the string, and all of the rest is written.
        {2, 9, "23456789"},
        {0, 10, text},
        {0, 11, text},
        {1, 10, "123456789"},
        {7, 4, "789"},
        {9, 2, "9"},
        {7, npos, "789"},
        {7, npos - 1, "789"},
        {10, 0, ""},
        {10, 1, ""},
        {11, 0, ""},
        {npos, 1, ""},
        {npos, npos, ""},
    };
    for (const Row& row : rows) {
        Sheet sheet;
        EXPECT_EQ(sheet.writer.write(text, row.i, row.len), row.written.size())
            << row.i << ", " << row.len;
        EXPECT_EQ(sheet.out.str(), row.written) << row.i << ", " << row.len;
    }
}

TEST(TextWriter, AnEmptyStringWritesNothing) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.write(std::string()), 0U);
    EXPECT_EQ(sheet.writer.write(std::string(), 0, std::string::npos), 0U);
    EXPECT_EQ(sheet.writer.writeString(""), 0U);
    EXPECT_EQ(sheet.out.str(), "");
}

TEST(TextWriter, StringsEndAtTheirNul) {
    Sheet sheet;
    EXPECT_EQ(sheet.writer.writeString("ab\0c"), 2U);
    EXPECT_EQ(sheet.writer.writeLine("de\nf"), 5U);
    EXPECT_EQ(sheet.writer.writeLine(""), 1U);
    EXPECT_EQ(sheet.writer.writeLine(), 1U);
    EXPECT_EQ(sheet.out.str(), "abde\nf\n\n\n");
    EXPECT_EQ(sheet.writer.row(), 4U);
    EXPECT_EQ(sheet.writer.col(), 0U);
}

TEST(TextWriter, OnAFullDeviceColumnsGoOnAndRowsDoNot) {
    char block[] = "....";
    TextWriter writer(Device::wrapArray(block, 3, OPEN_READ_WRITE));
    EXPECT_EQ(writer.write("a\nbcd", 5), 3U);
    EXPECT_STREQ(block, "a\nb.");
    EXPECT_EQ(writer.row(), 1U);
    EXPECT_EQ(writer.col(), 3U);
    EXPECT_EQ(writer.write('x'), 0U);
    EXPECT_EQ(writer.col(), 4U);
    EXPECT_EQ(writer.write('\n'), 0U);
    EXPECT_EQ(writer.writeLine(), 0U);
    EXPECT_EQ(writer.writeLine("yz"), 0U);
    EXPECT_EQ(writer.row(), 1U);
    EXPECT_EQ(writer.col(), 6U);
}

TEST(TextWriter, ALineWhoseEndFailsCountsItsText) {
    char block[2];
    TextWriter writer(Device::wrapArray(block, 2, OPEN_READ_WRITE));
    EXPECT_EQ(writer.writeLine("ab"), 2U);
    EXPECT_EQ(writer.row(), 0U);
    EXPECT_EQ(writer.col(), 2U);
}

TEST(TextWriter, WithoutADeviceEveryWriteFails) {
    TextWriter writer;
    EXPECT_FALSE(writer.handle());
    EXPECT_EQ(writer.write('a'), 0U);
    EXPECT_EQ(writer.writeLine("bc"), 0U);
    EXPECT_EQ(writer.row(), 0U);
    EXPECT_EQ(writer.col(), 3U);
}

TEST(TextWriter, WritesToStreamsThatStayTheCallers) {
    std::ostringstream out;
    std::stringstream inOut;
    {
        TextWriter toOutput(out);
        TextWriter toBoth(inOut);
        toOutput.writeString("ab");
        toBoth.writeString("cd");
        EXPECT_FALSE(toOutput.handle()->canRead());
        EXPECT_TRUE(toBoth.handle()->canRead());
    }
    out << '.';
    inOut << '.';
    EXPECT_EQ(out.str(), "ab.");
    EXPECT_EQ(inOut.str(), "cd.");
}

TEST(TextWriter, CopiesShareTheDeviceAndCountForThemselves) {
    Sheet sheet;
    sheet.writer.writeString("a\nb");
    TextWriter copy;
    copy = sheet.writer;
    copy.writeLine("c");
    sheet.writer.write('d');
    EXPECT_EQ(sheet.out.str(), "a\nbc\nd");
    EXPECT_EQ(copy.row(), 2U);
    EXPECT_EQ(copy.col(), 0U);
    EXPECT_EQ(sheet.writer.row(), 1U);
    EXPECT_EQ(sheet.writer.col(), 2U);
}

TEST(TextWriter, TakesOverADeviceGivenByReference) {
    auto* out = new std::ostringstream;
    Device& device = *Device::wrap(static_cast<std::ostream*>(out));
    TextWriter writer(device);
    EXPECT_EQ(writer.writeString("ab"), 2U);
    EXPECT_EQ(out->str(), "ab");
}

TEST(TextWriter, FromFileWritesWhatIsThereAfterItsEnd) {
    const support::TempDir dir;
    for (const int flags : {0, static_cast<int>(OPEN_WRITE)}) {
        const std::string path = dir.write("lines", "what was there before");
        {
            TextWriter writer = TextWriter::fromFile(path, flags);
            EXPECT_EQ(writer.writeLine("ab"), 3U);
        }
        EXPECT_EQ(support::fileContent(path), "ab\n") << flags;
    }
}

TEST(TextWriter, AFileThatCannotBeWrittenTakesNothing) {
    const support::TempDir dir;
    TextWriter unopened = TextWriter::fromFile(dir / "no_directory/file");
    EXPECT_EQ(unopened.writeLine("ab"), 0U);
    const std::string path = dir.write("for_reading", "abc");
    {
        TextWriter readOnly = TextWriter::fromFile(path, OPEN_READ_WRITE);
        EXPECT_EQ(readOnly.writeLine("xyz"), 0U);
        EXPECT_EQ(readOnly.col(), 3U);
    }
    EXPECT_EQ(support::fileContent(path), "abc");
}

}  // namespace
}  // namespace moxtel::io
