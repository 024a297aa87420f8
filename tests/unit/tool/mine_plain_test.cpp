#include "mine.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/every_table.hpp"
#include "oracle/mine.hpp"
#include "oracle/outcome.hpp"
#include "oracle/random_table.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"
#include "support/conversion.hpp"
#include "support/real_histories.hpp"
#include "support/sanitized.hpp"

namespace {

using oracle::allHistories;
using oracle::History;
using oracle::Outcome;
using oracle::RandomCase;
using oracle::randomCase;
using oracle::Settings;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;
using oracle::tableShapes;
using support::mined;

/// Whether the mining gives the same result for the table as the plain miner.
testing::AssertionResult agree(const Settings& settings, const Table& table) {
    const Outcome expected = oracle::mine(settings, table);
    const Outcome found = mined(settings, table);
    if (found == expected)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "with " << settings << "\nthe table\n"
                                       << table << "gives\n"
                                       << found << "instead of\n"
                                       << expected;
}

struct Setting {
    std::string name;
    std::uint32_t minCount;
    std::uint32_t maxOrder;
    std::uint32_t windowSize;
};

std::ostream& operator<<(std::ostream& os, const Setting& setting) {
    return os << setting.name;
}

std::string nameOf(const testing::TestParamInfo<Setting>& setting) {
    return setting.param.name;
}

class EveryTableOf : public testing::TestWithParam<Setting> {
  protected:
    /// Compares all tables of up to `number` of these histories. Stops at the first that does not
    /// agree. Returns the number of tables.
    static std::size_t upTo(std::size_t number, const std::vector<History>& histories) {
        Settings settings;
        settings.minCount = GetParam().minCount;
        settings.maxOrder = GetParam().maxOrder;
        settings.windowSize = GetParam().windowSize;
        std::size_t visited = 0;
        return oracle::forEveryTable(histories, number, [&](const Table& table) {
            if (++visited % TRIED_EVERY != 0)
                return true;
            const testing::AssertionResult result = agree(settings, table);
            EXPECT_TRUE(result);
            return static_cast<bool>(result);
        });
    }
};

class EveryTableOfThreeTimes : public EveryTableOf {};

TEST_P(EveryTableOfThreeTimes, MinesAsInThePlainForm) {
    // Multisets of up to 2 of the 124 histories: 1 + 124 + 124 * 125 / 2.
    EXPECT_EQ(7'875U, upTo(2, allHistories({1, 2, 4}, {"p", "q"})));
}

INSTANTIATE_TEST_SUITE_P(
    Settings, EveryTableOfThreeTimes,
    testing::Values(Setting{"MinCount0", 0, 0, 0}, Setting{"MinCount0Window1", 0, 3, 1},
                    Setting{"MinCount1", 1, 0, 0}, Setting{"MinCount1Window1", 1, 0, 1},
                    Setting{"MinCount1Window2", 1, 0, 2}, Setting{"MinCount1Window3", 1, 0, 3},
                    Setting{"MinCount2", 2, 0, 0}, Setting{"MinCount2Window1", 2, 1, 1},
                    Setting{"MinCount2Window2", 2, 2, 2}, Setting{"MinCount2Window3", 2, 0, 3}),
    nameOf);

class EveryTableOfThreeTimesAndThreeHistories : public EveryTableOf {};

TEST_P(EveryTableOfThreeTimesAndThreeHistories, MinesAsInThePlainForm) {
    // Multisets of up to 3 of the 124 histories: 1 + 124 + 124 * 125 / 2 + 124 * 125 * 126 / 6.
    EXPECT_EQ(333'375U, upTo(3, allHistories({1, 2, 4}, {"p", "q"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfThreeTimesAndThreeHistories,
                         testing::Values(Setting{"MinCount2Window2", 2, 0, 2}), nameOf);

class EveryTableOfFourItems : public EveryTableOf {};

TEST_P(EveryTableOfFourItems, MinesAsInThePlainForm) {
    // Multisets of up to 2 of the 288 histories: 1 + 288 + 288 * 289 / 2.
    EXPECT_EQ(41'905U, upTo(2, allHistories({1, 3}, {"p", "q", "r", "s"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfFourItems,
                         testing::Values(Setting{"MinCount1", 1, 0, 0},
                                         Setting{"MinCount2", 2, 0, 0},
                                         Setting{"MinCount2MaxOrder3Window2", 2, 3, 2}),
                         nameOf);

class EveryHistoryOfFourItems : public EveryTableOf {};

TEST_P(EveryHistoryOfFourItems, MinesAsInThePlainForm) {
    EXPECT_EQ(289U, upTo(1, allHistories({1, 3}, {"p", "q", "r", "s"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryHistoryOfFourItems,
                         testing::Values(Setting{"MinCount0", 0, 0, 0},
                                         Setting{"MinCount0MaxOrder6Window2", 0, 6, 2},
                                         Setting{"MinCount1Window1", 1, 0, 1},
                                         Setting{"MinCount1MaxOrder2Window2", 1, 2, 2}),
                         nameOf);

std::vector<std::string> names(std::size_t number) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < number; ++i)
        all.push_back("item" + std::to_string(i));
    return all;
}

/// Names, each repeated as often as its weight says.
std::vector<std::string> weighted(const std::vector<std::size_t>& weights) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < weights.size(); ++i)
        all.insert(all.end(), weights[i], "item" + std::to_string(i));
    return all;
}

/// Names, of which four are frequent and hundreds are rare.
std::vector<std::string> fewAmongMany() {
    std::vector<std::size_t> weights(300, 1);
    std::fill_n(weights.begin() + 100, 4, 100);
    return weighted(weights);
}

/// A number of tables of one shape; few enough to take at most a few seconds.
struct Series {
    TableShape shape;
    std::size_t tables;
};

std::ostream& operator<<(std::ostream& os, const Series& series) {
    return os << series.shape;
}

/// Shapes that are too large for the brute force.
std::vector<Series> largeTables() {
    // Each shape has: histories, transactions, items per transaction, last time, least count.
    return {
        {{"Thousands", names(5), 4000, 3, 3, 6}, 80},
        {{"ThousandsSkewed", weighted({500, 3, 200, 1, 500, 60, 12}), 3000, 3, 4, 9, 2}, 80},
        {{"HundredsSkewed", weighted({100, 4, 100, 1, 30, 100, 10}), 300, 4, 6, 9, 1}, 200},
        {{"NineItemsInMost", names(9), 4, 5, 12, 12}, 200},
        {{"TwelveItemsInMost", names(12), 4, 9, 6, 12, 2}, 20},
        {{"DenseHistories", names(8), 40, 6, 5, 20, 3}, 200},
        {{"HundredsOfItems", fewAmongMany(), 30, 4, 6, 30, 2}, 300},
        {{"HundredsOfItemsInFewHistories", names(300), 4, 3, 4, 30, 1}, 200},
        {{"OneLongHistory", names(6), 1, 120, 2, 200}, 500},
    };
}

std::vector<Series> allTables() {
    std::vector<Series> all = largeTables();
    for (const TableShape& shape : tableShapes())
        all.push_back({shape, 2000});
    return all;
}

/// The settings of a random case, with a random table of this shape.
RandomCase caseOf(const TableShape& shape, std::uint64_t seed) {
    RandomCase drawn = randomCase(seed);
    drawn.table = oracle::randomTable(shape, seed);
    drawn.settings.minCount = std::max(drawn.settings.minCount, shape.leastMinCount);
    return drawn;
}

constexpr std::uint64_t FIRST_SEED = 1'000'000;

class RandomTablesOfShape : public testing::TestWithParam<Series> {};

TEST_P(RandomTablesOfShape, MineAsInThePlainForm) {
    for (std::uint64_t seed = FIRST_SEED; seed < FIRST_SEED + GetParam().tables; ++seed) {
        const RandomCase drawn = caseOf(GetParam().shape, seed);
        ASSERT_TRUE(agree(drawn.settings, drawn.table)) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTablesOfShape, testing::ValuesIn(allTables()),
                         [](const auto& series) { return series.param.shape.name; });

/// Agreement means little if the tables have no rules.
TEST(LargeRandomTables, ManyHaveRules) {
    for (const Series& series : largeTables()) {
        constexpr std::uint64_t tables = 20;
        std::size_t withRules = 0;
        for (std::uint64_t seed = FIRST_SEED; seed < FIRST_SEED + tables; ++seed) {
            const RandomCase drawn = caseOf(series.shape, seed);
            withRules += mined(drawn.settings, drawn.table).rules.empty() ? 0 : 1;
        }
        EXPECT_GE(withRules, tables / 10) << series;
    }
}

TEST(Orders, FarBeyondTheLargestSetAreReportedAsInThePlainForm) {
    Settings settings;
    settings.minCount = 1;
    settings.maxOrder = 20'000;
    EXPECT_TRUE(agree(settings, tableOf({"1:a 2:b,c", "1:c 2:a"})));
}

struct RealRun {
    std::string file;
    std::size_t histories;  ///< How many of the file's first histories to use, or ALL.
    std::uint32_t minCount;
    std::uint32_t maxOrder;
    std::uint32_t windowSize;
};

std::ostream& operator<<(std::ostream& os, const RealRun& run) {
    return os << run.file << " -c " << run.minCount << " -o " << run.maxOrder << " -w "
              << run.windowSize;
}

class RealHistories : public testing::TestWithParam<RealRun> {};

TEST_P(RealHistories, AreMinedAsInThePlainForm) {
    const RealRun& run = GetParam();
    const quarvis::rule::TransactionSet txns = support::realHistories(run.file, run.histories);

    Settings settings;
    settings.minCount = run.minCount;
    settings.maxOrder = run.maxOrder;
    settings.windowSize = run.windowSize;
    const Outcome expected = oracle::mine(settings, support::tableOf(txns));
    EXPECT_FALSE(expected.itemSets.empty());
    // The results are not printed, since there may be thousands of rules.
    EXPECT_TRUE(mined(support::configurationOf(settings), txns) == expected);
}

constexpr std::uint32_t DAY = 24 * 60 * 60;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealHistories);
INSTANTIATE_TEST_SUITE_P(
    Runs, RealHistories,
    testing::ValuesIn(support::possibleRuns<RealRun>(
        {RealRun{"log_traffic_fines.tsv", support::ALL_HISTORIES, 20, 0, 0},
         RealRun{"log_traffic_fines.tsv", support::ALL_HISTORIES, 100, 0, 90 * DAY},
         RealRun{"synthea27.tsv", support::ALL_HISTORIES, 10, 1, 0},
         RealRun{"synthea27.tsv", support::ALL_HISTORIES, 8, 1, 3650},
         RealRun{"synthea27.tsv", support::ALL_HISTORIES, 23, 2, 0},
         RealRun{"online_retail.tsv", 40, 6, 0, 0}, RealRun{"online_retail_lines.tsv", 40, 7, 0, 0},
         RealRun{"completejourney_types.tsv", 150, 25, 0, 0},
         RealRun{"completejourney_types.tsv", 60, 10, 0, 28 * DAY}})));

}  // namespace
