// Small runs in which one system call or one allocation fails, each in turn.

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/support/run_tool.hpp"
#include "support/sanitized.hpp"

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using tool::Call;
using tool::Files;
using tool::Outcome;

/// Rows that fill several blocks and use every way of reading: a quoted cell, a carriage return, a
/// row that lacks cells, and an entity and an item too long to be stored inside a string object.
std::string table() {
    const std::string entity(50, 'e');
    const std::string item(100, 'i');
    std::string text = "entity\ttime\titems\n";
    for (int i = 0; i < 1000; ++i)
        text += entity + std::to_string(i % 5) + "\t" + std::to_string(i % 7) + "\t" + item + "\t" +
                static_cast<char>('a' + i % 3) + "\n";
    return text + "q\t1\t\"" + item + "\"\nr\t1\tx\r\ty\ns\n\n";
}

/// A run on files, and one on the standard streams.
const std::vector<Call>& calls() {
    static const std::vector<Call> BOTH = {
        {.args = {"-c2", "-w3", "in", "rules", "sets"}, .files = {{"in", table()}}},
        {.args = {"-c", "2", "--window=3", "-", "-", "-"}, .input = table()},
    };
    return BOTH;
}

/// A system call that fails, and its `errno`; 0 means that it transfers only one byte. See
/// support/faults.
struct Fault {
    const char* call;
    int reason;
    const char* goesOn = "";
};

/// Expects that the file is a prefix of the expected one and ends with a whole line.
void expectWholeLines(const std::string& expected, const std::string& actual) {
    EXPECT_TRUE(expected.starts_with(actual)) << actual;
    EXPECT_TRUE(actual.empty() || actual.back() == '\n') << actual;
}

class Faults : public testing::Test {
  protected:
    void SetUp() override {
        if (ADDRESS_SANITIZED)
            GTEST_SKIP() << "The address sanitizer has to be loaded before any other library.";
    }

    /// Runs `call` once for each system call that can have the fault. `check` compares the outcome
    /// with that of a run without a fault. Returns the number of faults.
    static int withEach(const Fault& fault, const Call& call,
                        const std::function<void(const Outcome&, const Outcome&)>& check) {
        const Outcome whole = tool::run(call);
        EXPECT_EQ(whole.status, 0);
        EXPECT_GT(whole.out.size() + whole.files.size(), 1U);
        Call faulty = call;
        faulty.environment = {std::string("LD_PRELOAD=") + FAULTS_PATH, ""};
        for (int nth = 0; nth < 100000; ++nth) {
            SCOPED_TRACE(std::string(fault.call) + " " + std::to_string(nth) + " " +
                         std::to_string(fault.reason) + fault.goesOn);
            faulty.environment[1] = "FAULT=" + std::string(fault.call) + " " + std::to_string(nth) +
                                    " " + std::to_string(fault.reason) + " " + fault.goesOn;
            Outcome outcome = tool::run(faulty);
            if (outcome.files.erase("fault") == 0) {
                expectWhole(whole, outcome);
                return nth;
            }
            check(whole, outcome);
            for (const auto& [name, content] : outcome.files)
                expectWholeLines(whole.files.at(name), content);
            expectWholeLines(whole.out, outcome.out);
            if (testing::Test::HasFailure())
                return nth;
        }
        ADD_FAILURE() << "no end of the calls";
        return 0;
    }

    static void expectWhole(const Outcome& whole, const Outcome& outcome) {
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, whole.out);
        EXPECT_EQ(outcome.err, whole.err);
        EXPECT_EQ(outcome.files, whole.files);
    }
};

TEST_F(Faults, AReadThatFailsEndsTheRun) {
    for (const Call& call : calls()) {
        const std::string input = call.input.empty() ? "in" : "standard input";
        const int reads = withEach({"read", EIO}, call, [&](const Outcome&, const Outcome& run) {
            EXPECT_EQ(run.status, -SIGABRT);
            EXPECT_THAT(run.err,
                        HasSubstr("what():  cannot read " + input + ": Input/output error\n"));
            EXPECT_EQ(run.files, call.files);
            EXPECT_EQ(run.out, "");
        });
        EXPECT_GT(reads, 3);
    }
}

TEST_F(Faults, AWriteThatFailsEndsTheRun) {
    for (const Call& call : calls())
        for (const char* goesOn : {"", "on"}) {
            const int writes = withEach(
                {"write", ENOSPC, goesOn}, call, [](const Outcome& whole, const Outcome& run) {
                    EXPECT_EQ(run.status, -SIGABRT);
                    EXPECT_THAT(run.err, AnyOf(HasSubstr("cannot write rules: No space left"),
                                               HasSubstr("cannot write sets: No space left"),
                                               HasSubstr("cannot write standard output: No space"),
                                               HasSubstr("cannot write standard error: No space")));
                    // A lost message must not cost any result.
                    if (run.err.find("standard error") != std::string::npos) {
                        EXPECT_EQ(run.out, whole.out);
                        EXPECT_EQ(run.files.size(), whole.files.size());
                    }
                });
            EXPECT_GT(writes, 20);
        }
}

TEST_F(Faults, AnInterruptedCallIsMadeAgain) {
    for (const Call& call : calls())
        for (const char* name : {"read", "write", "open"})
            withEach({name, EINTR}, call, expectWhole);
}

TEST_F(Faults, AShortTransferGoesOn) {
    for (const Call& call : calls())
        for (const char* name : {"read", "write"}) {
            EXPECT_GT(withEach({name, 0}, call, expectWhole), 3);
            withEach({name, 0, "on"}, call, expectWhole);
        }
}

/// A file that cannot be opened reads as empty or is not written.
TEST_F(Faults, AFileThatCannotBeOpenedIsNoError) {
    int nth = 0;
    const int opens =
        withEach({"open", EACCES}, calls()[0], [&nth](const Outcome& whole, const Outcome& run) {
            EXPECT_EQ(run.status, 0);
            Files expected = whole.files;
            if (nth == 0) {
                EXPECT_THAT(run.err, HasSubstr("Read in with 0 transaction(s)"));
                EXPECT_EQ(run.files.size(), whole.files.size());
            } else {
                expected.erase(nth == 1 ? "rules" : "sets");
                EXPECT_EQ(run.err, whole.err);
                EXPECT_EQ(run.files, expected);
            }
            ++nth;
        });
    EXPECT_EQ(opens, 3);
}

TEST_F(Faults, ANullDeviceThatCannotBeOpenedEndsTheRun) {
    Call call = calls()[0];
    call.closed = {0};
    int nth = 0;
    const int opens = withEach({"open", EMFILE}, call, [&nth](const Outcome&, const Outcome& run) {
        if (nth++ != 0)
            return;
        EXPECT_EQ(run.status, -SIGABRT);
        EXPECT_THAT(run.err, HasSubstr("cannot open /dev/null: Too many open files\n"));
    });
    EXPECT_EQ(opens, 4);
}

TEST_F(Faults, AnAllocationThatFailsEndsTheRunOrIsMadeUpFor) {
    for (const Call& call : calls())
        for (const char* goesOn : {"", "on"}) {
            const int allocations = withEach(
                {"malloc", ENOMEM, goesOn}, call, [](const Outcome& whole, const Outcome& run) {
                    if (run.status == 0)
                        return expectWhole(whole, run);
                    EXPECT_EQ(run.status, -SIGABRT);
                    EXPECT_THAT(run.err,
                                AnyOf(HasSubstr("bad_alloc"), HasSubstr("AllocationException")));
                });
            EXPECT_GT(allocations, 100);
        }
}

}  // namespace
