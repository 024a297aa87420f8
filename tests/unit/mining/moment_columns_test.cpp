#include "moment_columns.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "oracle/draws.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::entryOf;
using mining_tests::makeStandings;
using oracle::TableShape;

/// The masks of an item in each of the words, by those of the standings.
struct Expected {
    std::vector<MomentColumns::Standing> standing;
    std::vector<std::uint64_t> present;
};

Expected expectedOf(const Standings& standings, const MomentWords& words,
                    const std::vector<std::uint32_t>& histories, Rank item) {
    Expected expected{std::vector<MomentColumns::Standing>(words.words()),
                      std::vector<std::uint64_t>(words.words())};
    for (const MomentWords::Field& field : words.fields()) {
        const std::uint32_t history = histories.at(field.place);
        const std::size_t entry = entryOf(standings, history, item);
        if (entry == standings.endEntry(history))
            continue;
        const Standings::Masks masks = standings.masks(history, entry);
        MomentColumns::Standing& standing = expected.standing[field.word];
        standing.fresh |= MomentWords::moved(masks.fresh, field);
        standing.recent |= MomentWords::moved(masks.recent(), field);
        if (masks.present != nullptr)
            expected.present[field.word] |= MomentWords::moved(masks.present, field);
    }
    return expected;
}

void expectColumn(const Expected& expected, const MomentColumns::Column& column) {
    for (std::uint32_t word = 0; word < expected.standing.size(); ++word) {
        const MomentColumns::Standing& standing = expected.standing[word];
        const std::size_t place = column.find(word);
        if (place == column.size) {
            ASSERT_EQ(0U, standing.fresh | standing.recent) << "word " << word;
            continue;
        }
        ASSERT_LT(place, column.size);
        ASSERT_EQ(standing.fresh, column.standing[place].fresh) << "word " << word;
        ASSERT_EQ(standing.recent, column.standing[place].recent) << "word " << word;
        if (column.present != nullptr) {
            ASSERT_EQ(expected.present[word], column.present[place]) << "word " << word;
        }
        if (!column.isDense()) {
            ASSERT_NE(0U, standing.fresh | standing.recent) << "word " << word;
            ASSERT_EQ(word, column.word[place]);
        }
    }
}

/// The numbers of columns of each kind.
struct Seen {
    std::size_t dense = 0;
    std::size_t sparse = 0;
    std::size_t present = 0;
};

/// Compares, for each first item, the columns of about half of the later items.
void expectColumnsOf(const oracle::Table& table, std::uint64_t window, std::uint64_t seed,
                     Seen& seen) {
    const HistoryIndex index = support::indexOf(table, 1);
    const Standings standings =
        makeStandings(Shard::whole(index), std::vector<bool>(index.itemCount(), true), window);
    oracle::Draws draws(seed);
    MomentColumns columns(standings);
    for (std::uint32_t first = 0; first < index.itemCount(); ++first) {
        std::vector<RuleCounter::Partner> asked;
        for (std::uint32_t item = first + 1; item < index.itemCount(); ++item) {
            if (draws.upTo(1) == 0)
                continue;
            std::uint32_t both = 0;
            for (std::uint32_t history = 0; history < index.historyCount(); ++history) {
                const auto has = [&](Rank rank) {
                    for (std::size_t place = index.firstTransaction(HistoryId{history});
                         place < index.endTransaction(HistoryId{history}); ++place)
                        for (const Rank here : index.items(place))
                            if (here == rank)
                                return true;
                    return false;
                };
                both += has(Rank{first}) && has(Rank{item}) ? 1 : 0;
            }
            asked.push_back({Rank{item}, both});
        }
        columns.fill(Rank{first}, asked);

        // Only histories with the first item and at least two of the partners have moments here.
        std::vector<std::uint32_t> histories;
        for (const Standings::Place& place : standings.places(Rank{first})) {
            const auto items = std::count_if(asked.begin(), asked.end(), [&](const auto& one) {
                return entryOf(standings, place.history, one.item) !=
                       standings.endEntry(place.history);
            });
            if (items > 1)
                histories.push_back(place.history);
        }
        std::set<std::size_t> places;
        for (const MomentWords::Field& field : columns.words().fields())
            places.insert(field.place);
        ASSERT_EQ(histories.size(), places.size()) << "seed " << seed;

        ASSERT_TRUE(columns.first().isDense());
        expectColumn(expectedOf(standings, columns.words(), histories, Rank{first}),
                     columns.first());
        for (const auto& [item, both] : asked) {
            ASSERT_TRUE(columns.has(item));
            const MomentColumns::Column& column = columns.of(item);
            expectColumn(expectedOf(standings, columns.words(), histories, item), column);
            (column.isDense() ? seen.dense : seen.sparse) += 1;
            seen.present += column.present != nullptr ? 1 : 0;
        }
        ASSERT_EQ(standings.anyPresent(), columns.first().present != nullptr);
        columns.fill(Rank{first}, {});
        for (const auto& [item, both] : asked)
            ASSERT_FALSE(columns.has(item));
    }
}

TEST(MomentColumns, AColumnTellsWhereAWordStands) {
    const std::uint32_t words[] = {2, 5, 9};
    const MomentColumns::Column column{words, nullptr, nullptr, 3};
    EXPECT_EQ(0U, column.find(2));
    EXPECT_EQ(1U, column.find(5));
    EXPECT_EQ(2U, column.find(9));
    for (const std::uint32_t other : {0U, 1U, 3U, 4U, 8U, 10U})
        EXPECT_EQ(3U, column.find(other)) << other;
    const MomentColumns::Column dense{nullptr, nullptr, nullptr, 3};
    EXPECT_EQ(2U, dense.find(2));
}

TEST(MomentColumns, HoldTheMasksOfEachItemThatWasAskedFor) {
    Seen seen;
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 110U : 660U); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        expectColumnsOf(drawn.table, drawn.settings.windowSize, seed, seen);
    }
    EXPECT_GT(seen.dense, 100U);
    EXPECT_GT(seen.present, 100U);
}

TEST(MomentColumns, HoldTheMasksOfRareItemsAndLongHistories) {
    std::vector<std::string> many;
    for (std::size_t i = 0; i < 60; ++i)
        many.push_back(std::to_string(i));
    const TableShape shapes[] = {
        {"", many, 600, 2, 3, 3},
        {"", {"a", "a", "a", "a", "b", "c", "d"}, 20, 150, 1, 500},
        {"", {"a", "b", "c", "d"}, 400, 3, 2, 3},
    };
    Seen seen;
    for (const TableShape& shape : shapes)
        for (std::uint64_t seed = 0; seed < 2; ++seed)
            for (const std::uint64_t window : {0U, 2U})
                expectColumnsOf(oracle::randomTable(shape, seed), window, seed, seen);
    EXPECT_GT(seen.dense, 20U);
    EXPECT_GT(seen.sparse, 100U);
}

}  // namespace
}  // namespace quarvis::mining
