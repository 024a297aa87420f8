#include "allocation_failure.hpp"

#include <string>

#include <gtest/gtest.h>

#include <moxtel/file_stream.hpp>

#include "support/temp_dir.hpp"

namespace moxtel {
namespace {

TEST(AllocationFailure, LineIsReadWholeOrThrows) {
    const support::TempDir dir;
    const std::string path = dir.write("file", std::string(100000, 'a') + "\nb");
    withEveryAllocationFailing([&](const Attempt& attempt) {
        std::string line;
        const bool read = attempt([&] {
            io::InputFile in(path);
            std::getline(in, line);
        });
        EXPECT_EQ(line.size() == 100000, read);
    });
}

TEST(AllocationFailure, LinesAreWrittenWholeOrThrow) {
    const support::TempDir dir;
    const std::string path = dir / "file";
    const std::string cell(20000, 'a');
    const std::string lines = cell + cell + "\n" + cell + cell + cell + cell + cell + "\n";
    withEveryAllocationFailing([&](const Attempt& attempt) {
        dir.write("file", "");
        const bool written = attempt([&] {
            io::OutputFile out(path);
            out << cell << cell << std::endl;
            out << cell << cell << cell << cell << cell << std::endl;
            out.close();
        });
        const std::string content = support::fileContent(path);
        EXPECT_EQ(content == lines, written);
        EXPECT_TRUE(lines.starts_with(content));
        EXPECT_TRUE(content.empty() || content.back() == '\n');
    });
}

}  // namespace
}  // namespace moxtel
