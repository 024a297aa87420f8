// Which rules are kept when a measure equals the threshold. A threshold is parsed digit by digit in
// single precision and then widened; measures have double precision.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::progress;
using tool::rulesFile;

/// Rows of `n` histories whose names begin with `prefix`: one item at time 1, another at time 2. A
/// space means no item.
std::string histories(const std::string& prefix, int n, char first, char second = ' ') {
    std::string rows;
    for (int i = 0; i < n; ++i) {
        const std::string key = prefix + std::to_string(i);
        rows += key + "\t1" + (first == ' ' ? "\n" : std::string("\t") + first + "\n");
        if (second != ' ')
            rows += key + "\t2\t" + second + "\n";
    }
    return rows;
}

struct Bound {
    /// A fraction of the histories, and the same fraction as the decimal text of the option.
    int part;
    int whole;
    std::string decimal;
    bool kept;
};

/// `part` of `whole` histories have a and then b, the others only a. So support and confidence of
/// a => b are both part / whole. The decimal is the value of `option`.
void expectBound(const std::string& option, const Bound& bound) {
    const std::string part = std::to_string(bound.part);
    // Six digits are enough for each fraction here, and the option's text is its shortest form.
    const std::string shown = bound.decimal.front() == '.' ? "0" + bound.decimal : bound.decimal;
    std::vector<std::string> rules;
    if (bound.kept)
        rules.push_back("a => b\t" + part + "\t" + part + "\t" + shown + "\t" + shown +
                        "\t1\t1\t1\tinf");
    expectRun({.args = {"-c1", option, bound.decimal},
               .input = "h\n" + histories("x", bound.part, 'a', 'b') +
                        histories("y", bound.whole - bound.part, 'a')},
              {.out = rulesFile(rules),
               .err = progress({.transactions = static_cast<std::size_t>(bound.whole + bound.part),
                                .histories = static_cast<std::size_t>(bound.whole),
                                .levels = {2, 1},
                                .rules = rules.size()})});
}

TEST(Thresholds, FractionsOfTwoAreExactAndInclusive) {
    for (const Bound& bound : {Bound{1, 4, "0.25", true}, Bound{2, 4, "0.5", true},
                               Bound{3, 4, "0.75", true}, Bound{1, 2, ".5", true}}) {
        expectBound("-s", bound);
        expectBound("-C", bound);
    }
}

TEST(Thresholds, DecimalAboveItsFractionDropsTheRule) {
    // In double precision all of these would be kept. In single precision with a single rounding,
    // the first six would be kept.
    for (const Bound& bound :
         {Bound{7, 20, "0.35", false}, Bound{3, 25, "0.12", false}, Bound{13, 20, "0.65", false},
          Bound{9, 10, "0.9", false}, Bound{6, 25, "0.24", false}, Bound{24, 25, "0.96", false},
          Bound{1, 10, "0.1", false}, Bound{1, 5, "0.2", false}, Bound{3, 5, "0.6", false}}) {
        expectBound("-s", bound);
        expectBound("-C", bound);
    }
}

TEST(Thresholds, DecimalBelowItsFractionKeepsTheRule) {
    // In single precision with a single rounding, the first two would be dropped.
    for (const Bound& bound : {Bound{1, 20, "0.05", true}, Bound{18, 25, "0.72", true},
                               Bound{7, 10, "0.7", true}, Bound{2, 25, "0.08", true}}) {
        expectBound("-s", bound);
        expectBound("-C", bound);
    }
}

TEST(Thresholds, PowersOfATenthAreFormedInDoublePrecision) {
    const std::string table = "h\n" + histories("x", 1, 'a', 'b') + histories("y", 19, 'a');
    expectRun(
        {.args = {"-c1", "-s5e-2"}, .input = table},
        {.out = rulesFile({"a => b\t1\t1\t0.05\t0.05\t1\t1\t1\tinf"}),
         .err = progress({.transactions = 21, .histories = 20, .levels = {2, 1}, .rules = 1})});
}

TEST(Thresholds, LiftAtItsDecimal) {
    // Of twenty histories ten have a, ten have b, and three have both: lift 0.15 / (0.5 * 0.5).
    const std::string table = "h\n" + histories("x", 3, 'a', 'b') + histories("y", 7, 'a') +
                              histories("z", 7, 'b') + histories("w", 3, ' ');
    const std::string rule = "a => b\t3\t3\t0.15\t0.3\t0.6\t0.714286\t0.3\t0.428571";
    tool::Progress run{.transactions = 23, .histories = 20, .levels = {2, 1}};
    expectRun({.args = {"-c1", "-l0.6"}, .input = table},
              {.out = rulesFile({}), .err = progress(run)});
    run.rules = 1;
    expectRun({.args = {"-c1", "-l0.59999"}, .input = table},
              {.out = rulesFile({rule}), .err = progress(run)});
}

TEST(Thresholds, ConvictionAtItsDecimal) {
    // Of twenty histories thirteen have b, and two have a, one of them with b: conviction
    // (1 - 0.65) / (1 - 0.5).
    const std::string table = "h\n" + histories("x", 1, 'a', 'b') + histories("y", 1, 'a') +
                              histories("z", 12, 'b') + histories("w", 6, ' ');
    const std::string rule = "a => b\t1\t1\t0.05\t0.5\t0.769231\t0.7\t0.0769231\t0.0833333";
    tool::Progress run{.transactions = 21, .histories = 20, .levels = {2, 1}};
    expectRun({.args = {"-c1", "-V0.7"}, .input = table},
              {.out = rulesFile({}), .err = progress(run)});
    run.rules = 1;
    expectRun({.args = {"-c1", "-V0.70001"}, .input = table},
              {.out = rulesFile({rule}), .err = progress(run)});
}

// Of eight histories three have a and then b, one only a, and one only b: conviction 0.5 / 0.25.
std::string ofConvictionTwo() {
    return "h\n" + histories("x", 3, 'a', 'b') + histories("y", 1, 'a') + histories("z", 1, 'b') +
           histories("w", 3, ' ');
}

const std::string OF_CONVICTION_TWO = "a => b\t3\t3\t0.375\t0.75\t1.5\t2\t0.75\t3";

void expectConvictionTwo(const std::vector<std::string>& maximums, bool kept) {
    const std::vector<std::string> rules =
        kept ? std::vector<std::string>{OF_CONVICTION_TWO} : std::vector<std::string>{};
    for (const std::string& maximum : maximums)
        expectRun(
            {.args = {"-c1", maximum}, .input = ofConvictionTwo()},
            {.out = rulesFile(rules),
             .err = progress(
                 {.transactions = 11, .histories = 8, .levels = {2, 1}, .rules = rules.size()})});
}

TEST(Thresholds, GreatestConvictionIsInclusive) {
    expectConvictionTwo({"-V2", "-V2.0", "-V2.01", "-V1e30", "-Vinf"}, true);
    expectConvictionTwo({"-V1.99", "-V1", "-V0"}, false);
}

TEST(Thresholds, ConvictionOfMinusThreeIsInfinityAndOfZeroIsZero) {
    expectConvictionTwo({"-V-3", "-V=-3", "--conviction=-3", "-V-.01", "-V-inf", "-V-e-2"}, true);
    expectConvictionTwo({"-V0", "-V-0", "-V-", "-V+"}, false);
}

TEST(Thresholds, OtherLowerBoundsAreInclusive) {
    expectConvictionTwo({"-l1.5", "-C.75", "-s.375", "-c3"}, true);
    expectConvictionTwo({"-l1.51", "-C.76", "-s.376", "-C2", "-s2"}, false);
}

TEST(Thresholds, InfiniteConvictionPassesOnlyAnInfiniteMaximum) {
    const std::string table = "h\ne\t1\ta\ne\t2\tb\n";
    const tool::Progress none{.transactions = 2, .histories = 1, .levels = {2, 1}};
    tool::Progress one = none;
    one.rules = 1;
    for (const char* maximum : {"-V1e38", "-V0", "-Vnan"})
        expectRun({.args = {"-c1", maximum}, .input = table},
                  {.out = rulesFile({}), .err = progress(none)});
    for (const char* maximum : {"-Vinf", "-V-1", "-V1e39", "-v"})
        expectRun({.args = {"-c1", maximum}, .input = table},
                  {.out = rulesFile({"a => b\t1\t1\t1\t1\t1\tinf\t1\tinf"}), .err = progress(one)});
}

TEST(Thresholds, NegativeMinimumsKeepEveryRule) {
    expectConvictionTwo({"-C-1", "-l=-2.5", "-s-inf", "-C-0"}, true);
}

TEST(Thresholds, RuleThatFiresInTooFewHistoriesIsDropped) {
    // Two histories have a and b, but only one has a before b.
    const std::string table = "h\ne1\t1\ta\ne1\t2\tb\ne2\t1\ta\tb\ne3\t1\tb\ne4\t1\tb\n";
    expectRun({.args = {"-c1"}, .input = table},
              {.out = rulesFile({"a => b\t1\t2\t0.25\t1\t1\tinf\t0.5\t1"}),
               .err = progress({.transactions = 5, .histories = 4, .levels = {2, 1}, .rules = 1})});
    expectRun({.args = {"-c2"}, .input = table},
              {.out = rulesFile({}),
               .err = progress({.transactions = 5, .histories = 4, .levels = {2, 1}})});
}

}  // namespace
