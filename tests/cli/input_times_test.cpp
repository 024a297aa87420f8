// How the time of a row reads. A second row has the expected time as a plain number: the two rows
// form one transaction only if the times agree.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectReading;

struct Time {
    std::string text;
    std::string number;
};

void expectTimes(const std::vector<Time>& times) {
    for (const auto& [text, number] : times) {
        std::string table = "h\ne\t";
        table.append(text).append("\ta\ne\t").append(number).append("\tb\n");
        expectReading(table, 1, 1, {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
    }
}

TEST(InputTimes, NumbersThatDifferAreTwoTransactions) {
    expectReading("h\ne\t4294967295\ta\ne\t4294967294\tb\n", 2, 1,
                  {{1, {"a", "b"}}, {1, {"a"}}, {1, {"b"}}});
}

TEST(InputTimes, TextThatIsNoNumberIsZero) {
    expectTimes({{"x", "0"},
                 {"", "0"},
                 {" ", "0"},
                 {" 12", "0"},
                 {".5", "0"},
                 {"e3", "0"},
                 {"inf", "0"},
                 {"\xC3\xA9", "0"},
                 {"'1'", "0"}});
}

TEST(InputTimes, NumberEndsAtTheFirstOtherCharacter) {
    expectTimes({{"12x", "12"},
                 {"12 ", "12"},
                 {"1.9", "1"},
                 {"1e3", "1"},
                 {"0x10", "0"},
                 {"7-8", "7"},
                 {"2024-05-01", "2024"},
                 {"12:30", "12"},
                 {"1,000", "1"}});
}

TEST(InputTimes, LeadingZerosAndPlusDoNotMatter) {
    expectTimes({{"007", "7"}, {"+7", "7"}, {"+007", "7"}, {"000000000000000000007", "7"}});
}

TEST(InputTimes, SignWithoutDigitsIsZero) {
    expectTimes({{"+", "0"}, {"-", "0"}, {"--5", "0"}, {"+-5", "0"}, {"- 5", "0"}, {"-x", "0"}});
}

TEST(InputTimes, NegativeWrapsAround) {
    expectTimes({{"-1", "4294967295"},
                 {"-0", "0"},
                 {"-5", "4294967291"},
                 {"-12x", "4294967284"},
                 {"-4294967295", "1"}});
}

TEST(InputTimes, OverflowThatWrapsToLessIsZero) {
    expectTimes({{"4294967296", "0"},
                 {"4294967299", "0"},
                 {"8589934599", "0"},
                 {"42949672960", "0"},
                 {"-4294967296", "0"},
                 {"18446744073709551616", "0"}});
}

TEST(InputTimes, OverflowThatWrapsToMoreGoesUnnoticed) {
    expectTimes({{"10000000000", "1410065408"},
                 {"9999999999", "1410065407"},
                 {"9999999999x", "1410065407"},
                 {"5000000000", "705032704"},
                 {"-10000000000", "2884901888"}});
}

TEST(InputTimes, WrappedTimeIsTheLatest) {
    tool::expectRun(
        {.args = {"-c1"}, .input = "h\ne\t-1\ta\ne\t5\tb\n"},
        {.out = tool::rulesFile({"b => a\t1\t1\t1\t1\t1\tinf\t1\tinf"}),
         .err = tool::progress({.transactions = 2, .histories = 1, .levels = {2, 1}, .rules = 1})});
}

}  // namespace
