#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {

/// The shape of random tables. Each number is drawn anew for each table, history or transaction,
/// from 1 to the greatest value. A transaction may also have no items.
struct TableShape {
    std::string name;
    std::vector<std::string> items;   ///< The names to draw from.
    std::size_t histories;            ///< Greatest number of histories.
    std::size_t transactions;         ///< Greatest number of transactions of a history.
    std::size_t itemsOfTransaction;   ///< Greatest number of items of a transaction.
    Time lastTime;                    ///< Times are drawn from 0 to this one.
    std::uint32_t leastMinCount = 0;  ///< Below this there would be too many frequent sets.
};

std::ostream& operator<<(std::ostream& os, const TableShape& shape);

/// The shapes that tests use. A run with any of them takes milliseconds.
const std::vector<TableShape>& tableShapes();

/// Makes a table. The same seed gives the same table on every platform.
Table randomTable(const TableShape& shape, std::uint64_t seed);

struct RandomCase {
    std::string shape;
    Table table;
    Settings settings;
};

/// A table of shape `seed` modulo the number of shapes, with settings that suit it. In half of the
/// cases only `minCount` is set; in the others some thresholds are, at values that rules of the
/// table may have.
RandomCase randomCase(std::uint64_t seed);

}  // namespace oracle
