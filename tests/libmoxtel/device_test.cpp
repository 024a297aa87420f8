#include <moxtel/device.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

namespace moxtel::io {
namespace {

using Owner = std::unique_ptr<Device>;

/// A file of the running test; tests may run side by side.
std::string pathOf(const std::string& name) {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    return ::testing::TempDir() + "device_" + test->name() + "_" + name;
}

std::string fileWith(const std::string& name, const std::string& content) {
    std::ofstream(pathOf(name), std::ios::binary) << content;
    return pathOf(name);
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/// What the device reads byte by byte up to its end.
std::vector<int> bytesOf(Device& device) {
    std::vector<int> bytes;
    for (int c = device.read(); c != -1; c = device.read())
        bytes.push_back(c);
    return bytes;
}

/// The message of the exception that `action` ends with.
std::string unsupported(const std::function<void()>& action) {
    try {
        action();
    } catch (const UnsupportedOperationException& e) {
        return e.what();
    }
    return "nothing thrown";
}

/// Sets a flag when it is destroyed.
template <class Stream>
class Flagged : public Stream {
  public:
    explicit Flagged(bool& gone) : m_gone(gone) {}
    ~Flagged() override { m_gone = true; }

  private:
    bool& m_gone;
};

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
    std::stringstream stream;
    std::istream& in = stream;
    std::ostream& out = stream;
    std::iostream& inOut = stream;
    char block[4] = {};
    const std::string path = fileWith("capabilities", "abc");
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
        {"missing file", Device::fromFile(pathOf("missing"), OPEN_READ), true, true, 0},
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
        const std::string path = fileWith("source", text);
        std::istream& input = in;
        devices.emplace_back("file", Device::fromFile(path, OPEN_READ));
        devices.emplace_back("array", Device::wrapArray(text.data(), text.size(), OPEN_READ));
        devices.emplace_back("string", Device::wrapString(text, 0, text.size()));
        devices.emplace_back("istream reference", Device::wrap(input));
        devices.emplace_back("istream pointer", Device::wrap(new std::istringstream(text)));
        devices.emplace_back("iostream reference", Device::wrap(inOut));
        devices.emplace_back("iostream pointer", Device::wrap(new std::stringstream(text)));
    }

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
    const Owner device(Device::fromFile(fileWith("short", "abc"), OPEN_READ));
    char buf[5] = "....";
    EXPECT_EQ(device->read(buf, 5), 3U);
    EXPECT_EQ(std::string(buf, 3), "abc");
    EXPECT_EQ(device->read(buf, 5), 0U);
}

TEST(FileDevice, WritesWhatIsThereAfterItsEnd) {
    const std::string path = pathOf("written");
    {
        const Owner device(Device::fromFile(path, OPEN_WRITE));
        EXPECT_EQ(device->write("ab\xff", 3), 3U);
        EXPECT_TRUE(device->write('d'));
        EXPECT_EQ(device->tellp(), 4);
    }
    EXPECT_EQ(contentOf(path),
              "ab\xff"
              "d");
}

TEST(FileDevice, BothSeeksMoveTheOnePosition) {
    const Owner device(Device::fromFile(fileWith("seek", "abcdef"), OPEN_READ));
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
    const std::string path = fileWith("read_write", "abc");
    {
        const Owner device(Device::fromFile(path, OPEN_READ_WRITE));
        EXPECT_EQ(device->read(), 'a');
        EXPECT_EQ(device->write("xyz", 3), 0U);
        EXPECT_FALSE(device->write('x'));
    }
    EXPECT_EQ(contentOf(path), "abc");
}

TEST(FileDevice, OpenedForWritingEmptiesTheFileAndDoesNotRead) {
    const std::string path = fileWith("write_only", "abc");
    const Owner device(Device::fromFile(path, OPEN_WRITE));
    EXPECT_EQ(contentOf(path), "");
    EXPECT_EQ(device->read(), -1);
}

TEST(FileDevice, ThatCannotBeOpenedIsEmptyAndTakesNothing) {
    const std::vector<Device*> devices = {
        Device::fromFile(pathOf("missing"), OPEN_READ),
        Device::fromFile(pathOf("no_directory/file"), OPEN_WRITE),
        Device::fromFile(fileWith("no_mode", "abc"), 0),
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
    EXPECT_EQ(contentOf(pathOf("no_mode")), "abc");
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

TEST(StreamDevice, AReadThatMeetsTheEndFailsWithItsBytesInTheBuffer) {
    std::istringstream in("abc");
    std::istream& input = in;
    const Owner device(Device::wrap(input));
    char buf[5] = {};
    EXPECT_EQ(device->read(buf, 5), Device::FAILED);
    EXPECT_STREQ(buf, "abc");
    buf[0] = '.';
    EXPECT_EQ(device->read(buf, 5), Device::FAILED);
    EXPECT_STREQ(buf, ".bc");
}

TEST(StreamDevice, AReadOfExactlyTheRestSucceeds) {
    const Owner device(Device::wrap(new std::istringstream("abc")));
    char buf[3];
    EXPECT_EQ(device->read(buf, 3), 3U);
    EXPECT_EQ(device->read(buf, 1), Device::FAILED);
}

TEST(StreamDevice, AStreamAtItsEndIsNotReadAgain) {
    std::stringstream stream("a");
    const Owner device(Device::wrap(stream));
    EXPECT_EQ(device->read(), 'a');
    EXPECT_EQ(device->read(), -1);
    EXPECT_TRUE(stream.eof());
    stream.clear(std::ios::eofbit);
    stream.str("b");
    EXPECT_EQ(device->read(), -1);
    EXPECT_FALSE(stream.fail());
    stream.clear();
    EXPECT_EQ(device->read(), 'b');
}

TEST(StreamDevice, AFailedStreamFails) {
    std::stringstream stream("abc");
    const Owner device(Device::wrap(stream));
    stream.setstate(std::ios::failbit);
    char buf[1];
    EXPECT_EQ(device->read(buf, 1), Device::FAILED);
    EXPECT_EQ(device->write("x", 1), Device::FAILED);
    EXPECT_EQ(device->read(), -1);
    EXPECT_FALSE(device->write('x'));
    stream.clear(std::ios::badbit);
    EXPECT_EQ(device->read(buf, 1), Device::FAILED);
    EXPECT_EQ(device->write("x", 1), Device::FAILED);
    stream.clear();
    EXPECT_EQ(device->read(), 'a');
    EXPECT_EQ(stream.str(), "abc");
}

TEST(StreamDevice, AFileStreamThatIsNotOpenIsEmpty) {
    const Owner in(Device::wrap(new std::ifstream(pathOf("missing"))));
    EXPECT_EQ(in->read(), -1);
    const Owner out(Device::wrap(new std::ofstream(pathOf("no_directory/file"))));
    EXPECT_EQ(out->write("a", 1), Device::FAILED);
}

TEST(StreamDevice, TheDirectionThatTheStreamLacksFailsWithoutTouchingIt) {
    std::stringstream stream("abc");
    std::istream& input = stream;
    std::ostream& output = stream;
    const Owner in(Device::wrap(input));
    const Owner out(Device::wrap(output));
    char buf[2] = {'.', '.'};
    EXPECT_EQ(in->write("xy", 2), Device::FAILED);
    EXPECT_FALSE(in->write('x'));
    EXPECT_EQ(out->read(buf, 2), Device::FAILED);
    EXPECT_EQ(out->read(), -1);
    EXPECT_EQ(std::string(buf, 2), "..");
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.str(), "abc");
    EXPECT_EQ(in->read(), 'a');
}

TEST(StreamDevice, WritesWhole) {
    std::ostringstream out;
    const Owner device(Device::wrap(out));
    EXPECT_EQ(device->write("ab\xff", 3), 3U);
    EXPECT_EQ(device->write("", 0), 0U);
    EXPECT_TRUE(device->write('d'));
    EXPECT_EQ(out.str(),
              "ab\xff"
              "d");
}

/// A sink of three bytes that tells its position, if at all, as `scale` times the bytes taken.
class SmallSink : public std::streambuf {
  public:
    explicit SmallSink(int scale) : m_scale(scale) {}

  protected:
    int_type overflow(int_type c) override {
        if (m_taken == 3)
            return traits_type::eof();
        ++m_taken;
        return traits_type::not_eof(c);
    }
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override {
        return m_scale == 0 ? -1 : m_taken * m_scale;
    }

  private:
    int m_scale;
    int m_taken = 0;
};

TEST(StreamDevice, AWriteCountsHowFarThePositionMoved) {
    SmallSink sink(2);
    std::ostream out(&sink);
    const Owner device(Device::wrap(out));
    EXPECT_EQ(device->write("ab", 2), 4U);
    EXPECT_FALSE(device->write('c'));
}

TEST(StreamDevice, AWriteWithoutAPositionCountsItsBytes) {
    SmallSink sink(0);
    std::ostream out(&sink);
    const Owner device(Device::wrap(out));
    EXPECT_EQ(device->write("ab", 2), 2U);
    EXPECT_TRUE(device->write('c'));
}

TEST(StreamDevice, AWriteThatTheSinkCutsShortFails) {
    SmallSink sink(1);
    std::ostream out(&sink);
    const Owner device(Device::wrap(out));
    EXPECT_EQ(device->write("abcd", 4), Device::FAILED);
    EXPECT_FALSE(device->write('e'));
}

TEST(StreamDevice, AnInputStreamSeeksAndTellsItsReadPositionOnly) {
    std::istringstream in("abcdef");
    std::istream& input = in;
    const Owner reference(Device::wrap(input));
    const Owner pointer(Device::wrap(new std::istringstream("abcdef")));
    for (Device* device : {reference.get(), pointer.get()}) {
        device->seekg(2, WHENCE_SET);
        EXPECT_EQ(device->read(), 'c');
        device->seekg(1, WHENCE_CUR);
        EXPECT_EQ(device->read(), 'e');
        device->seekg(-1, WHENCE_END);
        EXPECT_EQ(device->tellg(), 5);
        device->seekg(0, static_cast<SeekWhence>(3));
        EXPECT_EQ(device->tellg(), 5);
        EXPECT_EQ(unsupported([&] { device->seekp(0, WHENCE_SET); }), "Stream incapable of seekp");
        EXPECT_EQ(unsupported([&] { device->tellp(); }), "Stream incapable of tellp");
    }
}

TEST(StreamDevice, AnOutputStreamSeeksAndTellsItsWritePositionOnly) {
    std::ostringstream out;
    const Owner reference(Device::wrap(out));
    const Owner pointer(Device::wrap(new std::ostringstream));
    for (Device* device : {reference.get(), pointer.get()}) {
        device->write("abcdef", 6);
        device->seekp(2, WHENCE_SET);
        device->write('X');
        device->seekp(1, WHENCE_CUR);
        EXPECT_EQ(device->tellp(), 4);
        device->write('Y');
        device->seekp(-1, WHENCE_END);
        device->seekp(0, static_cast<SeekWhence>(0));
        device->write('Z');
        EXPECT_EQ(device->tellp(), 6);
        EXPECT_EQ(unsupported([&] { device->seekg(0, WHENCE_SET); }), "Stream incapable of seekg");
        EXPECT_EQ(unsupported([&] { device->tellg(); }), "Stream incapable of tellg");
    }
    EXPECT_EQ(out.str(), "abXdYZ");
}

TEST(StreamDevice, AnInputOutputStreamKeepsTwoPositions) {
    std::stringstream stream("abcdef");
    const Owner reference(Device::wrap(stream));
    const Owner pointer(Device::wrap(new std::stringstream("abcdef")));
    for (Device* device : {reference.get(), pointer.get()}) {
        device->seekg(1, WHENCE_SET);
        device->seekp(3, WHENCE_SET);
        device->write('X');
        EXPECT_EQ(device->tellg(), 1);
        EXPECT_EQ(device->tellp(), 4);
        EXPECT_THAT(bytesOf(*device), ::testing::ElementsAre('b', 'c', 'X', 'e', 'f'));
    }
    EXPECT_EQ(stream.str(), "abcXef");
}

TEST(StreamDevice, AStreamGivenByPointerIsDeletedWithTheDevice) {
    bool gone[3] = {};
    std::istream* in = new Flagged<std::istringstream>(gone[0]);
    std::ostream* out = new Flagged<std::ostringstream>(gone[1]);
    std::iostream* inOut = new Flagged<std::stringstream>(gone[2]);
    Owner devices[] = {Owner(Device::wrap(in)), Owner(Device::wrap(out)),
                       Owner(Device::wrap(inOut))};
    EXPECT_THAT(gone, ::testing::Each(false));
    for (Owner& device : devices)
        device.reset();
    EXPECT_THAT(gone, ::testing::Each(true));
}

TEST(StreamDevice, AStreamGivenByReferenceSurvivesTheDevice) {
    bool gone[3] = {};
    Flagged<std::istringstream> in(gone[0]);
    Flagged<std::ostringstream> out(gone[1]);
    Flagged<std::stringstream> inOut(gone[2]);
    for (Device* device : {Device::wrap(in), Device::wrap(out), Device::wrap(inOut)})
        delete device;
    EXPECT_THAT(gone, ::testing::Each(false));
}

TEST(StreamDevice, ANullStreamIsLetGo) {
    const Owner in(Device::wrap(static_cast<std::istream*>(nullptr)));
    const Owner out(Device::wrap(static_cast<std::ostream*>(nullptr)));
    const Owner inOut(Device::wrap(static_cast<std::iostream*>(nullptr)));
    EXPECT_TRUE(in->canRead());
    EXPECT_TRUE(out->canWrite());
    EXPECT_TRUE(inOut->canRead());
}

}  // namespace
}  // namespace moxtel::io
