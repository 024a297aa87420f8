/// Whatever is made from a reference to a device holds the proxy that the device names, and nothing
/// of the device itself.

#include <moxtel/device.hpp>

#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/binary.hpp>
#include <moxtel/memory.hpp>
#include <moxtel/row_parser.hpp>
#include <moxtel/text.hpp>

namespace moxtel::io {
namespace {

/// Reads the letter a for ever, keeps what is written, and writes down its destruction.
class Target : public Device {
  public:
    Target(std::string& written, bool& gone) : m_written(written), m_gone(gone) {}
    ~Target() override { m_gone = true; }

    using Device::read;
    using Device::write;

    bool canRead() const override { return true; }
    bool canWrite() const override { return true; }
    int seekCapability() const override { return 0; }
    std::size_t read(char* buf, std::size_t n) override {
        std::fill_n(buf, n, 'a');
        return n;
    }
    std::size_t write(const char* buf, std::size_t n) override {
        m_written.append(buf, n);
        return n;
    }

  private:
    std::string& m_written;
    bool& m_gone;
};

/// Sends streams to another device; itself it neither reads nor writes.
class Signpost : public Device {
  public:
    explicit Signpost(Device* target) : m_target(target) {}

    using Device::read;
    using Device::write;

    bool canRead() const override { return false; }
    bool canWrite() const override { return false; }
    int seekCapability() const override { return 0; }
    std::size_t read(char*, std::size_t) override { return 0; }
    std::size_t write(const char*, std::size_t) override { return 0; }
    Device* makeProxy() override { return m_target; }

  private:
    Device* m_target;
};

class DeviceProxy : public ::testing::Test {
  protected:
    // A stream that held the signpost itself would not take it over.
    void SetUp() override { ASSERT_TRUE(mem::protect(&m_signpost)); }
    void TearDown() override {
        mem::free(&m_signpost);
        EXPECT_TRUE(m_gone);
    }

    bool m_gone = false;
    std::string m_written;
    Device* m_target = new Target(m_written, m_gone);
    Signpost m_signpost{m_target};
};

TEST_F(DeviceProxy, IsWhatABinaryReaderReads) {
    BinaryReader reader(m_signpost, ENDIAN_BIG);
    EXPECT_EQ(&*reader.handle(), m_target);
    EXPECT_EQ(reader.endian(), ENDIAN_BIG);
    EXPECT_EQ(reader.readUI8(), 'a');
}

TEST_F(DeviceProxy, IsWhatABinaryWriterWritesTo) {
    BinaryWriter writer(m_signpost, ENDIAN_BIG);
    EXPECT_EQ(&*writer.handle(), m_target);
    EXPECT_EQ(writer.endian(), ENDIAN_BIG);
    EXPECT_EQ(writer.writeUI16(0x6263), 2U);
    EXPECT_EQ(m_written, "bc");
}

TEST_F(DeviceProxy, IsWhatATextReaderReads) {
    TextReader reader(m_signpost, TextStream::NL_DEFAULT);
    EXPECT_EQ(&*reader.handle(), m_target);
    EXPECT_EQ(reader.read(), 'a');
}

TEST_F(DeviceProxy, IsWhatATextWriterWritesTo) {
    TextWriter writer(m_signpost);
    EXPECT_EQ(&*writer.handle(), m_target);
    EXPECT_EQ(writer.writeLine("bc"), 3U);
    EXPECT_EQ(m_written, "bc\n");
}

TEST_F(DeviceProxy, IsWhatAParserMadeOverADeviceReads) {
    DelimitedRowParser parser(m_signpost, ',', nullptr, '\0');
    EXPECT_TRUE(parser.hasRow());
}

TEST_F(DeviceProxy, IsWhatAParserOpenedOnADeviceReads) {
    DelimitedRowParser parser = DelimitedRowParser::createRFC4180(',', nullptr);
    parser.open(m_signpost);
    EXPECT_TRUE(parser.hasRow());
}

}  // namespace
}  // namespace moxtel::io
