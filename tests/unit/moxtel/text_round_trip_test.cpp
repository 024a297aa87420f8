/// Text that is written, read and written again: the same bytes, except for those told at the end.

#include <moxtel/text.hpp>

#include <cstddef>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

using namespace std::string_literals;

constexpr int ALL_LINE_ENDS = TextStream::NL_DEFAULT;

/// What a writer writes of a text.
std::string written(const std::string& text) {
    std::ostringstream out;
    TextWriter writer(out);
    EXPECT_EQ(writer.write(text), text.size());
    return out.str();
}

/// What a reader gives up to the end of the data, written again character by character. Reader and
/// writer have to count alike.
std::string reread(TextReader reader) {
    std::ostringstream out;
    TextWriter writer(out);
    for (int c = reader.read(); c != -1; c = reader.read()) {
        writer.write(c);
        EXPECT_EQ(writer.row(), reader.row());
        EXPECT_EQ(writer.col(), reader.col());
    }
    return out.str();
}

std::string reread(const std::string& bytes, int acceptNewlines) {
    return reread(TextReader(Device::wrapString(bytes, 0, bytes.size()), acceptNewlines));
}

/// The same line by line.
std::string rereadLines(const std::string& bytes) {
    TextReader reader(Device::wrapString(bytes, 0, bytes.size()), ALL_LINE_ENDS);
    std::ostringstream out;
    TextWriter writer(out);
    while (reader.peek() != -1) {
        writer.write(reader.readLine());
        writer.writeLine();
    }
    return out.str();
}

/// Bytes of any kind but for 0xFF and those in `without`, many of them line feeds.
std::string drawText(std::mt19937& random, const std::string& without) {
    std::string text;
    for (auto length = random() % 40; length > 0; --length) {
        const char c = static_cast<char>(random() % 0xff);
        text += random() % 5 == 0 || without.find(c) != std::string::npos ? '\n' : c;
    }
    return text;
}

TEST(TextRoundTrip, TextWithoutCarriageReturnsComesBack) {
    std::string everyByte;
    for (int byte = 0; byte < 0xff; ++byte)
        if (byte != '\r')
            everyByte += static_cast<char>(byte);
    for (const std::string& text : {""s, "a"s, "\n"s, "\n\n"s, "a\nb"s, "\na\n"s, everyByte}) {
        EXPECT_EQ(written(text), text);
        EXPECT_EQ(reread(text, ALL_LINE_ENDS), text);
    }
}

TEST(TextRoundTrip, RandomTextWithoutCarriageReturnsComesBack) {
    std::mt19937 random(20240601);
    for (int i = 0; i < 500; ++i) {
        const std::string text = written(drawText(random, "\r"));
        ASSERT_EQ(reread(text, ALL_LINE_ENDS), text);
        ASSERT_EQ(rereadLines(text + "\n"), text + "\n");
    }
}

TEST(TextRoundTrip, CarriageReturnsComeBackWhereTheyAreNoLineEnds) {
    std::mt19937 random(20240602);
    for (int i = 0; i < 500; ++i) {
        const std::string text = written(drawText(random, ""));
        ASSERT_EQ(reread(text, TextStream::NL_LF), text);
    }
    EXPECT_EQ(reread("a\r\nb\rc\n\rd", TextStream::NL_LF), "a\r\nb\rc\n\rd");
}

TEST(TextRoundTrip, FilesComeBackToTheByte) {
    const support::TempDir dir;
    std::mt19937 random(20240603);
    for (int i = 0; i < 20; ++i) {
        const std::string text = drawText(random, "\r");
        TextWriter::fromFile(dir / "first").write(text);
        TextWriter::fromFile(dir / "second").write(reread(TextReader::fromFile(dir / "first")));
        ASSERT_EQ(support::fileContent(dir / "first"), text);
        ASSERT_EQ(support::fileContent(dir / "second"), text);
    }
}

// What does not come back.

TEST(TextRoundTrip, CarriageReturnsComeBackAsLineFeeds) {
    struct Row {
        std::string text, reread;
    };
    const std::vector<Row> rows = {
        {"\r", "\n"},         {"a\rb", "a\nb"},     {"a\r\nb", "a\nb"}, {"a\n\rb", "a\nb"},
        {"a\r\rb", "a\n\nb"}, {"\r\n\r\n", "\n\n"}, {"\r\n\r", "\n\n"}, {"\n\r\n", "\n\n"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(written(row.text), row.text);
        EXPECT_EQ(reread(row.text, ALL_LINE_ENDS), row.reread);
        EXPECT_EQ(reread(row.reread, ALL_LINE_ENDS), row.reread);
    }
}

TEST(TextRoundTrip, TextEndsAtAByteFF) {
    EXPECT_EQ(written("ab\xffyz"), "ab\xffyz");
    EXPECT_EQ(reread("ab\xffyz", ALL_LINE_ENDS), "ab");
    EXPECT_EQ(reread("\xff", ALL_LINE_ENDS), "");
}

TEST(TextRoundTrip, ALastLineWithoutALineEndComesBackWithOne) {
    EXPECT_EQ(rereadLines("a\nb"), "a\nb\n");
    EXPECT_EQ(rereadLines("a\n\n"), "a\n\n");
}

}  // namespace
}  // namespace moxtel::io
