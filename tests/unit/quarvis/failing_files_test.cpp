// Files that fail after they were opened.

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/file_stream.hpp>

#include <quarvis/rule.hpp>
#include <quarvis/transaction_reader.hpp>

#include "items.hpp"
#include "support/error_output.hpp"
#include "support/open_files.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSetHistogram;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;
using quarvis::rule::TransactionFile;
using quarvis::rule::TransactionSet;
using quarvis::test::setOf;
using support::ErrorOutput;
using support::openFiles;

/// Can be opened, but a read fails, since no page is mapped at address 0.
const std::string UNREADABLE = "/proc/self/mem";

/// Can be opened, but every write fails.
const std::string FULL = "/dev/full";

/// The message of the `FileError` that `action` throws. Expects that no file is left open.
std::string errorOf(const std::function<void()>& action) {
    const auto before = openFiles();
    std::string message = "nothing thrown";
    try {
        action();
    } catch (const moxtel::io::FileError& e) {
        message = e.what();
    }
    EXPECT_EQ(openFiles(), before);
    return message;
}

TEST(FailingFile, OfTransactionsIsTold) {
    TransactionSet transactions;
    EXPECT_EQ(errorOf([&] { transactions.readInto(UNREADABLE, '\t'); }),
              "cannot read /proc/self/mem: Input/output error");
    EXPECT_EQ(errorOf([&] { TransactionFile(UNREADABLE).stream().get(); }),
              "cannot read /proc/self/mem: Input/output error");
}

TEST(FailingFile, OfRulesToReadIsTold) {
    RuleSet rules;
    EXPECT_EQ(errorOf([&] { rules.readInto(UNREADABLE, '\t'); }),
              "cannot read /proc/self/mem: Input/output error");
}

TEST(FailingFile, OfRulesToWriteIsTold) {
    const ErrorOutput errors;
    EXPECT_EQ(errorOf([] { RuleSet().write(FULL); }),
              "cannot write /dev/full: No space left on device");
    RuleSet rules;
    rules[Rule(setOf({"ab"}), Item("cd"))].count = 1;
    EXPECT_EQ(errorOf([&] { rules.write(FULL); }),
              "cannot write /dev/full: No space left on device");
    EXPECT_EQ(errors.text(), "");
}

TEST(FailingFile, OfItemSetsIsTold) {
    ItemSetHistogram sets;
    sets[setOf({"ab"})] = 7;
    EXPECT_EQ(errorOf([&] { sets.write(FULL); }),
              "cannot write /dev/full: No space left on device");
}

}  // namespace
