#include "splits.hpp"

#include <cstddef>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

#include "oracle/proposals.hpp"

namespace quarvis::mining {
namespace {

TEST(Splits, AllOfANumberOfItemsAreTheLowestBits) {
    EXPECT_EQ(0U, allOf(0));
    EXPECT_EQ(1U, allOf(1));
    EXPECT_EQ(0b1111U, allOf(4));
    EXPECT_EQ(0x7fffffffffffffffU, allOf(MOST_ITEMS));
}

/// Bits mark the subsequent, so the antecedent is the items without one.
TEST(Splits, ARunIsAnAntecedentOfNeighbours) {
    struct Row {
        SplitMask split;
        std::size_t size;
        bool isRun;
    };
    const Row rows[] = {
        {0b01, 2, true},
        {0b10, 2, true},
        {0b101, 3, true},
        {0b010, 3, false},
        {0b110, 3, true},
        {0b1001, 4, true},
        {0b0110, 4, false},
        {0b0010, 4, false},
        {0b1000, 4, true},
        {0b11011, 5, true},
        {0b01010, 5, false},
        {0b00100, 5, false},
        {SplitMask{1} << 62, 63, true},
        {1, 63, true},
        {2, 63, false},
    };
    for (const auto& [split, size, run] : rows)
        EXPECT_EQ(run, isRun(split, size)) << split << " of " << size;
}

/// The oracle's bits mark the antecedent.
TEST(Splits, AreProposedAsTheOracleDoes) {
    for (std::size_t size = 2; size <= 10; ++size) {
        std::set<SplitMask> runs;
        for (const oracle::Split split : oracle::splitsByRuns(size))
            runs.insert(~split & allOf(size));
        for (SplitMask split = 1; split < allOf(size); ++split) {
            EXPECT_EQ(runs.contains(split), isProposed(split, size, Splits::RUNS))
                << split << " of " << size;
            EXPECT_TRUE(isProposed(split, size, Splits::ALL)) << split << " of " << size;
        }
    }
}

TEST(Splits, TakeInABitAtAnyPlace) {
    EXPECT_EQ(0b1U, withBit(0, 0, true));
    EXPECT_EQ(0b0U, withBit(0, 0, false));
    EXPECT_EQ(0b10111U, withBit(0b1011, 2, true));
    EXPECT_EQ(0b10011U, withBit(0b1011, 2, false));
    EXPECT_EQ(0b10111U, withBit(0b1011, 0, true));
    EXPECT_EQ(0b10110U, withBit(0b1011, 0, false));
    EXPECT_EQ(0b11011U, withBit(0b1011, 4, true));
    EXPECT_EQ(SplitMask{1} << 62, withBit(0, 62, true));
}

}  // namespace
}  // namespace quarvis::mining
