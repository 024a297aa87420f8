#include <moxtel/device.hpp>

#include <fstream>
#include <ios>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <moxtel/exception.hpp>
#include <moxtel/text.hpp>

#include "../../../src/libmoxtel/in_place.hpp"
#include "device_reading.hpp"
#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

/// Sets a flag when it is destroyed.
template <class Stream>
class Flagged : public Stream {
  public:
    explicit Flagged(bool& gone) : m_gone(gone) {}
    ~Flagged() override { m_gone = true; }

  private:
    bool& m_gone;
};

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
    const support::TempDir dir;
    const Owner in(Device::wrap(new std::ifstream(dir / "missing")));
    EXPECT_EQ(in->read(), -1);
    const Owner out(Device::wrap(new std::ofstream(dir / "no_directory/file")));
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

TEST(StreamDevice, ANullStreamIsRefusedWhereItIsNeeded) {
    const Owner in(Device::wrap(static_cast<std::istream*>(nullptr)));
    const Owner out(Device::wrap(static_cast<std::ostream*>(nullptr)));
    const Owner inOut(Device::wrap(static_cast<std::iostream*>(nullptr)));
    char block[2] = {'a', 'b'};
    for (Device* device : {in.get(), inOut.get()}) {
        EXPECT_EQ(InPlace::input(*device), nullptr);
        EXPECT_THROW(device->read(), AccessException);
        EXPECT_THROW(device->read(block, 2), AccessException);
        EXPECT_THROW(device->seekg(0, WHENCE_SET), AccessException);
        EXPECT_THROW(device->tellg(), AccessException);
    }
    for (Device* device : {out.get(), inOut.get()}) {
        EXPECT_THROW(device->write('a'), AccessException);
        EXPECT_THROW(device->write(block, 2), AccessException);
        EXPECT_THROW(device->seekp(0, WHENCE_SET), AccessException);
        EXPECT_THROW(device->tellp(), AccessException);
        EXPECT_THROW(device->flush(), AccessException);
    }
    TextReader reader(Device::wrap(static_cast<std::istream*>(nullptr)), 0);
    EXPECT_THROW(reader.peek(), AccessException);
}

/// Gives one byte of a text at each read, and asks for the prompt before each.
class Terminal : public std::streambuf {
  public:
    Terminal(std::string text, std::ostringstream& prompts)
        : m_text(std::move(text)), m_prompts(prompts) {}

    /// What had been flushed of the prompts before each read.
    std::vector<std::string> seen;

  protected:
    int_type underflow() override {
        seen.push_back(m_prompts.str());
        if (m_next == m_text.size())
            return traits_type::eof();
        char* const begin = m_text.data() + m_next++;
        setg(begin, begin, begin + 1);
        return traits_type::to_int_type(*begin);
    }

  private:
    std::string m_text;
    std::ostringstream& m_prompts;
    std::size_t m_next = 0;
};

/// Passes on what is written when it is flushed.
class Holding : public std::stringbuf {
  public:
    explicit Holding(std::ostringstream& target) : m_target(target) {}

  protected:
    int sync() override {
        m_target << str();
        str("");
        return 0;
    }

  private:
    std::ostringstream& m_target;
};

TEST(StreamDevice, ATiedStreamIsFlushedBeforeEachReadThatMayWait) {
    std::ostringstream shown;
    Holding holding(shown);
    std::ostream prompts(&holding);
    Terminal terminal("ab", shown);
    std::istream in(&terminal);
    in.tie(&prompts);
    TextReader reader(in, 0);
    prompts << "1";
    EXPECT_EQ(reader.peek(), 'a');
    EXPECT_EQ(reader.read(), 'a');
    prompts << "2";
    char block[1];
    EXPECT_EQ(reader.handle()->read(block, 1), 1U);
    prompts << "3";
    EXPECT_EQ(reader.readLine(), "");
    EXPECT_THAT(terminal.seen, ::testing::ElementsAre("1", "12", "123"));
}

TEST(StreamDevice, SingleBytesFromTheBufferLeaveTheCountOfTheStream) {
    std::istringstream in("abcd");
    const Owner device(Device::wrap(in));
    char block[2];
    EXPECT_EQ(device->read(block, 2), 2U);
    EXPECT_EQ(device->read(), 'c');
    EXPECT_EQ(in.gcount(), 2);
    EXPECT_EQ(device->read(), 'd');
    EXPECT_EQ(device->read(), -1);
    EXPECT_EQ(in.gcount(), 0);
}

}  // namespace
}  // namespace moxtel::io
