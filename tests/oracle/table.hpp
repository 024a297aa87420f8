#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace oracle {

using Time = std::uint64_t;

/// Items in byte order.
using Items = std::set<std::string>;

/// The items that one entity had at each time.
using History = std::map<Time, Items>;

/// The histories of all entities.
struct Table {
    std::vector<History> histories;

    /// The names of the entities. If empty, `entityOf` makes them up.
    std::vector<std::string> entities = {};
};

/// The name of a history's entity. Made-up names are in byte order as the histories are.
std::string entityOf(const Table& table, std::size_t history);

/// A table from its short form, a text for each history: "1:a,b 5:c 7:" has a and b at time 1, c at
/// 5 and a transaction without items at 7. Items must not be empty, nor contain a comma or a blank.
Table tableOf(std::initializer_list<const char*> histories);

/// The items of "a,b"; the empty text has none.
Items itemsOf(const std::string& names);

/// The short form of a history.
std::string shortForm(const History& history);

/// The short forms of the histories, a line each.
std::ostream& operator<<(std::ostream& os, const Table& table);

}  // namespace oracle
