#include <moxtel/text.hpp>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/memory.hpp>

#include "../../../src/libmoxtel/in_place.hpp"
#include "support/temp_dir.hpp"
#include "text_streams.hpp"

namespace moxtel::io {
namespace {

using moxtel_tests::readerOf;
using ::testing::ElementsAre;

constexpr int ALL = TextStream::NL_DEFAULT;

std::vector<int> charactersOf(TextReader& reader) {
    std::vector<int> characters;
    for (int c = reader.read(); c != -1; c = reader.read())
        characters.push_back(c);
    return characters;
}

/// A device that writes down its destruction, and counts how often it was asked for a byte.
class WatchedDevice : public Device {
  public:
    explicit WatchedDevice(bool& gone) : m_gone(&gone) {}
    ~WatchedDevice() override { *m_gone = true; }

    using Device::write;

    bool canRead() const override { return true; }
    bool canWrite() const override { return false; }
    int seekCapability() const override { return 0; }
    std::size_t read(char*, std::size_t) override { return 0; }
    int read() override { return asked++ < 2 ? 'a' : -1; }
    std::size_t write(const char*, std::size_t) override { return 0; }

    int asked = 0;

  private:
    bool* m_gone;
};

// The reading of line ends, held against a table of them.

struct Step {
    int character;
    std::size_t row;
    std::size_t col;
    bool operator==(const Step&) const = default;
};

void PrintTo(const Step& step, std::ostream* out) {
    *out << "{" << step.character << " at " << step.row << ":" << step.col << "}";
}

/// What a reader is to give for each `read` up to the end, and its position afterwards.
std::vector<Step> expectedSteps(const std::string& text, int accepted) {
    struct LineEnd {
        std::string text;
        int flag;
    };
    static const std::vector<LineEnd> LINE_ENDS = {{"\r\n", 4}, {"\n\r", 8}, {"\n", 1}, {"\r", 2}};
    std::vector<Step> steps;
    std::size_t row = 0;
    std::size_t col = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t lineEnd = 0;
        for (const LineEnd& candidate : LINE_ENDS)
            if (lineEnd == 0 && (accepted & candidate.flag) != 0 &&
                text.compare(i, candidate.text.size(), candidate.text) == 0)
                lineEnd = candidate.text.size();
        if (lineEnd > 0) {
            steps.push_back({'\n', ++row, col = 0});
            i += lineEnd;
        } else {
            steps.push_back({text[i++], row, ++col});
        }
    }
    return steps;
}

std::vector<std::string> sequences(const std::string& alphabet, std::size_t longest) {
    std::vector<std::string> all = {""};
    for (std::size_t i = 0; i < all.size() && all[i].size() < longest; ++i)
        for (const char c : alphabet)
            all.push_back(all[i] + c);
    return all;
}

TEST(TextReaderLineEnds, EveryMaskReadsEveryShortSequence) {
    const std::vector<std::string> texts = sequences("a\r\n", 5);
    ASSERT_EQ(texts.size(), 364U);
    for (int mask = 1; mask <= 15; ++mask) {
        for (const std::string& text : texts) {
            for (const bool peeking : {false, true}) {
                TextReader reader = readerOf(text, mask);
                std::vector<Step> steps;
                if (peeking)
                    reader.peek();
                for (int c = reader.read(); c != -1; c = reader.read()) {
                    steps.push_back({c, reader.row(), reader.col()});
                    if (peeking)
                        reader.peek();
                }
                ASSERT_EQ(steps, expectedSteps(text, mask))
                    << "mask " << mask << ", text " << ::testing::PrintToString(text);
            }
        }
    }
}

TEST(TextReaderLineEnds, LinesOfEverySequenceEndWhereItsRowsDo) {
    for (int mask = 1; mask <= 15; ++mask) {
        for (const std::string& text : sequences("a\r\n", 5)) {
            std::vector<std::string> expected(1);
            for (const Step& step : expectedSteps(text, mask)) {
                if (step.col == 0)
                    expected.emplace_back();
                else
                    expected.back() += static_cast<char>(step.character);
            }
            TextReader reader = readerOf(text, mask);
            std::vector<std::string> lines;
            for (std::size_t i = 0; i < expected.size(); ++i)
                lines.push_back(reader.readLine());
            ASSERT_EQ(lines, expected)
                << "mask " << mask << ", text " << ::testing::PrintToString(text);
            ASSERT_EQ(reader.peek(), -1);
        }
    }
}

TEST(TextReader, CrLfIsOneLineEnd) {
    TextReader reader = readerOf("a\r\nb");
    EXPECT_EQ(reader.read(), 'a');
    EXPECT_EQ(reader.read(), '\n');
    EXPECT_EQ(reader.read(), 'b');
    EXPECT_EQ(reader.read(), -1);
    EXPECT_EQ(reader.row(), 1U);
    EXPECT_EQ(reader.col(), 1U);
}

TEST(TextReader, CrIsACharacterWhenOnlyLfIsAccepted) {
    TextReader reader = readerOf("a\rb", TextStream::NL_LF);
    EXPECT_THAT(charactersOf(reader), ElementsAre('a', '\r', 'b'));
    EXPECT_EQ(reader.row(), 0U);
    EXPECT_EQ(reader.col(), 3U);
}

TEST(TextReader, NoFlagsStandForAllLineEnds) {
    TextReader reader = readerOf("a\n\rb\rc\nd\r\n\n\n");
    EXPECT_THAT(charactersOf(reader),
                ElementsAre('a', '\n', 'b', '\n', 'c', '\n', 'd', '\n', '\n', '\n'));
    EXPECT_EQ(reader.row(), 6U);
    EXPECT_EQ(reader.col(), 0U);
}

TEST(TextReader, NewlineFlagsHaveTheirValues) {
    EXPECT_THAT((std::vector<int>{TextStream::NL_DEFAULT, TextStream::NL_LF, TextStream::NL_CR,
                                  TextStream::NL_CRLF, TextStream::NL_LFCR}),
                ElementsAre(0, 1, 2, 4, 8));
}

TEST(TextReader, PeekThenReadGivesTheCharacterOnce) {
    TextReader reader = readerOf("ab");
    EXPECT_EQ(reader.peek(), 'a');
    EXPECT_EQ(reader.peek(), 'a');
    EXPECT_EQ(reader.col(), 0U);
    EXPECT_EQ(reader.read(), 'a');
    EXPECT_EQ(reader.read(), 'b');
    EXPECT_EQ(reader.read(), -1);
}

TEST(TextReader, PeekShowsTheRawCharacter) {
    TextReader reader = readerOf("\r\nx");
    EXPECT_EQ(reader.peek(), '\r');
    EXPECT_EQ(reader.read(), '\n');
    EXPECT_EQ(reader.peek(), 'x');
}

TEST(TextReader, BytesAbove7FAreNegative) {
    TextReader reader = readerOf("\x80\xfe\x7f");
    EXPECT_EQ(reader.peek(), -128);
    EXPECT_THAT(charactersOf(reader), ElementsAre(-128, -2, 127));
    EXPECT_EQ(reader.col(), 3U);
}

TEST(TextReader, ByteFFEndsTheTextOnceAndIsNotCounted) {
    TextReader reader = readerOf(
        "a\xff"
        "b");
    EXPECT_EQ(reader.read(), 'a');
    EXPECT_EQ(reader.read(), -1);
    EXPECT_EQ(reader.col(), 1U);
    EXPECT_EQ(reader.read(), 'b');
    EXPECT_EQ(reader.col(), 2U);
}

TEST(TextReader, ByteFFAfterALineEndIsLostInTheLookAhead) {
    TextReader reader = readerOf(
        "\n\xff"
        "b");
    EXPECT_THAT(charactersOf(reader), ElementsAre('\n', 'b'));
    TextReader lineFeedsOnly = readerOf(
        "\n\xff"
        "b",
        TextStream::NL_LF);
    EXPECT_THAT(charactersOf(lineFeedsOnly), ElementsAre('\n'));
}

TEST(TextReader, TheEndIsAskedForEachTime) {
    bool gone = false;
    auto* device = new WatchedDevice(gone);
    TextReader reader(device, ALL);
    EXPECT_THAT(charactersOf(reader), ElementsAre('a', 'a'));
    EXPECT_EQ(device->asked, 3);
    EXPECT_EQ(reader.peek(), -1);
    EXPECT_EQ(reader.peek(), -1);
    EXPECT_EQ(device->asked, 5);
    device->asked = 0;
    EXPECT_EQ(reader.peek(), 'a');
}

TEST(ReadLine, TheEndGivesAnEmptyLine) {
    TextReader reader = readerOf("x\n");
    EXPECT_EQ(reader.readLine(), "x");
    EXPECT_EQ(reader.readLine(), "");
    EXPECT_EQ(reader.peek(), -1);
}

TEST(ReadLine, GivesTheTextBetweenLineEnds) {
    TextReader reader = readerOf("ab\r\n\n\x80 c");
    EXPECT_EQ(reader.readLine(), "ab");
    EXPECT_EQ(reader.row(), 1U);
    EXPECT_EQ(reader.readLine(), "");
    EXPECT_EQ(reader.peek(), -128);
    EXPECT_EQ(reader.readLine(), "\x80 c");
    EXPECT_EQ(reader.row(), 2U);
    EXPECT_EQ(reader.col(), 3U);
}

TEST(ReadLine, KeepsLineEndsThatAreNotAccepted) {
    TextReader reader = readerOf("a\nb\r\nc", TextStream::NL_CRLF);
    EXPECT_EQ(reader.readLine(), "a\nb");
    EXPECT_EQ(reader.readLine(), "c");
}

TEST(ReadLine, GoesOnFromAPeekedCharacter) {
    TextReader reader = readerOf("ab\nc");
    reader.peek();
    EXPECT_EQ(reader.readLine(), "ab");
    reader.peek();
    EXPECT_EQ(reader.readLine(), "c");
}

// The block read: what it leaves in a buffer of just the data's size, and the position.

struct BlockRow {
    int accepted;
    std::string text;
    std::string buffer;
    std::size_t row;
    std::size_t col;
};

TEST(BlockRead, TranslatesInPlaceWithItsQuirks) {
    const std::vector<BlockRow> rows = {
        {ALL, "ab", "ab", 0, 2},
        {ALL, "a\nb", "a\nb", 1, 1},
        {ALL, "a\rb", "a\nb", 1, 1},
        {ALL, "ab\r", "ab\n", 1, 0},
        {ALL, "\n\n", "\n\n", 2, 0},
        // LF CR shrinks; the bytes behind the translated text stay.
        {ALL, "a\n\rbc", "a\nbcc", 1, 2},
        {ALL, "\n\r\n\r", "\n\n\n\r", 2, 0},
        // CR LF is written one further on, over what is read next: the line end repeats itself.
        {ALL, "\r\n", "\r\n", 2, 0},
        {ALL, "a\r\nb", "a\r\n\n", 3, 0},
        {TextStream::NL_CRLF, "\r\nab", "\r\n\n\n", 1, 3},
        {TextStream::NL_CRLF, "a\n\rb", "a\n\rb", 0, 4},
        {TextStream::NL_LFCR, "a\n\rb", "a\nbb", 1, 1},
        {TextStream::NL_LF, "a\r\nb", "a\r\nb", 1, 1},
        {TextStream::NL_CR, "a\r\nb", "a\n\nb", 1, 2},
        {TextStream::NL_LFCR, "a\nb\r", "a\nb\r", 0, 4},
        {ALL, "\xff\x80", "\xff\x80", 0, 2},
    };
    for (const BlockRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.text));
        TextReader reader = readerOf(row.text, row.accepted);
        const auto buf = std::make_unique<char[]>(row.text.size());
        EXPECT_EQ(reader.read(buf.get(), row.text.size()), 0U);
        EXPECT_EQ(std::string(buf.get(), row.text.size()), row.buffer);
        EXPECT_EQ(reader.row(), row.row);
        EXPECT_EQ(reader.col(), row.col);
    }
}

TEST(BlockRead, MayWriteBehindAShortRead) {
    TextReader reader = readerOf("\r\n");
    char buf[] = "....";
    EXPECT_EQ(reader.read(buf, 4), 0U);
    EXPECT_STREQ(buf, "\r\n\n.");
    EXPECT_EQ(reader.row(), 2U);
}

TEST(BlockRead, APairIsNotSeenAcrossBlocks) {
    TextReader reader = readerOf("\n\r");
    char buf[1];
    reader.read(buf, 1);
    reader.read(buf, 1);
    EXPECT_EQ(reader.row(), 2U);
}

TEST(BlockRead, APairIsNotCompletedByWhatWasInTheBuffer) {
    TextReader reader = readerOf("\r");
    char buf[] = "x\n";
    reader.read(buf, 2);
    EXPECT_STREQ(buf, "\n\n");
    EXPECT_EQ(reader.row(), 1U);
}

TEST(BlockRead, PassesOverAPeekedCharacter) {
    TextReader reader = readerOf("abc");
    EXPECT_EQ(reader.peek(), 'a');
    char buf[] = "..";
    reader.read(buf, 2);
    EXPECT_STREQ(buf, "bc");
    EXPECT_EQ(reader.col(), 2U);
    EXPECT_EQ(reader.read(), 'a');
    EXPECT_EQ(reader.read(), -1);
}

TEST(BlockRead, CountsNothingWhenTheDeviceFails) {
    std::istringstream in("a\rb");
    TextReader reader(in, ALL);
    char buf[] = ".....";
    EXPECT_EQ(reader.read(buf, 5), 0U);
    EXPECT_STREQ(buf, "a\rb..");
    EXPECT_EQ(reader.row(), 0U);
    EXPECT_EQ(reader.col(), 0U);
}

// Runs of plain characters.

TEST(ReadUntil, GivesThePeekedCharacterWhereTheStreamHasMovedSince) {
    std::istringstream in("abcdef,g");
    TextReader reader(in, TextStream::NL_DEFAULT);
    EXPECT_EQ(reader.peek(), 'a');
    in.seekg(4);
    int end = 0;
    EXPECT_EQ(InPlace::readUntil(reader, ',', end), "aef");
    EXPECT_EQ(end, ',');
    EXPECT_EQ(reader.col(), 3U);
}

TEST(ReadUntil, GivesThePeekedCharacterOnceWhereTheStreamStandsBehindIt) {
    std::istringstream in("abc,d");
    TextReader reader(in, TextStream::NL_DEFAULT);
    EXPECT_EQ(reader.peek(), 'a');
    int end = 0;
    EXPECT_EQ(InPlace::readUntil(reader, ',', end), "abc");
    EXPECT_EQ(end, ',');
    EXPECT_EQ(reader.col(), 3U);
}

// What is at hand.

TEST(AtHand, IsWhatWasPeekedAtAndTheRestOfTheBuffer) {
    std::istringstream in("ab\r\ncd");
    TextReader reader(in, TextStream::NL_DEFAULT);
    EXPECT_EQ(InPlace::atHand(reader), "");
    reader.peek();
    EXPECT_EQ(InPlace::atHand(reader), "ab\r\ncd");
    reader.read();
    EXPECT_EQ(InPlace::atHand(reader), "");
    reader.peek();
    EXPECT_EQ(InPlace::atHand(reader), "b\r\ncd");
}

TEST(AtHand, IsNothingWithoutAStreamOrABlock) {
    TextReader none;
    none.peek();
    EXPECT_EQ(InPlace::atHand(none), "");

    std::string block = "ab";
    TextReader overBlock(Device::wrapArray(block.data(), block.size(), OPEN_READ), 0);
    overBlock.peek();
    EXPECT_EQ(InPlace::atHand(overBlock), "");

    std::istringstream in("abc");
    TextReader moved(in, TextStream::NL_DEFAULT);
    moved.peek();
    in.seekg(0);
    EXPECT_EQ(InPlace::atHand(moved), "");
    in.seekg(2);
    EXPECT_EQ(InPlace::atHand(moved), "");
    EXPECT_EQ(moved.readLine(), "ac");

    std::istringstream ended("a");
    TextReader last(ended, TextStream::NL_DEFAULT);
    last.peek();
    EXPECT_EQ(InPlace::atHand(last), "");
}

TEST(Skip, ReadsThatManyCharacters) {
    std::istringstream in("abcd\ne");
    TextReader reader(in, TextStream::NL_DEFAULT);
    InPlace::skip(reader, 0);
    reader.peek();
    InPlace::skip(reader, 0);
    EXPECT_EQ(reader.col(), 0U);
    InPlace::skip(reader, 1);
    EXPECT_EQ(reader.col(), 1U);
    reader.peek();
    InPlace::skip(reader, 2);
    EXPECT_EQ(reader.col(), 3U);
    EXPECT_EQ(reader.readLine(), "d");
    EXPECT_EQ(reader.row(), 1U);
    EXPECT_EQ(reader.read(), 'e');
}

// Devices and their lifetime.

TEST(TextReaderDevice, WithoutADeviceTheDataIsAtItsEnd) {
    TextReader reader;
    EXPECT_FALSE(reader.handle());
    EXPECT_EQ(reader.peek(), -1);
    EXPECT_EQ(reader.read(), -1);
    EXPECT_EQ(reader.readLine(), "");
    char buf[] = ".";
    EXPECT_EQ(reader.read(buf, 1), 0U);
    EXPECT_STREQ(buf, ".");
}

TEST(TextReaderDevice, AssignmentTakesOverDevicePositionLookAheadAndLineEnds) {
    TextReader reader;
    {
        TextReader source = readerOf("a\rb\nc\rd", TextStream::NL_LF);
        source.readLine();
        source.read();
        source.peek();
        reader = source;
    }
    EXPECT_EQ(reader.row(), 1U);
    EXPECT_EQ(reader.col(), 1U);
    EXPECT_THAT(charactersOf(reader), ElementsAre('\r', 'd'));
}

TEST(TextReaderDevice, IsDestroyedWithItsLastHolder) {
    bool gone = false;
    {
        TextReader copy;
        {
            const TextReader reader(new WatchedDevice(gone), ALL);
            copy = reader;
        }
        EXPECT_FALSE(gone);
        const mem::Pointer<Device> handle = copy.handle();
        copy = TextReader();
        EXPECT_FALSE(gone);
        EXPECT_TRUE(handle->canRead());
    }
    EXPECT_TRUE(gone);
}

TEST(TextReaderDevice, GivenByReferenceIsTakenOver) {
    bool gone = false;
    Device& device = *new WatchedDevice(gone);
    {
        TextReader reader(device, ALL);
        EXPECT_EQ(reader.read(), 'a');
    }
    EXPECT_TRUE(gone);
}

TEST(TextReaderDevice, ProtectedByItsOwnerStays) {
    bool gone = false;
    WatchedDevice device(gone);
    ASSERT_TRUE(mem::protect(&device));
    { const TextReader reader(device, ALL); }
    EXPECT_FALSE(gone);
    mem::free(&device);
}

TEST(TextReaderDevice, ReadsFromStreamsThatStayTheCallers) {
    std::istringstream in("ab");
    std::stringstream inOut("cd");
    {
        TextReader fromInput(in, ALL);
        TextReader fromBoth(inOut, ALL);
        EXPECT_EQ(fromInput.read(), 'a');
        EXPECT_EQ(fromBoth.read(), 'c');
        EXPECT_EQ(fromInput.handle()->seekCapability(), 1);
        EXPECT_TRUE(fromBoth.handle()->canWrite());
    }
    EXPECT_EQ(in.get(), 'b');
    EXPECT_EQ(inOut.get(), 'd');
}

TEST(TextReaderDevice, FromFileReadsWithAllLineEnds) {
    const support::TempDir dir;
    const std::string path = dir.write("lines", "a\r\nb\rc");
    for (const int flags : {0, static_cast<int>(OPEN_READ), static_cast<int>(OPEN_READ_WRITE)}) {
        TextReader reader = TextReader::fromFile(path, flags);
        EXPECT_THAT(charactersOf(reader), ElementsAre('a', '\n', 'b', '\n', 'c')) << flags;
    }
    TextReader writeOnly = TextReader::fromFile(path, OPEN_WRITE);
    EXPECT_EQ(writeOnly.read(), -1);
}

TEST(TextReaderDevice, FromAMissingFileReadsNothing) {
    const support::TempDir dir;
    TextReader reader = TextReader::fromFile(dir / "missing");
    EXPECT_EQ(reader.peek(), -1);
    EXPECT_EQ(reader.readLine(), "");
}

}  // namespace
}  // namespace moxtel::io
