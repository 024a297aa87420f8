// The files of a run whose results do not fit in memory.

#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"
#include "support/sanitized.hpp"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using tool::itemSetFile;
using tool::Outcome;
using tool::rulesFile;

constexpr std::uint64_t MEBIBYTE = std::uint64_t{1} << 20;

class MemoryLimit : public testing::Test {
  protected:
    void SetUp() override {
        if (ADDRESS_SANITIZED)
            GTEST_SKIP() << "The address sanitizer needs more memory than there would be.";
    }
};

/// Two histories with the same `items` items, one at time 1, the others at time 2. All 2^items - 1
/// subsets are frequent, and 2^(items - 1) - 1 of them have one rule each.
std::string shared(std::size_t items) {
    std::string rows = "h\n";
    for (const char* entity : {"e", "f"})
        for (std::size_t item = 0; item < items; ++item)
            rows += std::string(entity) + (item == 0 ? "\t1\t" : "\t2\t") +
                    static_cast<char>('a' + item) + "\n";
    return rows;
}

bool endsOutOfMemory(const Outcome& outcome) {
    return outcome.status == -SIGABRT && outcome.err.find("std::bad_alloc") != std::string::npos;
}

TEST_F(MemoryLimit, EndsASearchThatOutgrowsIt) {
    // 67 million sets.
    const Outcome outcome = tool::run(
        {.args = {"-c2", "-", "rules", "sets"}, .input = shared(26), .memory = 64 * MEBIBYTE});
    EXPECT_EQ(-SIGABRT, outcome.status);
    EXPECT_THAT(outcome.err,
                StartsWith("Read - with 4 transaction(s) over 2 history record(s).\n"
                           "\t ... calculated 26 frequent item sets of size 1. \n"
                           "\t ... calculated 325 frequent item sets of size 2 with 650 proposed "
                           "rules.\n"
                           "\t ... deducing rules of order 1.\n"));
    EXPECT_THAT(outcome.err, HasSubstr("std::bad_alloc"));
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(tool::Files(), outcome.files);
}

TEST_F(MemoryLimit, DoesNotMatterToARunThatFits) {
    tool::Call call{.args = {"-c2", "-", "rules", "sets"}, .input = shared(8)};
    const Outcome unlimited = tool::run(call);
    EXPECT_EQ(0, unlimited.status);
    call.memory = 64 * MEBIBYTE;
    tool::expectRun(call, unlimited);
}

/// Wherever in the run the memory runs out, the files that are left have only whole lines.
TEST_F(MemoryLimit, LeavesWholeLines) {
    tool::Call call{.args = {"-c2", "-", "rules", "sets"}, .input = shared(14)};
    const Outcome unlimited = tool::run(call);
    ASSERT_EQ(0, unlimited.status);
    std::size_t ended = 0;
    std::size_t completed = 0;
    for (std::uint64_t memory = MEBIBYTE / 2; completed == 0; memory += MEBIBYTE / 8) {
        ASSERT_LT(memory, 64 * MEBIBYTE);
        call.memory = memory;
        const Outcome outcome = tool::run(call);
        if (outcome.status == 0) {
            EXPECT_EQ(unlimited.files, outcome.files);
            ++completed;
            continue;
        }
        EXPECT_TRUE(endsOutOfMemory(outcome)) << outcome.status << ": " << outcome.err;
        for (const auto& [name, content] : outcome.files) {
            EXPECT_TRUE(unlimited.files.at(name).starts_with(content)) << name;
            EXPECT_TRUE(content.empty() || content.back() == '\n') << name;
        }
        ++ended;
    }
    EXPECT_GT(ended, 3U);
}

}  // namespace
