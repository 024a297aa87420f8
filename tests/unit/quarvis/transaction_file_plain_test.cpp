/// Compares the reading of transaction files with reading byte by byte into standard containers.

#include <ios>
#include <istream>
#include <random>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <moxtel/parse.hpp>

#include <quarvis/history.hpp>

#include "plain_transactions.hpp"
#include "support/temp_dir.hpp"

namespace {

using quarvis::rule::History;
using quarvis::rule::TransactionSet;
using quarvis::test::Histories;
using quarvis::test::historiesOf;
using quarvis::test::readPlainly;

History::Time timeOf(const std::string& text) {
    return moxtel::string::parse<History::Time>(text);
}

/// Calls `read(in)` with a stream over `text` that throws at `thrown`. Returns whether it threw,
/// and the state of the stream.
template <class Read>
std::pair<bool, std::ios::iostate> outcome(const std::string& text, std::ios::iostate thrown,
                                           Read read) {
    std::istringstream in(text);
    in.exceptions(thrown);
    try {
        read(in);
    } catch (const std::ios::failure&) {
        return {true, in.rdstate()};
    }
    return {false, in.rdstate()};
}

/// A random file of few entities, times and items in any order, with some bytes replaced.
/// Occasionally the file is larger than any buffer.
std::string randomFile(std::mt19937& random, char delim) {
    std::string text = "header\n";
    for (auto rows = random() % (random() % 100 == 0 ? 5000 : 30); rows > 0; --rows) {
        const auto cells = random() % 20;  // a row of one cell has no time
        if (cells > 0)
            text += 'e' + std::to_string(random() % 4);
        if (cells > 1)
            text += delim + std::to_string(random() % 3);
        for (auto items = cells; items > 2; --items)
            text += delim + std::string(random() % 12, 'i') + std::to_string(random() % 8);
        text += '\n';
    }
    const std::string special = std::string("\n\r\"\"\xff ") + delim;
    for (auto changes = random() % 3 == 0 ? random() % 20 : 0; changes > 0; --changes)
        text[random() % text.size()] = random() % 2 == 0 ? special[random() % special.size()]
                                                         : static_cast<char>(random() % 256);
    return text;
}

TEST(TransactionFileBesidePlain, HoldsTheSame) {
    const support::TempDir dir;
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::mt19937 random(seed);
        const char delim = "\t,;\xff\""[random() % 5];
        const std::string text = randomFile(random, delim);
        const std::ios::iostate thrown = random() % 4 != 0   ? std::ios::goodbit
                                         : random() % 2 == 0 ? std::ios::eofbit
                                                             : std::ios::failbit;
        Histories expected;
        const auto expectedOutcome = outcome(
            text, thrown, [&](std::istream& in) { readPlainly(expected, in, delim, timeOf); });

        TransactionSet transactions;
        EXPECT_EQ(
            outcome(text, thrown, [&](std::istream& in) { transactions.readInto(in, delim); }),
            expectedOutcome)
            << "seed " << seed;
        ASSERT_EQ(historiesOf(transactions), expected)
            << "seed " << seed << ": " << ::testing::PrintToString(text);

        if (expectedOutcome.first)
            continue;
        TransactionSet fromFile;
        fromFile.readInto(dir.write("file", text), delim);
        ASSERT_EQ(historiesOf(fromFile), expected) << "file of seed " << seed;
    }
}

}  // namespace
