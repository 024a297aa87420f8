#include <moxtel/device.hpp>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device_reading.hpp"
#include "support/open_files.hpp"
#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

using support::fileContent;
using support::openFiles;
using support::TempDir;

/// A device with the required operations only, over one byte.
class OneByteDevice : public Device {
  public:
    using Device::read;
    using Device::write;

    bool canRead() const override { return true; }
    bool canWrite() const override { return true; }
    int seekCapability() const override { return 0; }
    std::size_t read(char* buf, std::size_t n) override {
        const std::size_t count = std::min(n, m_left);
        std::fill_n(buf, count, 'x');
        m_left -= count;
        return count;
    }
    std::size_t write(const char*, std::size_t n) override { return std::min(n, m_left); }

  private:
    std::size_t m_left = 1;
};

TEST(FopenFlags, OnlyTheLowTwoBitsCount) {
    const std::vector<const char*> modes = {"", "r", "w", "rw"};
    for (int flags = 0; flags < 16; ++flags)
        EXPECT_STREQ(fopenFlags(flags), modes[static_cast<std::size_t>(flags % 4)]) << flags;
    EXPECT_STREQ(fopenFlags(-1), "rw");
}

TEST(FopenFlags, ZeroYieldsTheEmptyMode) {
    EXPECT_STREQ(fopenFlags(0), "");
}

TEST(FopenFlags, SevenOpensForReadingAndWriting) {
    EXPECT_STREQ(fopenFlags(7), "rw");
}

TEST(OpenModeAndSeekWhence, HaveTheirValues) {
    EXPECT_THAT((std::vector<int>{OPEN_READ, OPEN_WRITE, OPEN_READ_WRITE}),
                ::testing::ElementsAre(1, 2, 3));
    EXPECT_THAT((std::vector<int>{WHENCE_SET, WHENCE_CUR, WHENCE_END}),
                ::testing::ElementsAre(1, 2, 4));
}

TEST(Device, EveryKindHasItsCapabilities) {
    const TempDir dir;
    std::stringstream stream;
    std::istream& in = stream;
    std::ostream& out = stream;
    std::iostream& inOut = stream;
    char block[4] = {};
    const std::string path = dir.write("capabilities", "abc");
    struct Row {
        const char* kind;
        Device* device;
        bool canRead;
        bool canWrite;
        int seekCapability;
    };
    const std::vector<Row> rows = {
        {"read file", Device::fromFile(path, OPEN_READ), true, true, 0},
        {"read-write file", Device::fromFile(path, OPEN_READ_WRITE), true, true, 0},
        {"write file", Device::fromFile(path, OPEN_WRITE), false, false, 0},
        {"closed file", Device::fromFile(path, 0), false, false, 0},
        {"missing file", Device::fromFile(dir / "missing", OPEN_READ), true, true, 0},
        {"read array", Device::wrapArray(block, 4, OPEN_READ), true, true, 0},
        {"write array", Device::wrapArray(block, 4, OPEN_WRITE), false, false, 0},
        {"read-write array", Device::wrapArray(block, 4, OPEN_READ_WRITE), true, true, 0},
        {"string", Device::wrapString("abc", 0, 3), true, false, 0},
        {"istream reference", Device::wrap(in), true, false, 1},
        {"istream pointer", Device::wrap(new std::istringstream), true, false, 0},
        {"ostream reference", Device::wrap(out), false, true, 0},
        {"ostream pointer", Device::wrap(new std::ostringstream), false, true, 0},
        {"iostream reference", Device::wrap(inOut), true, true, 0},
        {"iostream pointer", Device::wrap(new std::stringstream), true, true, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.kind);
        const Owner device(row.device);
        EXPECT_EQ(device->canRead(), row.canRead);
        EXPECT_EQ(device->canWrite(), row.canWrite);
        EXPECT_EQ(device->seekCapability(), row.seekCapability);
        EXPECT_EQ(device->makeProxy(), device.get());
    }
}

/// Every kind that reads, over a given text.
struct Source {
    explicit Source(std::string content) : text(std::move(content)), in(text), inOut(text) {
        std::istream& input = in;
        devices.emplace_back("file", Device::fromFile(dir.write("source", text), OPEN_READ));
        devices.emplace_back("array", Device::wrapArray(text.data(), text.size(), OPEN_READ));
        devices.emplace_back("string", Device::wrapString(text, 0, text.size()));
        devices.emplace_back("istream reference", Device::wrap(input));
        devices.emplace_back("istream pointer", Device::wrap(new std::istringstream(text)));
        devices.emplace_back("iostream reference", Device::wrap(inOut));
        devices.emplace_back("iostream pointer", Device::wrap(new std::stringstream(text)));
    }

    TempDir dir;
    std::string text;
    std::istringstream in;
    std::stringstream inOut;
    std::vector<std::pair<const char*, Owner>> devices;
};

TEST(DeviceRead, ByteFFReadsLikeTheEndAndIsConsumed) {
    const Source source(
        "a\xff"
        "b");
    for (const auto& [kind, device] : source.devices) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(device->read(), 'a');
        EXPECT_EQ(device->read(), -1);
        EXPECT_EQ(device->read(), 'b');
        EXPECT_EQ(device->read(), -1);
        EXPECT_EQ(device->read(), -1);
    }
}

TEST(DeviceRead, BytesComeAsSignedChars) {
    std::string text;
    std::vector<int> values;
    for (int byte = 0; byte < 0xff; ++byte) {
        text += static_cast<char>(byte);
        values.push_back(byte < 0x80 ? byte : byte - 0x100);
    }
    const Source source(text);
    for (const auto& [kind, device] : source.devices)
        EXPECT_EQ(bytesOf(*device), values) << kind;
}

TEST(DeviceRead, ABlockHoldsTheBytesAsTheyAre) {
    const std::string text("a\xff\0\r\n\x80", 6);
    const Source source(text);
    for (const auto& [kind, device] : source.devices) {
        SCOPED_TRACE(kind);
        char buf[7] = "......";
        EXPECT_EQ(device->read(buf, 2), 2U);
        EXPECT_EQ(device->read(buf + 2, 4), 4U);
        EXPECT_EQ(std::string(buf, 7), text + std::string(1, '\0'));
        EXPECT_EQ(device->read(buf, 0), 0U);
    }
}

TEST(DeviceRead, AnEmptySourceIsAtItsEnd) {
    const Source source("");
    for (const auto& [kind, device] : source.devices)
        EXPECT_EQ(device->read(), -1) << kind;
}

TEST(DeviceDefaults, OneByteGoesThroughTheBlockOperations) {
    OneByteDevice device;
    EXPECT_TRUE(device.write('a'));
    EXPECT_EQ(device.read(), 'x');
    EXPECT_EQ(device.read(), -1);
    EXPECT_FALSE(device.write('a'));
}

TEST(DeviceDefaults, SeekingIsUnsupported) {
    OneByteDevice device;
    EXPECT_EQ(unsupported([&] { device.seekg(0, WHENCE_SET); }), "Stream incapable of seekg");
    EXPECT_EQ(unsupported([&] { device.seekp(0, WHENCE_SET); }), "Stream incapable of seekp");
    EXPECT_EQ(unsupported([&] { device.tellg(); }), "Stream incapable of tellg");
    EXPECT_EQ(unsupported([&] { device.tellp(); }), "Stream incapable of tellp");
    EXPECT_EQ(device.makeProxy(), &device);
}

TEST(FileDevice, ReadsShortAtTheEnd) {
    const TempDir dir;
    const Owner device(Device::fromFile(dir.write("short", "abc"), OPEN_READ));
    char buf[5] = "....";
    EXPECT_EQ(device->read(buf, 5), 3U);
    EXPECT_EQ(std::string(buf, 3), "abc");
    EXPECT_EQ(device->read(buf, 5), 0U);
}

TEST(FileDevice, WritesWhatIsThereAfterItsEnd) {
    const TempDir dir;
    const std::string path = dir / "written";
    {
        const Owner device(Device::fromFile(path, OPEN_WRITE));
        EXPECT_EQ(device->write("ab\xff", 3), 3U);
        EXPECT_TRUE(device->write('d'));
        EXPECT_EQ(device->tellp(), 4);
    }
    EXPECT_EQ(fileContent(path),
              "ab\xff"
              "d");
}

TEST(FileDevice, BothSeeksMoveTheOnePosition) {
    const TempDir dir;
    const Owner device(Device::fromFile(dir.write("seek", "abcdef"), OPEN_READ));
    device->seekg(2, WHENCE_SET);
    EXPECT_EQ(device->tellg(), 2);
    EXPECT_EQ(device->tellp(), 2);
    EXPECT_EQ(device->read(), 'c');
    device->seekp(1, WHENCE_CUR);
    EXPECT_EQ(device->read(), 'e');
    device->seekg(-1, WHENCE_END);
    EXPECT_EQ(device->read(), 'f');
    EXPECT_EQ(device->read(), -1);
    device->seekp(0, WHENCE_SET);
    EXPECT_EQ(device->read(), 'a');
}

TEST(FileDevice, OpenedForReadingAndWritingOnlyReads) {
    const TempDir dir;
    const std::string path = dir.write("read_write", "abc");
    {
        const Owner device(Device::fromFile(path, OPEN_READ_WRITE));
        EXPECT_EQ(device->read(), 'a');
        EXPECT_EQ(device->write("xyz", 3), 0U);
        EXPECT_FALSE(device->write('x'));
    }
    EXPECT_EQ(fileContent(path), "abc");
}

TEST(FileDevice, OpenedForWritingEmptiesTheFileAndDoesNotRead) {
    const TempDir dir;
    const std::string path = dir.write("write_only", "abc");
    const Owner device(Device::fromFile(path, OPEN_WRITE));
    EXPECT_EQ(fileContent(path), "");
    EXPECT_EQ(device->read(), -1);
}

TEST(FileDevice, ThatCannotBeOpenedIsEmptyAndTakesNothing) {
    const TempDir dir;
    const std::vector<Device*> devices = {
        Device::fromFile(dir / "missing", OPEN_READ),
        Device::fromFile(dir / "no_directory/file", OPEN_WRITE),
        Device::fromFile(dir.write("no_mode", "abc"), 0),
    };
    for (Device* opened : devices) {
        const Owner device(opened);
        char buf[3] = {'.', '.', '.'};
        EXPECT_EQ(device->read(), -1);
        EXPECT_EQ(device->read(buf, 3), 0U);
        EXPECT_EQ(device->write("abc", 3), 0U);
        EXPECT_FALSE(device->write('a'));
        device->seekg(1, WHENCE_SET);
        device->seekp(1, WHENCE_END);
        EXPECT_EQ(device->tellg(), -1);
        EXPECT_EQ(device->tellp(), -1);
        EXPECT_EQ(std::string(buf, 3), "...");
    }
    EXPECT_EQ(fileContent(dir / "no_mode"), "abc");
}

TEST(FileDevice, ClosesItsFile) {
    const TempDir dir;
    const std::string path = dir.write("file", "abc");
    const auto before = openFiles();
    {
        const Owner device(Device::fromFile(path, OPEN_READ));
        EXPECT_EQ(openFiles(), before + 1);
    }
    EXPECT_EQ(openFiles(), before);
}

TEST(ArrayDevice, StopsAtTheEndOfTheBlock) {
    char block[5] = "abcd";
    const Owner device(Device::wrapArray(block, 4, OPEN_READ_WRITE));
    char buf[10] = {};
    EXPECT_EQ(device->read(buf, 3), 3U);
    EXPECT_EQ(device->read(buf, 10), 1U);
    EXPECT_EQ(buf[0], 'd');
    EXPECT_EQ(device->read(), -1);
    EXPECT_EQ(device->read(buf, 10), 0U);
    EXPECT_FALSE(device->write('x'));
    EXPECT_EQ(device->write("xy", 2), 0U);
    EXPECT_STREQ(block, "abcd");
}

TEST(ArrayDevice, WritesShortAndNeverPastTheBlock) {
    char block[5] = "....";
    const Owner device(Device::wrapArray(block, 3, OPEN_WRITE));
    EXPECT_TRUE(device->write('a'));
    EXPECT_EQ(device->write("bcdef", 5), 2U);
    EXPECT_STREQ(block, "abc.");
}

TEST(ArrayDevice, ReadingAndWritingShareThePosition) {
    char block[5] = "abcd";
    const Owner device(Device::wrapArray(block, 4, OPEN_READ));
    EXPECT_EQ(device->read(), 'a');
    EXPECT_TRUE(device->write('X'));
    EXPECT_EQ(device->read(), 'c');
    EXPECT_EQ(device->tellg(), 3);
    EXPECT_EQ(device->tellp(), 3);
    EXPECT_STREQ(block, "aXcd");
}

TEST(ArrayDevice, SeekingIsIgnored) {
    char block[4] = "abc";
    const Owner device(Device::wrapArray(block, 3, OPEN_READ));
    device->read();
    device->seekg(0, WHENCE_SET);
    device->seekp(0, WHENCE_END);
    EXPECT_EQ(device->tellg(), 1);
    EXPECT_EQ(device->tellp(), 1);
    EXPECT_EQ(device->read(), 'b');
}

TEST(ArrayDevice, OverNoMemoryIsEmpty) {
    const Owner device(Device::wrapArray(nullptr, 0, OPEN_READ_WRITE));
    char buf[1] = {'.'};
    EXPECT_EQ(device->read(buf, 1), 0U);
    EXPECT_EQ(device->write(buf, 1), 0U);
    EXPECT_EQ(device->read(), -1);
}

TEST(StringDevice, ReadsThePartOfTheText) {
    const Owner device(Device::wrapString("abcdef", 2, 3));
    EXPECT_THAT(bytesOf(*device), ::testing::ElementsAre('c', 'd', 'e'));
    EXPECT_EQ(device->read(), -1);
}

TEST(StringDevice, CutsThePartToTheTextAndRefusesAStartBeyondIt) {
    const Owner rest(Device::wrapString("abc", 1, std::string::npos));
    EXPECT_THAT(bytesOf(*rest), ::testing::ElementsAre('b', 'c'));
    const Owner nothing(Device::wrapString("abc", 3, 1));
    EXPECT_EQ(nothing->read(), -1);
    EXPECT_THROW(Device::wrapString("abc", 4, 0), std::out_of_range);
}

TEST(StringDevice, HoldsACopyOfItsOwn) {
    std::string text = "abc";
    const Owner device(Device::wrapString(text, 0, 3));
    text = "xyz";
    EXPECT_EQ(device->read(), 'a');
}

TEST(StringDevice, ReadsShortAtTheEnd) {
    const Owner device(Device::wrapString("abc", 0, 3));
    char buf[5] = {};
    EXPECT_EQ(device->read(), 'a');
    EXPECT_EQ(device->read(buf, 5), 2U);
    EXPECT_STREQ(buf, "bc");
    EXPECT_EQ(device->read(buf, 5), 0U);
}

TEST(StringDevice, SeekingChangesNothing) {
    const Owner device(Device::wrapString("abc", 0, 3));
    device->read();
    device->read();
    device->seekg(0, WHENCE_SET);
    device->seekp(0, WHENCE_SET);
    EXPECT_EQ(device->tellg(), 2);
    EXPECT_EQ(device->tellp(), 2);
    EXPECT_EQ(device->read(), 'c');
}

TEST(StringDevice, TakesNoByte) {
    const Owner device(Device::wrapString("abc", 0, 3));
    EXPECT_EQ(device->write("xy", 2), 0U);
    EXPECT_FALSE(device->write('x'));
    EXPECT_THAT(bytesOf(*device), ::testing::ElementsAre('a', 'b', 'c'));
}

}  // namespace
}  // namespace moxtel::io
