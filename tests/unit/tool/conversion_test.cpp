#include "support/conversion.hpp"

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "oracle/transaction_file.hpp"

namespace {

using oracle::Table;
using quarvis::rule::TransactionSet;

bool canBeInAFile(const Table& table) {
    try {
        oracle::textOf(table);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

TEST(TableAsTransactions, KeepsItsHistoriesWhateverTheirItems) {
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        const Table table = oracle::randomCase(seed).table;
        EXPECT_EQ(table.histories, support::tableOf(support::transactionsOf(table)).histories)
            << "seed " << seed;
    }
}

TEST(TableAsTransactions, KeepsTheNamesOfItsEntities) {
    Table table = oracle::tableOf({"1:a 2:b", "3:c"});
    table.entities = {"zoe", "ann"};
    const Table read = support::tableOf(support::transactionsOf(table));
    EXPECT_EQ((std::vector<std::string>{"ann", "zoe"}), read.entities);
    EXPECT_EQ(table.histories[0], read.histories[1]);
    EXPECT_EQ(table.histories[1], read.histories[0]);
}

TEST(TableAsTransactions, WhatTheToolCannotHaveIsRefused) {
    EXPECT_THROW(support::transactionsOf(oracle::tableOf({"4294967296:a"})), std::out_of_range);
    EXPECT_THROW(support::transactionsOf(oracle::tableOf({""})), std::invalid_argument);
    oracle::Settings settings;
    settings.windowSize = 4294967296;
    EXPECT_THROW(support::configurationOf(settings), std::out_of_range);
    settings = {};
    settings.allSplits = true;
    EXPECT_THROW(support::configurationOf(settings), std::invalid_argument);
}

TEST(TableAsAFile, IsReadAsTheTableInEveryForm) {
    int read = 0;
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        const Table table = oracle::randomCase(seed).table;
        if (!canBeInAFile(table))
            continue;
        for (const bool shuffled : {false, true})
            for (const bool split : {false, true}) {
                std::istringstream file(
                    oracle::textOf(table, {.shuffled = shuffled, .split = split, .seed = seed}));
                TransactionSet txns;
                txns.readInto(file, '\t');
                EXPECT_EQ(table.histories, support::tableOf(txns).histories) << "seed " << seed;
            }
        ++read;
    }
    EXPECT_GT(read, 300);
}

TEST(SettingsOfTheTool, AreThoseOfTheOracle) {
    oracle::Settings settings;
    settings.minCount = 1;
    settings.minSupport = 2;
    settings.minConfidence = 3;
    settings.minLift = 4;
    settings.maxConviction = 5;
    settings.maxOrder = 6;
    settings.windowSize = 7;
    const oracle::Settings back = support::settingsOf(support::configurationOf(settings));
    std::ostringstream text;
    text << back;
    EXPECT_EQ(
        "minCount 1, minSupport 2, minConfidence 3, minLift 4, maxConviction 5, maxOrder 6, "
        "windowSize 7",
        text.str());
}

}  // namespace
