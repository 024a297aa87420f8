#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "oracle/table.hpp"

namespace oracle {

/// An item of a table: its place among all items of the table in byte order.
using ItemNumber = std::uint32_t;

/// Numbers of items, ascending.
using NumberedItems = std::vector<ItemNumber>;

/// Times in ascending order.
using Times = std::vector<Time>;

/// A table as the times at which each item occurs.
struct NumberedTable {
    std::vector<std::string> names;  ///< The names of the items, by number.
    std::vector<std::map<ItemNumber, Times>> histories;
};

NumberedTable numbered(const Table& table);

/// Whether item set `a` comes before `b` in the files. At the first difference the lesser item
/// decides, and a set comes before its own prefixes.
bool precedes(const NumberedItems& a, const NumberedItems& b);

/// "{a,b}".
std::string braced(const NumberedItems& items, const std::vector<std::string>& names);

/// "a => {b,c}": a side of one item has no braces.
std::string ruleText(const NumberedItems& antecedent, const NumberedItems& subsequent,
                     const std::vector<std::string>& names);

}  // namespace oracle
