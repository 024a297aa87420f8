#include <cmath>
#include <cstddef>
#include <istream>
#include <limits>
#include <sstream>
#include <string>

#include <moxtel/exception.hpp>

#include <quarvis/rule.hpp>

#include "chunk_buffer.hpp"
#include "input.hpp"
#include "targets.hpp"
#include "unit/quarvis/rule_files.hpp"

namespace fuzz {

namespace {

using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;
using quarvis::test::readRules;
using quarvis::test::written;

/// Items that a file preserves: of two or more characters, without blanks at the ends, and without
/// characters in places where they would separate or quote cells.
const char* const ITEMS[] = {"ab", "cd", "e f", "a{b}", "x=", ">y", "a\"b", "\xc3\xa9\x80"};

ItemSet itemsOf(unsigned mask) {
    ItemSet items;
    for (const char* item : ITEMS) {
        if (mask % 2 != 0)
            items.add(item);
        mask /= 2;
    }
    return items;
}

std::size_t countOf(Input& input) {
    const std::size_t count = input.byte();
    return count << input.byte() % std::numeric_limits<std::size_t>::digits;
}

/// Any double whose six written digits a file preserves: none so small that it loses digits. Of the
/// NaNs, whose sign a file shows, only the positive one.
double measureOf(Input& input) {
    const int numerator = input.byte() - 128;
    const int denominator = input.byte();
    const int exponent = 4 * (input.byte() - 128);
    if (numerator == 0 && denominator == 0)
        return std::numeric_limits<double>::quiet_NaN();
    const double quotient = static_cast<double>(numerator) / static_cast<double>(denominator);
    return std::ldexp(quotient, exponent);
}

RuleSet rulesOf(Input& input) {
    RuleSet rules;
    while (!input.empty()) {
        const ItemSet antecedent = itemsOf(input.byte());
        const ItemSet subsequent = itemsOf(input.byte());
        RuleSet::Stats& stats = rules[Rule(antecedent, subsequent)];
        stats.count = countOf(input);
        stats.icount = countOf(input);
        for (double RuleSet::Stats::*measure :
             {&RuleSet::Stats::support, &RuleSet::Stats::confidence, &RuleSet::Stats::lift,
              &RuleSet::Stats::conviction, &RuleSet::Stats::probability,
              &RuleSet::Stats::certainty})
            stats.*measure = measureOf(input);
    }
    return rules;
}

void checkRoundTrip(const RuleSet& rules) {
    const std::string file = written(rules);
    RuleSet readBack;
    readRules(readBack, file);
    const std::string again = written(readBack);
    if (again != file)
        throw Failure("read back and written again:\n" + again + "instead of:\n" + file);
}

/// Reads `in` into the set. Returns the set's content afterwards, and the error if there is one.
std::string readingOf(RuleSet& rules, std::istream& in, char delim) {
    std::string error = "no error";
    try {
        rules.readInto(in, delim);
    } catch (moxtel::IOException* exception) {
        error = exception->why();
        delete exception;
    }
    return error + '\n' + written(rules);
}

void checkAnyBytes(const std::string& text, char delim) {
    RuleSet empty;
    std::istringstream stream(text);
    const std::string reading = readingOf(empty, stream, delim);

    RuleSet filled;
    filled[Rule(itemsOf(1), itemsOf(2))].count = 1;
    ChunkBuffer buffer(text, 1);
    std::istream bytes(&buffer);
    const std::string slowReading = readingOf(filled, bytes, delim);
    if (reading != slowReading)
        throw Failure("read from a stream:\n" + reading + "instead of, byte by byte:\n" +
                      slowReading);
}

}  // namespace

void fuzzRuleFiles(Bytes bytes) {
    Input input(bytes);
    const auto delim = static_cast<char>(input.byte());
    if (delim == '\0')
        checkRoundTrip(rulesOf(input));
    else
        checkAnyBytes(input.rest(), delim);
}

}  // namespace fuzz
