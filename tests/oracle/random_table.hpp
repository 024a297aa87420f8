#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "oracle/settings.hpp"
#include "oracle/table.hpp"

namespace oracle {

/// What random tables of a kind look like. Each number is drawn anew for each table, history or
/// transaction, from 1 to its greatest value; a transaction may also be without items.
struct TableShape {
    std::string name;
    std::vector<std::string> items;   ///< The names to draw from.
    std::size_t histories;            ///< Greatest number of histories.
    std::size_t transactions;         ///< Greatest number of transactions of a history.
    std::size_t itemsOfTransaction;   ///< Greatest number of items of a transaction.
    Time lastTime;                    ///< Times are drawn from 0 to this one.
    std::uint32_t leastMinCount = 0;  ///< Below it the frequent sets would be too many.
};

std::ostream& operator<<(std::ostream& os, const TableShape& shape);

/// The shapes that tests go through. With each of them a run takes milliseconds.
const std::vector<TableShape>& tableShapes();

/// The same table for the same seed, on every platform.
Table randomTable(const TableShape& shape, std::uint64_t seed);

struct RandomCase {
    std::string shape;
    Table table;
    Settings settings;
};

/// A table of the shape number `seed` % the number of shapes, and settings that suit it. In half of
/// the cases no threshold but `minCount` is set; in the others some are, at figures that rules of
/// the table may have.
RandomCase randomCase(std::uint64_t seed);

}  // namespace oracle
