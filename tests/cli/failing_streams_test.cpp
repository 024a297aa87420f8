// Files and streams that fail after they were opened, and closed standard streams.

#include <csignal>
#include <string>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"
#include "support/sanitized.hpp"

namespace {

using testing::EndsWith;
using testing::StartsWith;
using tool::Call;
using tool::expectRun;
using tool::itemSetFile;
using tool::Outcome;
using tool::progress;
using tool::rejected;
using tool::rulesFile;

const std::string TABLE = "h\ne0\t1\tab\ne0\t2\tcd\n";
const std::string RULES = rulesFile({"ab => cd\t1\t1\t1\t1\t1\tinf\t1\tinf"});
const std::string SETS = itemSetFile({"1\t{ab,cd}", "1\t{ab}", "1\t{cd}"});

std::string mined(const std::string& itemSets = {}) {
    return progress(
        {.transactions = 2, .histories = 1, .levels = {2, 1}, .rules = 1, .itemSets = itemSets});
}

/// The last message of a run whose file fails.
std::string failure(const std::string& what) {
    return "terminate called after throwing an instance of 'moxtel::io::FileError'\n"
           "  what():  cannot " +
           what + "\n";
}

/// The messages that precede the number of written rules.
std::string minedUpToTheRules() {
    const std::string messages = mined();
    return messages.substr(0, messages.size() - std::string("1\n\n").size());
}

TEST(FullDevice, ForRulesEndsTheRun) {
    expectRun({.args = {"-c1", "-", "/dev/full", "sets"}, .input = TABLE},
              {.err = minedUpToTheRules() + failure("write /dev/full: No space left on device"),
               .status = -SIGABRT});
    expectRun(
        {.args = {"-c1"}, .input = TABLE, .opened = {{STDOUT_FILENO, "/dev/full"}}},
        {.err = minedUpToTheRules() + failure("write standard output: No space left on device"),
         .status = -SIGABRT});
}

TEST(FullDevice, ForItemSetsEndsTheRunAfterTheRules) {
    expectRun({.args = {"-c1", "-", "-", "/dev/full"}, .input = TABLE},
              {.out = RULES,
               .err = mined("/dev/full") + failure("write /dev/full: No space left on device"),
               .status = -SIGABRT});
}

TEST(FullDevice, ForMessagesEndsTheRunAfterItsResults) {
    expectRun({.args = {"-c1", "-", "-", "sets"},
               .input = TABLE,
               .opened = {{STDERR_FILENO, "/dev/full"}}},
              {.out = RULES, .status = -SIGABRT, .files = {{"sets", SETS}}});
}

TEST(FullDevice, ForTheUsageTextIsNoSuccess) {
    expectRun({.args = {"--help"}, .opened = {{STDERR_FILENO, "/dev/full"}}}, {.status = -SIGABRT});
    expectRun({.args = {"--bogus"}, .opened = {{STDOUT_FILENO, "/dev/full"}}},
              {.err = rejected("").err + failure("write standard output: No space left on device"),
               .status = -SIGABRT});
    expectRun({.args = {"-z"}, .opened = {{STDERR_FILENO, "/dev/full"}}}, {.status = -SIGABRT});
}

TEST(FullDevice, ForAMessageAboutTheArgumentsEndsTheRunAfterItsResults) {
    expectRun({.args = {"-c1", "--"}, .opened = {{STDERR_FILENO, "/dev/full"}}},
              {.out = rulesFile({}), .status = -SIGABRT});
}

TEST(BrokenPipe, EndsTheRun) {
    expectRun({.args = {"-c1"}, .input = TABLE, .broken = {STDOUT_FILENO}},
              {.err = minedUpToTheRules() + failure("write standard output: Broken pipe"),
               .status = -SIGABRT});
    expectRun({.args = {"-c1", "-", "rules"}, .input = TABLE, .broken = {STDERR_FILENO}},
              {.status = -SIGABRT, .files = {{"rules", RULES}}});
}

TEST(FileSize, ThatMayNotGrowLeavesWholeLines) {
    for (std::uint64_t most = 0; most < RULES.size(); ++most) {
        const Outcome outcome = tool::run({.args = {"-c1", "-", "rules"},
                                           .input = TABLE,
                                           .fileSize = most,
                                           .opened = {{STDERR_FILENO, "/dev/null"}}});
        EXPECT_EQ(outcome.status, -SIGABRT) << most;
        const std::size_t header = rulesFile({}).size();
        EXPECT_EQ(outcome.files.at("rules"), most < header ? "" : rulesFile({})) << most;
    }
    expectRun({.args = {"-c1", "-", "rules"},
               .input = TABLE,
               .fileSize = RULES.size(),
               .opened = {{STDERR_FILENO, "/dev/null"}}},
              {.files = {{"rules", RULES}}});
}

TEST(FileSize, IsNamedAsTheReason) {
    // The limit leaves room for the messages, which are shorter than the rules.
    const std::string item(2000, 'a');
    expectRun({.args = {"-c1", "-", "rules"},
               .input = "h\ne0\t1\t" + item + "\ne0\t2\tcd\n",
               .fileSize = 1000},
              {.err = minedUpToTheRules() + failure("write rules: File too large"),
               .status = -SIGABRT,
               .files = {{"rules", rulesFile({})}}});
}

TEST(UnreadableInput, EndsTheRun) {
    // The read fails, since no page is mapped at address 0.
    expectRun({.args = {"-c1", "/proc/self/mem", "rules"}},
              {.err = failure("read /proc/self/mem: Input/output error"), .status = -SIGABRT});
    // Standard input is the writing end of a pipe.
    expectRun({.args = {"-c1", "-", "rules"}, .broken = {STDIN_FILENO}},
              {.err = failure("read standard input: Bad file descriptor"), .status = -SIGABRT});
}

TEST(UnreadableInput, IsNoDirectory) {
    expectRun({.args = {"-c1"}, .opened = {{STDIN_FILENO, "/"}}},
              {.out = rulesFile({}), .err = progress({})});
}

TEST(UnreadableInput, MayBeOneThatMemoryDoesNotHold) {
    if (ADDRESS_SANITIZED)
        GTEST_SKIP() << "The address sanitizer needs more memory than there would be.";
    constexpr std::uint64_t memory = std::uint64_t{64} << 20;
    for (const char* input : {"/dev/zero", "-"}) {
        const Outcome outcome = tool::run({.args = {"-c1", input, "rules"},
                                           .memory = memory,
                                           .opened = {{STDIN_FILENO, "/dev/zero"}}});
        EXPECT_EQ(outcome.status, -SIGABRT);
        EXPECT_THAT(outcome.err, StartsWith("terminate called"));
        EXPECT_THAT(outcome.err, EndsWith("std::bad_alloc\n"));
        EXPECT_EQ(outcome.files, tool::Files());
    }
}

/// A closed descriptor acts as the null device; no file of the run receives its output.
TEST(ClosedStreams, AreTheNullDeviceInEveryCombination) {
    for (int combination = 0; combination < 8; ++combination) {
        SCOPED_TRACE(combination);
        Call call{.args = {"-c1", "in", "rules", "sets"}, .files = {{"in", TABLE}}};
        Outcome expected{.files = {{"in", TABLE}, {"rules", RULES}, {"sets", SETS}}};
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if ((combination >> descriptor & 1) != 0)
                call.closed.insert(descriptor);
        if (!call.closed.contains(STDERR_FILENO))
            expected.err = progress({.input = "in",
                                     .transactions = 2,
                                     .histories = 1,
                                     .levels = {2, 1},
                                     .rules = 1,
                                     .itemSets = "sets"});
        expectRun(call, expected);

        call.args = {"-c1"};
        const bool reads = !call.closed.contains(STDIN_FILENO);
        call.input = TABLE;
        expected.files = {{"in", TABLE}};
        if (!call.closed.contains(STDERR_FILENO))
            expected.err = reads ? mined() : progress({});
        if (!call.closed.contains(STDOUT_FILENO))
            expected.out = reads ? RULES : rulesFile({});
        expectRun(call, expected);
    }
}

}  // namespace
