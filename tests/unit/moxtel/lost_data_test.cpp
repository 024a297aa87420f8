// What devices and writers tell when data that they took does not arrive.

#include <cstddef>
#include <ios>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/file_stream.hpp>
#include <moxtel/io.hpp>

#include "device_reading.hpp"
#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

using support::fileContent;
using support::TempDir;

/// Opens, but takes no byte; what is written is held back at first.
const std::string FULL = "/dev/full";

TEST(LostData, IsToldByTheFlushOfAFileDevice) {
    const Owner device(Device::fromFile(FULL, OPEN_WRITE));
    EXPECT_TRUE(device->flush());
    EXPECT_TRUE(device->write('a'));
    EXPECT_FALSE(device->flush());
    EXPECT_FALSE(device->close());
    EXPECT_FALSE(device->write('a'));
}

TEST(LostData, IsToldByTheCloseOfAFileDevice) {
    const Owner device(Device::fromFile(FULL, OPEN_WRITE));
    EXPECT_EQ(device->write("abc", 3), 3U);
    EXPECT_FALSE(device->close());
    EXPECT_FALSE(device->close());
}

TEST(LostData, IsNoneInAFileThatIsWhole) {
    const TempDir dir;
    const Owner device(Device::fromFile(dir / "file", OPEN_WRITE));
    EXPECT_EQ(device->write("abc", 3), 3U);
    EXPECT_EQ(fileContent(dir / "file"), "");
    EXPECT_TRUE(device->flush());
    EXPECT_EQ(fileContent(dir / "file"), "abc");
    EXPECT_TRUE(device->write('d'));
    EXPECT_TRUE(device->close());
    EXPECT_EQ(fileContent(dir / "file"), "abcd");
    EXPECT_EQ(device->write("e", 1), 0U);
    EXPECT_EQ(device->tellp(), -1);
    EXPECT_TRUE(device->close());
    EXPECT_EQ(fileContent(dir / "file"), "abcd");
}

TEST(LostData, IsNoneWhereAFileIsRead) {
    const TempDir dir;
    const Owner device(Device::fromFile(dir.write("file", "abc"), OPEN_READ));
    EXPECT_EQ(device->read(), 'a');
    EXPECT_TRUE(device->flush());
    EXPECT_EQ(device->read(), 'b');
    EXPECT_TRUE(device->close());
    EXPECT_EQ(device->read(), -1);
    const Owner missing(Device::fromFile(dir / "missing/file", OPEN_WRITE));
    EXPECT_TRUE(missing->flush());
    EXPECT_TRUE(missing->close());
}

TEST(LostData, IsToldByTheStreamOfADevice) {
    std::ostringstream whole;
    const Owner device(Device::wrap(whole));
    device->write("abc", 3);
    EXPECT_TRUE(device->flush());
    EXPECT_TRUE(device->close());
    EXPECT_TRUE(device->write('d'));
    EXPECT_EQ(whole.str(), "abcd");

    OutputFile full(FULL);
    full.exceptions(std::ios::goodbit);
    const Owner deviceOfFull(Device::wrap(full));
    EXPECT_EQ(deviceOfFull->write("abc", 3), 3U);
    EXPECT_FALSE(deviceOfFull->flush());

    std::istringstream in("abc");
    EXPECT_TRUE(Owner(Device::wrap(in))->flush());
}

TEST(LostData, IsToldByATextWriter) {
    TextWriter writer = TextWriter::fromFile(FULL);
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(writer.writeLine("abc"), 4U);
    EXPECT_FALSE(writer.flush());
    EXPECT_FALSE(writer.close());
    EXPECT_EQ(writer.writeLine("abc"), 0U);

    TextWriter closed = TextWriter::fromFile(FULL);
    EXPECT_EQ(closed.writeLine("abc"), 4U);
    EXPECT_FALSE(closed.close());
}

TEST(LostData, OfATextWriterIsWhatTheDeviceRefused) {
    char block[2];
    TextWriter writer(Device::wrapArray(block, 2, OPEN_READ_WRITE));
    EXPECT_EQ(writer.writeString("ab"), 2U);
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(writer.writeString("c"), 0U);
    EXPECT_FALSE(writer.flush());
    EXPECT_FALSE(TextWriter(writer).close());

    TextWriter none;
    EXPECT_TRUE(none.flush());
    EXPECT_EQ(none.writeLine(), 0U);
    EXPECT_FALSE(none.close());
}

TEST(LostData, IsToldByABinaryWriter) {
    BinaryWriter writer = BinaryWriter::fromFile(FULL);
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(writer.writeUI32(5), 4U);
    EXPECT_FALSE(writer.flush());
    EXPECT_FALSE(writer.close());

    char block[6];
    BinaryWriter small(block, sizeof block, ENDIAN_LITTLE);
    EXPECT_EQ(small.writeUI32(5), 4U);
    EXPECT_TRUE(small.close());
    EXPECT_EQ(small.writeNTS("abc", 0, 3), 2U);
    EXPECT_FALSE(small.flush());
    EXPECT_FALSE(BinaryWriter(small).close());
}

TEST(LostData, IsNoneInWhatWritersClosed) {
    const TempDir dir;
    TextWriter text = TextWriter::fromFile(dir / "text");
    BinaryWriter binary = BinaryWriter::fromFile(dir / "binary");
    text.writeLine("ab");
    binary.writeNTS("ab", 0, 2);
    EXPECT_TRUE(text.close());
    EXPECT_TRUE(binary.close());
    EXPECT_EQ(fileContent(dir / "text"), "ab\n");
    EXPECT_EQ(fileContent(dir / "binary"), std::string("ab\0", 3));
}

/// Throws for every byte.
class ThrowingDevice : public Device {
  public:
    using Device::read;
    using Device::write;
    bool canRead() const override { return false; }
    bool canWrite() const override { return true; }
    int seekCapability() const override { return 0; }
    std::size_t read(char*, std::size_t) override { return FAILED; }
    std::size_t write(const char*, std::size_t) override { throw std::runtime_error("refused"); }
};

TEST(TextWriter, CountsNoCharacterThatTheDeviceThrowsFor) {
    TextWriter writer(new ThrowingDevice);
    EXPECT_THROW(writer.write('a'), std::runtime_error);
    EXPECT_THROW(writer.writeLine(), std::runtime_error);
    EXPECT_EQ(writer.col(), 0U);
    EXPECT_EQ(writer.row(), 0U);
}

}  // namespace
}  // namespace moxtel::io
