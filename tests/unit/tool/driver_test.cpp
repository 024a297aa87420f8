#include "driver.hpp"

#include <ios>
#include <iostream>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/error_output.hpp"
#include "support/temp_dir.hpp"

namespace {

using quarvis::rule::MiningResult;
using quarvis::rule::TransactionSet;
using support::ErrorOutput;
using support::fileContent;
using support::TempDir;

/// Makes a standard stream use another buffer during this object's lifetime. The stream's state is
/// restored.
class Redirected {
  public:
    Redirected(std::ios& stream, std::streambuf* buffer)
        : m_stream(stream), m_state(stream.rdstate()), m_buffer(stream.rdbuf(buffer)) {}
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;
    ~Redirected() {
        m_stream.rdbuf(m_buffer);
        m_stream.clear(m_state);
    }

  private:
    std::ios& m_stream;
    std::ios::iostate m_state;
    std::streambuf* m_buffer;
};

/// Gives the driver its own standard streams and a directory for its files.
class Driver : public testing::Test {
  protected:
    void giveInput(const std::string& text) { m_in.str(text); }

    TransactionSet transactionsOf(const std::string& filename) {
        Configuration config;
        return readTxns(config, filename.c_str());
    }

    /// A run with minCount 1.
    void mineFrom(const std::string& input, const std::string& output,
                  const std::string& itemSets) {
        Configuration config;
        config.minCount = 1;
        config.inputFile = input;
        config.outputFile = output;
        config.itemSetFile = itemSets;
        mine(config);
    }

    MiningResult resultOfMining() {
        Configuration config;
        config.minCount = 1;
        std::istringstream in(TRANSACTIONS);
        TransactionSet txns;
        txns.readInto(in, '\t');
        const ErrorOutput ignored;
        return quarvis::rule::mine(config, txns);
    }

    std::string output() const { return m_out.str(); }
    std::string messages() const { return m_err.text(); }

    static constexpr const char* TRANSACTIONS = "Entity\tTime\tItems\ne\t1\tab\ne\t2\tcd\n";
    static constexpr const char* RULES =
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
        "ab => cd\t1\t1\t1\t1\t1\tinf\t1\tinf\n";
    static constexpr const char* ITEM_SETS = "Count\tItem Set\n1\t{ab,cd}\n1\t{ab}\n1\t{cd}\n";
    static constexpr const char* PROGRESS =
        "\t ... calculated 2 frequent item sets of size 1. \n"
        "\t ... calculated 1 frequent item sets of size 2 with 2 proposed rules.\n"
        "\t ... deducing rules of order 1.\n"
        "\t ... mining rules until there are no more frequent item sets.\n"
        "\t ... preparing rules for reporting.\n"
        "\t ... have 1 rules.\n";

    TempDir m_dir;

  private:
    std::istringstream m_in;
    std::ostringstream m_out;
    ErrorOutput m_err;
    Redirected m_standardInput{std::cin, m_in.rdbuf()};
    Redirected m_standardOutput{std::cout, m_out.rdbuf()};
};

TEST_F(Driver, ReadsAFile) {
    const std::string path = m_dir.write("in", "h\ne1\t1\ta\ne1\t2\tb\ne1\t2\tc\ne2\t1\ta\n");
    const TransactionSet txns = transactionsOf(path);
    EXPECT_EQ(2U, txns.size());
    EXPECT_EQ(3U, txns.transactionCount());
    EXPECT_EQ("Read " + path + " with 3 transaction(s) over 2 history record(s).\n", messages());
}

TEST_F(Driver, ReadsStandardInputForAHyphen) {
    giveInput(TRANSACTIONS);
    EXPECT_EQ(2U, transactionsOf("-").transactionCount());
    EXPECT_EQ("Read - with 2 transaction(s) over 1 history record(s).\n", messages());
}

TEST_F(Driver, AnInputNameThatBeginsWithAHyphenIsAFile) {
    giveInput(TRANSACTIONS);
    for (const std::string name : {"--", "-no-such-file", "- "}) {
        EXPECT_EQ(0U, transactionsOf(name).size());
        EXPECT_EQ('E', std::cin.peek()) << "standard input was read for " << name;
    }
    EXPECT_EQ(
        "Read -- with 0 transaction(s) over 0 history record(s).\n"
        "Read -no-such-file with 0 transaction(s) over 0 history record(s).\n"
        "Read -  with 0 transaction(s) over 0 history record(s).\n",
        messages());
}

TEST_F(Driver, AnInputThatCannotBeOpenedIsEmpty) {
    EXPECT_EQ(0U, transactionsOf(m_dir / "missing").size());
    EXPECT_EQ("Read " + (m_dir / "missing") + " with 0 transaction(s) over 0 history record(s).\n",
              messages());
}

TEST_F(Driver, CellsAreSeparatedByTabsOnly) {
    const TransactionSet txns = transactionsOf(m_dir.write("in", "h\ne 1,x\t2\ta b,c\n"));
    ASSERT_EQ(1U, txns.size());
    EXPECT_EQ("e 1,x", txns.begin()->first);
    EXPECT_EQ("{a b,c}", txns.begin()->second.at(2).toString());
}

TEST_F(Driver, WritesRulesIntoAFile) {
    writeRules(resultOfMining(), (m_dir / "out").c_str());
    EXPECT_EQ(RULES, fileContent(m_dir / "out"));
    EXPECT_EQ("", output());
    EXPECT_EQ("1\n", messages());
}

TEST_F(Driver, WritesRulesToStandardOutputForAHyphen) {
    writeRules(resultOfMining(), "-");
    EXPECT_EQ(RULES, output());
    EXPECT_EQ("1\n", messages());
}

TEST_F(Driver, WritesItemSetsIntoAFile) {
    writeIS(resultOfMining(), (m_dir / "sets").c_str());
    EXPECT_EQ(ITEM_SETS, fileContent(m_dir / "sets"));
    EXPECT_EQ("", output());
    EXPECT_EQ("", messages());
}

TEST_F(Driver, WritesItemSetsToStandardOutputForAHyphen) {
    writeIS(resultOfMining(), "-");
    EXPECT_EQ(ITEM_SETS, output());
    EXPECT_EQ("", messages());
}

TEST_F(Driver, ReplacesTheFilesThatAreThere) {
    m_dir.write("out", std::string(1000, 'x'));
    m_dir.write("sets", std::string(1000, 'x'));
    writeRules(resultOfMining(), (m_dir / "out").c_str());
    writeIS(resultOfMining(), (m_dir / "sets").c_str());
    EXPECT_EQ(RULES, fileContent(m_dir / "out"));
    EXPECT_EQ(ITEM_SETS, fileContent(m_dir / "sets"));
}

TEST_F(Driver, MinesFromFileToFiles) {
    const std::string in = m_dir.write("in", TRANSACTIONS);
    mineFrom(in, m_dir / "out", m_dir / "sets");
    EXPECT_EQ(RULES, fileContent(m_dir / "out"));
    EXPECT_EQ(ITEM_SETS, fileContent(m_dir / "sets"));
    EXPECT_EQ("", output());
    EXPECT_EQ("Read " + in + " with 2 transaction(s) over 1 history record(s).\n" + PROGRESS +
                  "1\n" + (m_dir / "sets") + "\n",
              messages());
}

TEST_F(Driver, WithoutAnItemSetFileAnEmptyLineIsPrinted) {
    giveInput(TRANSACTIONS);
    mineFrom("-", "-", "");
    EXPECT_EQ(RULES, output());
    EXPECT_EQ(std::string("Read - with 2 transaction(s) over 1 history record(s).\n") + PROGRESS +
                  "1\n\n",
              messages());
}

TEST_F(Driver, RulesAndThenItemSetsGoToStandardOutput) {
    giveInput(TRANSACTIONS);
    mineFrom("-", "-", "-");
    EXPECT_EQ(std::string(RULES) + ITEM_SETS, output());
    EXPECT_EQ(std::string("Read - with 2 transaction(s) over 1 history record(s).\n") + PROGRESS +
                  "1\n-\n",
              messages());
}

TEST_F(Driver, OutputsThatCannotBeOpenedAreNotWritten) {
    giveInput(TRANSACTIONS);
    mineFrom("-", m_dir / "missing/out", m_dir / "missing/sets");
    EXPECT_EQ("", output());
    EXPECT_EQ(std::string("Read - with 2 transaction(s) over 1 history record(s).\n") + PROGRESS +
                  "1\n" + (m_dir / "missing/sets") + "\n",
              messages());
}

}  // namespace
