// Every option in every form. Each option changes the result for the same table in a different way,
// so an option that sets the wrong threshold is detected.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::Outcome;
using tool::progress;
using tool::rulesFile;

// Four histories: a and b are in three of them, c is in two, {a,b} is in two, and {a,c} and {b,c}
// are in one each. Only the rule a => c spans four units of time; the others span one.
const std::string TABLE =
    "id\ttime\titem\n"
    "h1\t1\ta\nh1\t2\tb\n"
    "h2\t1\ta\nh2\t2\tb\n"
    "h3\t1\ta\nh3\t5\tc\n"
    "h4\t1\tc\nh4\t2\tb\n";

//                       count  union  support  confidence  lift  conviction  probability  certainty
const std::string A_B = "a => b\t2\t2\t0.5\t0.666667\t0.888889\t0.75\t0.666667\t2";
const std::string A_C = "a => c\t1\t1\t0.25\t0.333333\t0.666667\t0.75\t0.5\t1";
const std::string C_B = "c => b\t1\t1\t0.25\t0.5\t0.666667\t0.5\t0.333333\t0.5";

using Rules = std::vector<std::string>;
using Levels = std::vector<std::size_t>;

Outcome mined(const Rules& rules, const Levels& levels = {3, 3, 0}, unsigned maxOrder = 0) {
    return {.out = rulesFile(rules),
            .err = progress({.transactions = 8,
                             .histories = 4,
                             .levels = levels,
                             .maxOrder = maxOrder,
                             .rules = rules.size()})};
}

/// Passes the option with its value in every form, each time after `-c1`.
void expectEveryForm(const std::string& shortForm, const std::string& longForm,
                     const std::string& value, const Outcome& expected) {
    const std::vector<std::vector<std::string>> forms = {
        {shortForm, value},       {shortForm + value}, {shortForm + "=" + value},
        {shortForm + "=", value}, {longForm, value},   {longForm + "=" + value},
        {longForm + "=", value},
    };
    for (const std::vector<std::string>& form : forms) {
        std::vector<std::string> args{"-c1"};
        args.insert(args.end(), form.begin(), form.end());
        expectRun({.args = args, .input = TABLE}, expected);
    }
}

TEST(Options, NoThresholdKeepsEveryRule) {
    expectRun({.args = {"-c1"}, .input = TABLE}, mined({A_B, A_C, C_B}));
}

TEST(Options, CountInEveryForm) {
    expectEveryForm("-c", "--count", "2", mined({A_B}, {3, 1}));
}

TEST(Options, ConfidenceInEveryForm) {
    expectEveryForm("-C", "--confidence", "0.4", mined({A_B, C_B}));
}

TEST(Options, LiftInEveryForm) {
    expectEveryForm("-l", "--lift", "0.7", mined({A_B}));
}

TEST(Options, OrderInEveryForm) {
    expectEveryForm("-o", "--order", "1", mined({A_B, A_C, C_B}, {3, 3}, 1));
    expectEveryForm("-o", "--order", "2", mined({A_B, A_C, C_B}, {3, 3, 0}, 2));
}

TEST(Options, SupportInEveryForm) {
    expectEveryForm("-s", "--support", "0.3", mined({A_B}));
}

TEST(Options, ConvictionInEveryForm) {
    expectEveryForm("-V", "--conviction", "0.6", mined({C_B}));
}

TEST(Options, WindowInEveryForm) {
    expectEveryForm("-w", "--window", "3", mined({A_B, C_B}));
}

TEST(Options, VerboseInEveryFormChangesNothing) {
    for (const char* form : {"-v", "-v=", "--verbose", "--verbose="})
        expectRun({.args = {"-c1", form}, .input = TABLE}, mined({A_B, A_C, C_B}));
    expectRun({.args = {"-v", "-v", "-c1", "-", "-", "-v"}, .input = TABLE},
              mined({A_B, A_C, C_B}));
}

TEST(Options, LastOfSeveralCounts) {
    expectRun({.args = {"-c", "9", "--count=2", "-s.9", "--support", "0"}, .input = TABLE},
              mined({A_B}, {3, 1}));
    expectRun({.args = {"-c=1", "-V9", "--conviction=0.6", "-w1", "-w", "0"}, .input = TABLE},
              mined({C_B}));
}

TEST(Options, ThresholdsAreAppliedTogether) {
    expectRun({.args = {"-c1", "-C", "0.4", "-V", "0.6"}, .input = TABLE}, mined({C_B}));
    expectRun({.args = {"-c1", "-w3", "-l.7", "-V", "0.6"}, .input = TABLE}, mined({}));
    expectRun(
        {.args = {"-c1", "-C0.4", "-l0.6", "-o1", "-s0.2", "-V1", "-w9", "-v"}, .input = TABLE},
        mined({A_B, C_B}, {3, 3}, 1));
}

TEST(Options, TakeOneValueAndLeaveTheNextAsAPositional) {
    Outcome expected = {
        .err = progress(
            {.input = "2", .transactions = 8, .histories = 4, .levels = {3, 1}, .rules = 1}),
        .files = {{"2", TABLE}, {"3", rulesFile({A_B})}}};
    expectRun({.args = {"-c", "2", "2", "3"}, .files = {{"2", TABLE}}}, expected);
    expectRun({.args = {"-c2", "2", "3"}, .files = {{"2", TABLE}}}, expected);
    expectRun({.args = {"--count=2", "2", "-v", "3"}, .files = {{"2", TABLE}}}, expected);
}

}  // namespace
