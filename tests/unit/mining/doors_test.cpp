#include <quarvis/mining/mine.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/transaction_reader.hpp>

#include "oracle/draws.hpp"
#include "oracle/every_table.hpp"
#include "oracle/mine.hpp"
#include "oracle/random_table.hpp"
#include "oracle/transaction_file.hpp"
#include "support/conversion.hpp"
#include "support/engine.hpp"
#include "support/real_histories.hpp"
#include "support/sanitized.hpp"
#include "table_series.hpp"

/// There are several ways to bring a table into the engine and to run it there. Each of these doors
/// must yield what the oracle yields.
namespace quarvis::mining {
namespace {

using mining_tests::itemNames;
using mining_tests::Series;
using oracle::Outcome;
using oracle::RandomCase;
using oracle::Settings;
using oracle::Table;
using oracle::TableShape;
using oracle::tableShapes;

/// What a run finds, without messages. Empty if the door cannot take the table.
using Mine = std::function<std::optional<Outcome>(const Settings&, const Table&)>;

struct Door {
    const char* name;
    Mine mine;
};

Outcome minedIn(const HistoryIndex& index, const Settings& settings, unsigned threads = 1) {
    Observer observer;
    MiningOptions options = support::optionsOf(settings);
    options.threads = threads;
    return support::outcomeOf(index, mine(index, options, observer));
}

/// The rows of the transaction file, as the tool reads them.
std::optional<Outcome> throughAFile(const Settings& settings, const Table& table,
                                    const oracle::FileForm& form) {
    std::string text;
    try {
        text = textOf(table, form);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
    std::istringstream file(text);
    rule::TransactionReader rows(file, '\t');
    IndexBuilder builder;
    while (rows.next()) {
        builder.beginRow(rows.entity(), rows.time());
        for (const std::string_view item : rows.items())
            builder.addItem(item);
    }
    return minedIn(builder.freeze(settings.minCount), settings);
}

std::optional<Outcome> throughRows(const Settings& settings, const Table& table) {
    return throughAFile(settings, table, {});
}

std::optional<Outcome> throughShuffledRows(const Settings& settings, const Table& table) {
    return throughAFile(settings, table,
                        {.shuffled = true, .split = true, .seed = table.histories.size()});
}

/// A row for each item, and one for each transaction without items, in any order.
template <class Time>
std::optional<Outcome> throughColumns(const Settings& settings, const Table& table) {
    struct Row {
        std::size_t history;
        oracle::Time time;
        Code item;
    };
    Dictionary names;
    names.add("no row has this item");
    std::vector<Row> rows;
    for (std::size_t history = 0; history < table.histories.size(); ++history)
        for (const auto& [time, items] : table.histories[history]) {
            if (items.empty())
                rows.push_back({history, time, NO_ITEM});
            for (const std::string& item : items)
                rows.push_back({history, time, names.add(item)});
        }
    oracle::Draws draws(rows.size());
    for (std::size_t left = rows.size(); left > 1; --left)
        std::swap(rows[left - 1], rows[draws.upTo(left - 1)]);

    std::vector<std::uint32_t> entities;
    std::vector<Time> times;
    std::vector<std::uint32_t> items;
    for (const Row& row : rows) {
        entities.push_back(static_cast<std::uint32_t>(row.history));
        times.push_back(static_cast<Time>(row.time));
        items.push_back(static_cast<std::uint32_t>(row.item));
    }
    const std::size_t histories = table.histories.size();
    return minedIn(indexColumns(entities, times, items, histories, names, settings.minCount),
                   settings);
}

std::optional<Outcome> throughWideRows(const Settings& settings, const Table& table) {
    return minedIn(support::indexOf(table, settings.minCount, TimeWidth::BITS_64), settings);
}

/// The index has items that are not frequent in the run.
std::optional<Outcome> throughAnIndexOfAllItems(const Settings& settings, const Table& table) {
    return minedIn(support::indexOf(table, 0), settings);
}

std::optional<Outcome> throughThreads(const Settings& settings, const Table& table) {
    return minedIn(support::indexOf(table, settings.minCount), settings, 3);
}

const std::vector<Door>& doors() {
    static const std::vector<Door> DOORS = {
        {"Rows", throughRows},
        {"ShuffledRows", throughShuffledRows},
        {"WideRows", throughWideRows},
        {"Columns", throughColumns<std::uint32_t>},
        {"WideColumns", throughColumns<std::uint64_t>},
        {"IndexOfAllItems", throughAnIndexOfAllItems},
        {"Threads", throughThreads},
    };
    return DOORS;
}

/// All doors but that of threads, which take longer to start than a tiny table to be mined.
std::span<const Door> doorsOfOneThread() {
    return std::span(doors()).first(doors().size() - 1);
}

/// Compares to the last bit, but without the messages.
testing::AssertionResult isSame(const Outcome& expected, const Outcome& found) {
    if (found.rules == expected.rules && found.itemSets == expected.itemSets)
        return testing::AssertionSuccess();
    for (std::size_t i = 0; i < std::max(expected.rules.size(), found.rules.size()); ++i)
        if (i >= expected.rules.size() || i >= found.rules.size() ||
            !(expected.rules[i] == found.rules[i])) {
            testing::AssertionResult failure = testing::AssertionFailure();
            failure << "rule " << i << " is ";
            i < found.rules.size() ? failure << found.rules[i] : failure << "none";
            failure << " instead of ";
            return i < expected.rules.size() ? failure << expected.rules[i] : failure << "none";
        }
    return testing::AssertionFailure() << found.itemSets.size() << " item sets instead of "
                                       << expected.itemSets.size() << ", or others";
}

/// Whether each door that can take the table yields what the oracle yields.
testing::AssertionResult agree(const Settings& settings, const Table& table,
                               std::span<const Door> entered = doors()) {
    const Outcome expected = oracle::mine(settings, table);
    for (const Door& door : entered) {
        const std::optional<Outcome> found = door.mine(settings, table);
        if (!found)
            continue;
        const testing::AssertionResult same = isSame(expected, *found);
        if (!same) {
            std::ostringstream text;
            if (table.histories.size() < 100)
                text << table;
            return testing::AssertionFailure() << "through " << door.name << " with " << settings
                                               << (settings.allSplits ? " and all splits" : "")
                                               << ": " << same.message() << "\n"
                                               << text.str();
        }
    }
    return testing::AssertionSuccess();
}

TEST(Doors, TakeTheTablesThatTheirRowsCanHold) {
    const Table plain = oracle::tableOf({"1:a 2:b"});
    Table odd = plain;
    odd.histories[0][3] = {"\n"};
    for (const Door& door : doors()) {
        const bool isFile =
            std::string(door.name) == "Rows" || std::string(door.name) == "ShuffledRows";
        EXPECT_TRUE(door.mine({}, plain).has_value()) << door.name;
        EXPECT_EQ(!isFile, door.mine({}, odd).has_value()) << door.name;
    }
}

class RandomTablesOfShape : public testing::TestWithParam<std::size_t> {};

/// Half of the tables are mined with every split, the others by runs.
TEST_P(RandomTablesOfShape, AreMinedAsByTheOracle) {
    const std::size_t shapes = tableShapes().size();
    const std::size_t tables = ADDRESS_SANITIZED ? 150 : 1820;
    std::size_t withRules = 0;
    for (std::size_t i = 0; i < tables; ++i) {
        const std::uint64_t seed = GetParam() + i * shapes;
        RandomCase drawn = oracle::randomCase(seed);
        drawn.settings.allSplits = i % 2 == 1;
        ASSERT_TRUE(agree(drawn.settings, drawn.table)) << "seed " << seed;
        withRules += oracle::mine(drawn.settings, drawn.table).rules.empty() ? 0 : 1;
    }
    // Agreement means little if there is nothing to agree on.
    EXPECT_GE(withRules, tables / 10);
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomTablesOfShape,
                         testing::Range(std::size_t{0}, tableShapes().size()),
                         [](const testing::TestParamInfo<std::size_t>& shape) {
                             return tableShapes()[shape.param].name;
                         });

struct Setting {
    std::string name;
    std::uint32_t minCount;
    std::uint32_t maxOrder;
    std::uint64_t windowSize;
    bool allSplits = false;
};

std::ostream& operator<<(std::ostream& os, const Setting& setting) {
    return os << setting.name;
}

std::string nameOf(const testing::TestParamInfo<Setting>& setting) {
    return setting.param.name;
}

class EveryTable : public testing::TestWithParam<Setting> {
  protected:
    /// Returns the number of tables of up to `number` of the histories. Stops at the first one that
    /// does not agree. Every eighth is mined by threads, too.
    static std::size_t upTo(std::size_t number, const std::vector<oracle::History>& histories) {
        Settings settings;
        settings.minCount = GetParam().minCount;
        settings.maxOrder = GetParam().maxOrder;
        settings.windowSize = GetParam().windowSize;
        settings.allSplits = GetParam().allSplits;
        std::size_t visited = 0;
        return oracle::forEveryTable(histories, number, [&](const Table& table) {
            if (++visited % TRIED_EVERY != 0)
                return true;
            const testing::AssertionResult result =
                visited % 8 == 0 ? agree(settings, table)
                                 : agree(settings, table, doorsOfOneThread());
            EXPECT_TRUE(result);
            return static_cast<bool>(result);
        });
    }
};

class EveryTableOfTwoHistories : public EveryTable {};

TEST_P(EveryTableOfTwoHistories, IsMinedAsByTheOracle) {
    // Of the 80 histories: 1 + 80 + 80 * 81 / 2.
    EXPECT_EQ(3'321U, upTo(2, oracle::allHistories({1, 3}, {"p", "q", "r"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfTwoHistories,
                         testing::Values(Setting{"MinCount0", 0, 0, 0, true},
                                         Setting{"MinCount1MaxOrder1Window1", 1, 1, 1, true},
                                         Setting{"MinCount1Window2", 1, 0, 2},
                                         Setting{"MinCount2", 2, 0, 0}),
                         nameOf);

class EveryTableOfThreeHistories : public EveryTable {};

TEST_P(EveryTableOfThreeHistories, IsMinedAsByTheOracle) {
    // Of the 24 histories: 1 + 24 + 24 * 25 / 2 + 24 * 25 * 26 / 6.
    EXPECT_EQ(2'925U, upTo(3, oracle::allHistories({1, 3}, {"p", "q"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryTableOfThreeHistories,
                         testing::Values(Setting{"MinCount1", 1, 0, 0},
                                         Setting{"MinCount2", 2, 2, 0, true},
                                         Setting{"MinCount3Window1", 3, 0, 1}),
                         nameOf);

class EveryLongHistory : public EveryTable {};

TEST_P(EveryLongHistory, IsMinedAsByTheOracle) {
    // Each of 4 times has 9 possibilities. No transaction at all is the empty table.
    EXPECT_EQ(6'561U, upTo(1, oracle::allHistories({0, 1, 3, 4}, {"p", "q", "r"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryLongHistory,
                         testing::Values(Setting{"NoWindow", 1, 0, 0, true},
                                         Setting{"Window1", 1, 0, 1},
                                         Setting{"Window2", 1, 0, 2, true}),
                         nameOf);

class EveryHistoryOfFourItems : public EveryTable {};

TEST_P(EveryHistoryOfFourItems, IsMinedAsByTheOracle) {
    // Each of 2 times has 17 possibilities.
    EXPECT_EQ(289U, upTo(1, oracle::allHistories({1, 3}, {"p", "q", "r", "s"})));
}

INSTANTIATE_TEST_SUITE_P(Settings, EveryHistoryOfFourItems,
                         testing::Values(Setting{"MinCount0", 0, 0, 0, true},
                                         Setting{"MinCount1Window1", 1, 0, 1, true},
                                         Setting{"MinCount1MaxOrder2Window2", 1, 2, 2}),
                         nameOf);

/// Tables whose bitmaps, masks and weights have more than one word or digit.
std::vector<Series> largeTables() {
    // Histories, transactions, items of a transaction, last time, least count.
    return {
        {{"AlikeHistories", itemNames(4), 2000, 2, 2, 3}, 60},
        {{"ThousandsOfHistories", itemNames(6), 6000, 3, 3, 6, 20}, 20},
        {{"DenseHistories", itemNames(9), 60, 6, 6, 20, 3}, 80},
        {{"NineItemsInMost", itemNames(9), 4, 5, 12, 12}, 60},
        {{"HundredsOfItems", itemNames(300), 4, 3, 4, 30, 1}, 100},
        {{"LongHistories", itemNames(6), 3, 200, 2, 400}, 150},
        {{"LongHistoriesOfOneItem", itemNames(3), 4, 300, 1, 2000}, 100},
        {{"LongHistoriesOfOneItemAtEachTime", itemNames(3), 3, 600, 1, 400}, 30},
        {{"LongAndShortHistories", itemNames(5), 30, 90, 2, 100, 3}, 60},
    };
}

class LargeTablesOfShape : public testing::TestWithParam<Series> {};

TEST_P(LargeTablesOfShape, AreMinedAsByTheOracle) {
    const TableShape& shape = GetParam().shape;
    const std::size_t tables = ADDRESS_SANITIZED ? GetParam().tables / 10 : GetParam().tables;
    std::size_t withRules = 0;
    for (std::uint64_t seed = 1; seed <= tables; ++seed) {
        RandomCase drawn = oracle::randomCase(seed);
        drawn.table = oracle::randomTable(shape, seed);
        drawn.settings.minCount = std::max(drawn.settings.minCount, shape.leastMinCount);
        drawn.settings.windowSize =
            std::min<oracle::Time>(drawn.settings.windowSize, shape.lastTime);
        drawn.settings.allSplits = seed % 2 == 0;
        ASSERT_TRUE(agree(drawn.settings, drawn.table)) << "seed " << seed;
        withRules += oracle::mine(drawn.settings, drawn.table).rules.empty() ? 0 : 1;
    }
    EXPECT_GE(withRules, tables / 10);
}

INSTANTIATE_TEST_SUITE_P(Shapes, LargeTablesOfShape, testing::ValuesIn(largeTables()),
                         [](const testing::TestParamInfo<Series>& series) {
                             return series.param.shape.name;
                         });

struct RealRun {
    std::string name;
    std::string file;
    std::size_t histories;  ///< How many of the file, from the first on.
    Settings settings;
};

std::ostream& operator<<(std::ostream& os, const RealRun& run) {
    return os << run.file << " with " << run.settings;
}

class RealHistories : public testing::TestWithParam<RealRun> {};

TEST_P(RealHistories, AreMinedAsByTheOracle) {
    const rule::TransactionSet txns = support::realHistories(GetParam().file, GetParam().histories);
    EXPECT_TRUE(agree(GetParam().settings, support::tableOf(txns)));
}

Settings settings(std::uint32_t minCount, std::uint32_t maxOrder, std::uint64_t windowSize,
                  bool allSplits = false) {
    Settings made;
    made.minCount = minCount;
    made.maxOrder = maxOrder;
    made.windowSize = windowSize;
    made.allSplits = allSplits;
    return made;
}

constexpr std::uint64_t DAY = std::uint64_t{24} * 60 * 60;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealHistories);
INSTANTIATE_TEST_SUITE_P(
    Runs, RealHistories,
    testing::ValuesIn(support::possibleRuns<RealRun>(
        {RealRun{"Fines", "log_traffic_fines.tsv", support::ALL_HISTORIES,
                 settings(20, 0, 0, true)},
         RealRun{"FinesWithin90Days", "log_traffic_fines.tsv", support::ALL_HISTORIES,
                 settings(100, 0, 90 * DAY)},
         RealRun{"Patients", "synthea27.tsv", support::ALL_HISTORIES, settings(10, 1, 0)},
         RealRun{"PatientsWithinTenYears", "synthea27.tsv", support::ALL_HISTORIES,
                 settings(8, 1, 3650)},
         RealRun{"PatientsTriples", "synthea27.tsv", support::ALL_HISTORIES,
                 settings(23, 2, 0, true)},
         RealRun{"Invoices", "online_retail.tsv", 40, settings(6, 0, 0)},
         RealRun{"InvoiceLines", "online_retail_lines.tsv", 40, settings(7, 0, 0)},
         RealRun{"Households", "completejourney_types.tsv", 150, settings(25, 0, 0)},
         RealRun{"HouseholdsWithin28Days", "completejourney_types.tsv", 60,
                 settings(10, 0, 28 * DAY, true)}})),
    [](const testing::TestParamInfo<RealRun>& run) { return run.param.name; });

}  // namespace
}  // namespace quarvis::mining
