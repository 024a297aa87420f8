#include <quarvis/mining/index_builder.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "index_text.hpp"
#include "oracle/draws.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::textOf;

constexpr auto NONE = static_cast<std::uint32_t>(NO_ITEM);

Dictionary namesOf(std::initializer_list<const char*> names) {
    Dictionary made;
    for (const char* name : names)
        made.add(name);
    return made;
}

/// Rows as columns. A time has the width of its column.
template <class Time>
struct Columns {
    std::vector<std::uint32_t> entities;
    std::vector<Time> times;
    std::vector<std::uint32_t> items;

    HistoryIndex index(std::size_t histories, const Dictionary& names,
                       std::uint32_t minCount) const {
        return indexColumns(entities, times, items, histories, names, minCount);
    }
};

TEST(Columns, BecomeHistoriesByTheNumbersOfTheirEntities) {
    const Columns<std::uint32_t> rows{{2, 0, 2, 0}, {5, 1, 3, 1}, {1, 0, 0, 1}};
    EXPECT_EQ("minCount 1, 32 bits, 3 transactions, 4 occurrences\na 2, b 2\n1:a,b |  | 3:a 5:b | ",
              textOf(rows.index(4, namesOf({"a", "b"}), 1)));
}

TEST(Columns, WithoutRowsGiveEmptyHistories) {
    const Columns<std::uint64_t> rows;
    EXPECT_EQ("minCount 0, 64 bits, 0 transactions, 0 occurrences\n\n | ",
              textOf(rows.index(2, namesOf({"a"}), 0)));
    EXPECT_EQ(0U, rows.index(0, namesOf({}), 0).historyCount());
}

TEST(Columns, RowsWithoutItemsAreTransactions) {
    const Columns<std::uint32_t> rows{{0, 0, 0, 1}, {1, 2, 2, 9}, {NONE, NONE, 0, NONE}};
    EXPECT_EQ("minCount 1, 32 bits, 3 transactions, 1 occurrences\na 1\n2:a | ",
              textOf(rows.index(2, namesOf({"a"}), 1)));
}

TEST(Columns, RowsMayRepeat) {
    const Columns<std::uint32_t> rows{{0, 0, 0}, {1, 1, 1}, {0, 0, 0}};
    EXPECT_EQ("minCount 1, 32 bits, 1 transactions, 1 occurrences\na 1\n1:a",
              textOf(rows.index(1, namesOf({"a"}), 1)));
}

/// A name is an item only if a row has it, even if the least count is 0.
TEST(Columns, NamesThatNoRowHasAreNoItems) {
    const Columns<std::uint32_t> rows{{0}, {1}, {1}};
    EXPECT_EQ("minCount 0, 32 bits, 1 transactions, 1 occurrences\nb 1\n1:b",
              textOf(rows.index(1, namesOf({"a", "b", "c"}), 0)));
}

TEST(Columns, TimesOf64BitsAreSortedAsAWhole) {
    const Columns<std::uint64_t> rows{
        {0, 0, 0}, {std::uint64_t{1} << 63, 7, std::uint64_t{1} << 32}, {0, 0, 0}};
    EXPECT_EQ(
        "minCount 1, 64 bits, 3 transactions, 3 occurrences\na 1\n"
        "7:a 4294967296:a 9223372036854775808:a",
        textOf(rows.index(1, namesOf({"a"}), 1)));
}

TEST(Columns, OfDifferentLengthsAreRefused) {
    const Dictionary names = namesOf({"a"});
    EXPECT_THROW((Columns<std::uint32_t>{{0}, {1, 2}, {0}}.index(1, names, 1)),
                 std::invalid_argument);
    EXPECT_THROW((Columns<std::uint32_t>{{0}, {1}, {}}.index(1, names, 1)), std::invalid_argument);
    EXPECT_THROW((Columns<std::uint64_t>{{}, {1}, {0}}.index(1, names, 1)), std::invalid_argument);
}

TEST(Columns, NumbersThatAreOutOfRangeAreRefused) {
    const Dictionary names = namesOf({"a", "b"});
    EXPECT_NO_THROW((Columns<std::uint32_t>{{1}, {1}, {1}}.index(2, names, 1)));
    EXPECT_THROW((Columns<std::uint32_t>{{2}, {1}, {1}}.index(2, names, 1)), std::invalid_argument);
    EXPECT_THROW((Columns<std::uint32_t>{{1}, {1}, {2}}.index(2, names, 1)), std::invalid_argument);
    EXPECT_THROW((Columns<std::uint32_t>{{1}, {1}, {NONE - 1}}.index(2, names, 1)),
                 std::invalid_argument);
    EXPECT_THROW((Columns<std::uint64_t>{{0}, {1}, {0}}.index(0, names, 1)), std::invalid_argument);
}

TEST(Columns, OfMoreHistoriesThanThereAreNumbersAreRefused) {
    const Columns<std::uint32_t> rows;
    EXPECT_THROW(rows.index(std::numeric_limits<std::uint32_t>::max(), namesOf({}), 1),
                 std::length_error);
}

/// Random rows, as columns and through the builder, which meets the entities in the order of their
/// numbers.
template <class Time>
void expectSameIndexes(std::uint64_t seed, TimeWidth width) {
    oracle::Draws draws(seed);
    const std::size_t histories = 1 + draws.upTo(20);
    const std::uint64_t lastTime = draws.oneOf(
        {std::uint64_t{3}, std::uint64_t{50}, std::uint64_t{std::numeric_limits<Time>::max()} - 1});
    Columns<Time> columns;
    IndexBuilder builder(width);
    Dictionary names;
    const auto addRow = [&](std::size_t entity, std::uint64_t time, const std::string& item) {
        columns.entities.push_back(static_cast<std::uint32_t>(entity));
        columns.times.push_back(static_cast<Time>(time));
        builder.beginRow("e" + std::to_string(entity), time);
        if (item.empty()) {
            columns.items.push_back(NONE);
            return;
        }
        columns.items.push_back(static_cast<std::uint32_t>(names.add(item)));
        builder.addItem(item);
    };
    for (std::size_t entity = 0; entity < histories; ++entity)
        addRow(entity, draws.upTo(lastTime), "");
    for (std::uint64_t rows = draws.upTo(300); rows > 0; --rows) {
        const std::string item = draws.upTo(9) == 0 ? "" : std::to_string(draws.upTo(12));
        addRow(draws.upTo(histories - 1), draws.upTo(lastTime), item);
    }
    const auto minCount = static_cast<std::uint32_t>(draws.upTo(6));
    ASSERT_EQ(textOf(builder.freeze(minCount)), textOf(columns.index(histories, names, minCount)))
        << "seed " << seed;
}

TEST(Columns, GiveTheIndexThatTheBuilderMakesOfTheirRows) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        expectSameIndexes<std::uint32_t>(seed, TimeWidth::BITS_32);
        expectSameIndexes<std::uint64_t>(seed, TimeWidth::BITS_64);
    }
}

}  // namespace
}  // namespace quarvis::mining
