#include <moxtel/file_stream.hpp>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/open_files.hpp"
#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

using support::fileContent;
using support::TempDir;
using testing::ElementsAre;

/// The message of the `FileError` that `action` ends with.
std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileError& e) {
        return e.what();
    }
    return "nothing thrown";
}

/// A pair of connected sockets that keep what each write passes on apart.
class Messages {
  public:
    Messages() {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, m_ends.data()) != 0)
            throw std::runtime_error("socketpair");
    }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    ~Messages() {
        close(m_ends[0]);
        close(m_ends[1]);
    }

    int descriptor() const { return m_ends[0]; }

    /// What came since it was asked the last time, a write each.
    std::vector<std::string> take() const {
        std::vector<std::string> taken;
        std::string block(1 << 18, '\0');
        while (true) {
            const ssize_t n = recv(m_ends[1], block.data(), block.size(), 0);
            if (n <= 0)
                return taken;
            taken.push_back(block.substr(0, static_cast<std::size_t>(n)));
        }
    }

  private:
    std::array<int, 2> m_ends{};
};

/// Files may have so many bytes as long as this lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limits = m_before;
        limits.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limits);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

  private:
    void (*m_handler)(int);
    rlimit m_before{};
};

TEST(FileError, NamesTheFileAndTheReason) {
    const FileError error("write", "rules.tsv", ENOSPC);
    EXPECT_STREQ(error.what(), "cannot write rules.tsv: No space left on device");
    EXPECT_EQ(error.code(), std::errc::no_space_on_device);
}

TEST(InputFile, ReadsWhatTheFileHolds) {
    const TempDir dir;
    const std::string text = std::string(70000, 'a') + "\n" + std::string(70000, '\xff');
    InputFile in(dir.write("file", text));
    std::string line;
    EXPECT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, std::string(70000, 'a'));
    EXPECT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, std::string(70000, '\xff'));
    EXPECT_FALSE(std::getline(in, line));
    EXPECT_FALSE(in.bad());
}

TEST(InputFile, ThatCannotBeOpenedOrIsADirectoryIsEmpty) {
    const TempDir dir;
    InputFile missing(dir / "missing");
    EXPECT_TRUE(missing.fail());
    EXPECT_EQ(missing.get(), -1);
    InputFile directory(dir.path().string());
    EXPECT_EQ(directory.get(), -1);
    EXPECT_TRUE(directory.eof());
    EXPECT_FALSE(missing.bad() || directory.bad());
}

TEST(InputFile, AReadThatFailsThrows) {
    // No page is mapped where this file begins.
    const std::string path = "/proc/self/mem";
    const std::string message = "cannot read /proc/self/mem: Input/output error";
    EXPECT_EQ(errorOf([&] { InputFile(path).get(); }), message);
    EXPECT_EQ(errorOf([&] { InputFile(path).peek(); }), message);
    EXPECT_EQ(errorOf([&] {
                  char block[4];
                  InputFile(path).read(block, 4);
              }),
              message);
    InputFile in(path);
    std::string line;
    EXPECT_EQ(errorOf([&] { std::getline(in, line); }), message);
    EXPECT_TRUE(in.bad());
}

TEST(InputFile, OverADescriptorLeavesItOpen) {
    const TempDir dir;
    const int descriptor = open(dir.write("file", "ab").c_str(), O_RDONLY);
    EXPECT_EQ(InputFile(descriptor, "it").get(), 'a');
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(errorOf([&] { InputFile(descriptor, "it").get(); }),
              "cannot read it: Bad file descriptor");
}

TEST(InputFile, ClosesItsFile) {
    const TempDir dir;
    const std::string path = dir.write("file", "ab");
    const std::ptrdiff_t before = support::openFiles();
    { InputFile in(path); }
    EXPECT_EQ(support::openFiles(), before);
}

TEST(OutputFile, ReplacesWhatTheFileHeld) {
    const TempDir dir;
    const std::string path = dir.write("file", std::string(1000, 'x'));
    const std::ptrdiff_t before = support::openFiles();
    OutputFile out(path);
    out << "ab\n" << 5 << "\nno line end";
    out.close();
    EXPECT_EQ(support::openFiles(), before);
    EXPECT_EQ(fileContent(path), "ab\n5\nno line end");
}

TEST(OutputFile, ThatCannotBeOpenedIsNotWritten) {
    const TempDir dir;
    OutputFile out(dir / "missing/file");
    EXPECT_TRUE(out.fail());
    out << "ab" << std::endl;
    out.close();
    EXPECT_FALSE(out.bad());
    OutputFile directory(dir.path().string());
    directory << "ab" << std::endl;
    directory.close();
}

TEST(OutputFile, AFlushIsOneWrite) {
    const Messages messages;
    OutputFile out(messages.descriptor(), "it");
    out << "a\tb" << 5 << "\n"
        << "c\n";
    EXPECT_THAT(messages.take(), ElementsAre());
    out.flush();
    EXPECT_THAT(messages.take(), ElementsAre("a\tb5\nc\n"));
    out.flush();
    EXPECT_THAT(messages.take(), ElementsAre());
}

TEST(OutputFile, AFullBlockPassesOnWholeLines) {
    const Messages messages;
    OutputFile out(messages.descriptor(), "it");
    const std::string line = std::string(5000, 'a') + "\n";
    out << line << line;
    EXPECT_THAT(messages.take(), ElementsAre(line));
    out << "begun";
    EXPECT_THAT(messages.take(), ElementsAre());
    out.put('\n');
    out.close();
    EXPECT_THAT(messages.take(), ElementsAre(line + "begun\n"));
}

TEST(OutputFile, ALineLongerThanTheBlockIsOneWrite) {
    const Messages messages;
    OutputFile out(messages.descriptor(), "it");
    const std::string cell(20000, 'a');
    out << cell + "\n";
    EXPECT_THAT(messages.take(), ElementsAre(cell + "\n"));
    out << "b" << cell << cell << std::flush;
    EXPECT_THAT(messages.take(), ElementsAre("b" + cell + cell));
    for (int i = 0; i < 20000; ++i)
        out.put('c');
    EXPECT_THAT(messages.take(), ElementsAre());
    out.put('\n');
    out << std::flush;
    EXPECT_THAT(messages.take(), ElementsAre(std::string(20000, 'c') + "\n"));
}

TEST(OutputFile, AWriteThatFailsThrows) {
    const std::string message = "cannot write /dev/full: No space left on device";
    OutputFile flushed("/dev/full");
    EXPECT_EQ(errorOf([&] { flushed << "ab" << std::endl; }), message);
    EXPECT_TRUE(flushed.bad());
    OutputFile closed("/dev/full");
    closed << "ab";
    EXPECT_EQ(errorOf([&] { closed.close(); }), message);
    OutputFile large("/dev/full");
    const std::string line = std::string(10000, 'a') + "\n";
    EXPECT_EQ(errorOf([&] { large << line; }), message);
    const int descriptor = open("/dev/null", O_RDONLY);
    OutputFile notForWriting(descriptor, "it");
    EXPECT_EQ(errorOf([&] { notForWriting << std::endl; }), "cannot write it: Bad file descriptor");
    close(descriptor);
}

TEST(OutputFile, CloseTellsOfAFailureThatWasNotThrown) {
    OutputFile out("/dev/full");
    out.exceptions(std::ios::goodbit);
    out << "ab" << std::endl << "cd" << std::endl;
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(errorOf([&] { out.close(); }), "cannot write /dev/full: No space left on device");
    out.close();
}

TEST(OutputFile, AfterAFailureTheFileHasWholeLines) {
    const TempDir dir;
    const std::string path = dir / "file";
    const FileSizeLimit limit(20);
    OutputFile out(path);
    out << "first" << std::endl;
    EXPECT_EQ(errorOf([&] { out << "second\nthird is too long" << std::endl; }),
              "cannot write " + path + ": File too large");
    EXPECT_EQ(fileContent(path), "first\nsecond\n");
    EXPECT_EQ(errorOf([&] { out.close(); }), "cannot write " + path + ": File too large");
    EXPECT_EQ(fileContent(path), "first\nsecond\n");
}

TEST(OutputFile, ALongLineThatFailsIsTakenBack) {
    const TempDir dir;
    const std::string path = dir / "file";
    const FileSizeLimit limit(30000);
    OutputFile out(path);
    out << "first" << std::endl;
    const std::string line = std::string(40000, 'a') + "\n";
    EXPECT_NE(errorOf([&] { out << line; }), "nothing thrown");
    EXPECT_EQ(fileContent(path), "first\n");
}

TEST(OutputFile, ThatIsUnwoundKeepsWholeLines) {
    const TempDir dir;
    const std::string path = dir / "file";
    try {
        OutputFile out(path);
        out << "whole\nbegun";
        throw std::runtime_error("in the midst of a line");
    } catch (const std::runtime_error&) {}
    EXPECT_EQ(fileContent(path), "whole\n");
}

}  // namespace
}  // namespace moxtel::io
