#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <quarvis/rule.hpp>

/// Tables of transactions as the tests of the mining make them.
namespace mining_tests {

/// The items that one entity had at each time; at least one time.
using TableHistory = std::map<std::uint32_t, std::set<std::string>>;

/// The histories of all entities. Their keys are left out: nothing that is mined depends on them.
struct Table {
    std::vector<TableHistory> histories;
};

/// A table in short form, a text for each history: "1:a,b 5:c 7:" has a and b at time 1, c at 5 and
/// a transaction without items at 7. No item is empty or holds a comma or a blank.
Table tableOf(std::initializer_list<const char*> histories);

/// The item set of "a,b"; the empty text is the empty set.
quarvis::rule::ItemSet itemsOf(const std::string& names);

/// The short form of a history, for messages.
std::string shortForm(const TableHistory& history);

/// The short forms of the histories, a line each.
std::ostream& operator<<(std::ostream& os, const Table& table);

/// One history, or all of them in the table's order, as the mining takes them.
quarvis::rule::History historyOf(const TableHistory& history);
quarvis::rule::TransactionSet transactionsOf(const Table& table);

}  // namespace mining_tests
