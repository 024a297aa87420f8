#include "mine.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/brute_force.hpp"
#include "oracle/every_table.hpp"
#include "oracle/outcome.hpp"
#include "oracle/random_table.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"
#include "replayed_seeds.hpp"
#include "support/conversion.hpp"
#include "support/sanitized.hpp"

namespace {

using mining_tests::REPLAYED_SEEDS;
using oracle::allHistories;
using oracle::bruteForce;
using oracle::Outcome;
using oracle::RandomCase;
using oracle::randomCase;
using oracle::Settings;
using oracle::Table;
using oracle::tableShapes;
using support::mined;

/// Whether the mining gives the same result for the table as the brute force.
testing::AssertionResult agree(const Settings& settings, const Table& table) {
    const Outcome expected = bruteForce(settings, table);
    const Outcome found = mined(settings, table);
    const bool isNumberRight =
        found.messages.ends_with(" have " + std::to_string(found.rules.size()) + " rules.\n");
    if (found == expected && isNumberRight)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "with " << settings << "\nthe table\n"
                                       << table << "gives\n"
                                       << found << "instead of\n"
                                       << expected;
}

testing::AssertionResult agree(std::uint64_t seed) {
    const RandomCase drawn = randomCase(seed);
    const testing::AssertionResult result = agree(drawn.settings, drawn.table);
    return result ? result
                  : testing::AssertionFailure()
                        << "seed " << seed << ", " << drawn.shape << ", " << result.message();
}

struct Setting {
    std::string name;
    std::uint32_t minCount;
    std::uint32_t maxOrder;
    std::uint32_t windowSize;
};

void PrintTo(const Setting& setting, std::ostream* os) {
    *os << setting.name;
}

class EveryTable : public testing::TestWithParam<Setting> {
  protected:
    /// Compares all tables of up to `number` histories over three items at these times. Stops at
    /// the first that does not agree. Returns the number of tables.
    static std::size_t upTo(std::size_t number, const std::vector<oracle::Time>& times) {
        Settings settings;
        settings.minCount = GetParam().minCount;
        settings.maxOrder = GetParam().maxOrder;
        settings.windowSize = GetParam().windowSize;
        std::size_t visited = 0;
        return oracle::forEveryTable(
            allHistories(times, {"p", "q", "r"}), number, [&](const Table& table) {
                if (++visited % TRIED_EVERY != 0)
                    return true;
                const testing::AssertionResult result = agree(settings, table);
                EXPECT_TRUE(result);
                return static_cast<bool>(result);
            });
    }
};

std::string nameOf(const testing::TestParamInfo<Setting>& setting) {
    return setting.param.name;
}

class EveryTableOfThreeHistories : public EveryTable {};

TEST_P(EveryTableOfThreeHistories, MinesAsByBruteForce) {
    // Multisets of up to 3 of the 80 histories: 1 + 80 + 80 * 81 / 2 + 80 * 81 * 82 / 6.
    EXPECT_EQ(91'881U, upTo(3, {1, 3}));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfThreeHistories,
                         testing::Values(Setting{"MinCount0", 0, 0, 0},
                                         Setting{"MinCount1", 1, 0, 0},
                                         Setting{"MinCount1MaxOrder1Window1", 1, 1, 1},
                                         Setting{"MinCount1MaxOrder4Window2", 1, 4, 2},
                                         Setting{"MinCount2", 2, 0, 0},
                                         Setting{"MinCount2MaxOrder4", 2, 4, 0}),
                         nameOf);

class EveryTableOfTwoHistories : public EveryTable {};

TEST_P(EveryTableOfTwoHistories, MinesAsByBruteForce) {
    EXPECT_EQ(3'321U, upTo(2, {1, 3}));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfTwoHistories,
                         testing::Values(Setting{"MinCount0MaxOrder4", 0, 4, 0},
                                         Setting{"MinCount0Window1", 0, 0, 1},
                                         Setting{"MinCount1MaxOrder1", 1, 1, 0},
                                         Setting{"MinCount1MaxOrder2Window1", 1, 2, 1},
                                         Setting{"MinCount1Window2", 1, 0, 2},
                                         Setting{"MinCount3MaxOrder3", 3, 3, 0}),
                         nameOf);

/// One history is enough to test windows, since a rule is counted in each history separately.
class EveryLongHistory : public EveryTable {};

TEST_P(EveryLongHistory, MinesAsByBruteForce) {
    // 9 possibilities at each of 4 times. A history without transactions stands for the empty
    // table.
    EXPECT_EQ(6'561U, upTo(1, {0, 1, 3, 4}));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryLongHistory,
                         testing::Values(Setting{"NoWindow", 1, 0, 0}, Setting{"Window1", 1, 0, 1},
                                         Setting{"Window2", 1, 0, 2}, Setting{"Window3", 1, 0, 3},
                                         Setting{"LargestWindow", 1, 0, 4294967295}),
                         nameOf);

class RandomTables : public testing::TestWithParam<std::size_t> {};

TEST_P(RandomTables, MineAsByBruteForce) {
    for (std::uint64_t i = 0; i < 200; ++i)
        ASSERT_TRUE(agree(GetParam() + i * tableShapes().size()));
}

std::string nameOfShape(const testing::TestParamInfo<std::size_t>& shape) {
    return tableShapes()[shape.param].name;
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTables, testing::Range(std::size_t{0}, tableShapes().size()),
                         nameOfShape);

TEST(ReplayedSeeds, MineAsByBruteForce) {
    for (const std::uint64_t seed : REPLAYED_SEEDS)
        EXPECT_TRUE(agree(seed));
}

/// Agreement means little if the tables have no rules.
TEST(RandomTablesOfEveryShape, ManyHaveRules) {
    constexpr std::size_t each = 100;
    std::vector<std::size_t> withRules(tableShapes().size());
    for (std::uint64_t seed = 0; seed < each * withRules.size(); ++seed) {
        const RandomCase drawn = randomCase(seed);
        if (!mined(drawn.settings, drawn.table).rules.empty())
            ++withRules[seed % withRules.size()];
    }
    EXPECT_THAT(withRules, testing::Each(testing::Ge(each / 5)));
}

TEST(Histories, TheirOrderDoesNotMatter) {
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        RandomCase drawn = randomCase(seed);
        const Outcome before = mined(drawn.settings, drawn.table);
        std::reverse(drawn.table.histories.begin(), drawn.table.histories.end());
        EXPECT_EQ(mined(drawn.settings, drawn.table), before) << "seed " << seed;
    }
}

}  // namespace
