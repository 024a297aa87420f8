// The runner of the other tests: it must report every difference.

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::Files;
using tool::usage;

const Files LEFT = {{"dir/", ""}, {"dir/file", "content"}};

/// Expects this outcome of a run that prints the usage text, in a directory with a file.
void expectHelp(const std::string& out, const std::string& err, int status, const Files& files) {
    expectRun({.args = {"-?"}, .files = {{"dir/file", "content"}}},
              {.out = out, .err = err, .status = status, .files = files});
}

TEST(RunTool, PassesWhatIsEqual) {
    expectHelp("", usage(), 0, LEFT);
}

TEST(RunTool, TellsTheCommandAndItsInput) {
    EXPECT_NONFATAL_FAILURE(expectRun({.args = {"-?"}, .input = "a\tb"}, {}),
                            "quarvis-rules '-?'\n  standard input:\n    a\\tb\n");
}

TEST(RunTool, TellsAnotherStatus) {
    EXPECT_NONFATAL_FAILURE(expectHelp("", usage(), 1, LEFT), "status: expected 1, actual 0\n");
}

TEST(RunTool, TellsAnotherOutput) {
    EXPECT_NONFATAL_FAILURE(expectHelp("x", usage(), 0, LEFT),
                            "standard output differs from byte 0 on\n"
                            "  expected (1 bytes):\n    x\n  actual (0 bytes):\n    \n");
}

TEST(RunTool, TellsAnotherErrorOutput) {
    EXPECT_NONFATAL_FAILURE(expectHelp("", usage() + "x", 0, LEFT),
                            "standard error differs from byte 678 on");
}

TEST(RunTool, TellsMissingAndUnexpectedFiles) {
    const static Files OTHER = {{"out\t", ""}};
    EXPECT_NONFATAL_FAILURE(expectHelp("", usage(), 0, OTHER),
                            "file out\\t is missing\n"
                            "file dir/ is unexpected:\n    \n"
                            "file dir/file is unexpected:\n    content\n");
}

TEST(RunTool, TellsAnotherContentOfAFile) {
    const static Files OTHER = {{"dir/", ""}, {"dir/file", "contents"}};
    EXPECT_NONFATAL_FAILURE(
        expectHelp("", usage(), 0, OTHER),
        "file dir/file differs from byte 7 on\n"
        "  expected (8 bytes):\n    contents\n  actual (7 bytes):\n    content\n");
}

}  // namespace
