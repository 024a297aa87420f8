#include "memory_limit.hpp"

#include <sstream>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/sanitized.hpp"

namespace {

std::optional<std::uint64_t> availableIn(const std::string& meminfo) {
    std::istringstream in(meminfo);
    return availableMemory(in);
}

TEST(AvailableMemory, IsToldInKibibytes) {
    EXPECT_EQ(16'384'000U * std::uint64_t{1024}, availableIn("MemTotal:       32614548 kB\n"
                                                             "MemFree:         1239172 kB\n"
                                                             "MemAvailable:   16384000 kB\n"
                                                             "Buffers:          904584 kB\n"));
}

TEST(AvailableMemory, IsFoundOnAnyLine) {
    EXPECT_EQ(1024U, availableIn("MemAvailable: 1 kB\n"));
    EXPECT_EQ(2048U, availableIn("MemTotal: 9 kB\nMemAvailable: 2"));
    EXPECT_EQ(3072U, availableIn("\nHugePages_Total:       0\nMemAvailable:\t3 kB\n"));
}

TEST(AvailableMemory, MayBeNone) {
    EXPECT_EQ(0U, availableIn("MemAvailable: 0 kB\n"));
}

TEST(AvailableMemory, IsOfTheLineOfThisNameOnly) {
    EXPECT_EQ(std::nullopt, availableIn("NotMemAvailable: 1 kB\nMemAvailableNot: 2 kB\n"));
    EXPECT_EQ(std::nullopt, availableIn("Note: MemAvailable: 1 kB\n"));
}

TEST(AvailableMemory, IsUnknownWhenItIsNotTold) {
    EXPECT_EQ(std::nullopt, availableIn(""));
    EXPECT_EQ(std::nullopt, availableIn("\n\n"));
    EXPECT_EQ(std::nullopt, availableIn("MemTotal: 1 kB\nMemFree: 1 kB\n"));
    EXPECT_EQ(std::nullopt, availableIn("MemAvailable:\n"));
    EXPECT_EQ(std::nullopt, availableIn("MemAvailable: much\nMemAvailable: 1 kB\n"));
}

/// What this process may allocate once it has limited itself. It had better be a child.
rlim_t limitAfter(rlim_t limitBefore) {
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = limitBefore;
    setrlimit(RLIMIT_DATA, &limit);
    limitMemory();
    getrlimit(RLIMIT_DATA, &limit);
    return limit.rlim_cur;
}

TEST(LimitMemory, SetsALimit) {
    if (ADDRESS_SANITIZED)
        GTEST_SKIP() << "No limit in a build for the address sanitizer.";
    EXPECT_EXIT(_exit(limitAfter(RLIM_INFINITY) != RLIM_INFINITY ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

TEST(LimitMemory, LeavesALowerLimit) {
    constexpr rlim_t low = rlim_t{32} << 20;
    EXPECT_EXIT(_exit(limitAfter(low) == low ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
