#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "table.hpp"

namespace mining_tests {

/// Every history over the times and the items: at each time nothing, or any subset of the items;
/// something at one time at least.
std::vector<TableHistory> allHistories(const std::vector<std::uint32_t>& times,
                                       const std::vector<std::string>& items);

/// Calls `visit` with the tables of up to `number` of the histories, until it returns false. Each
/// history of a table is at or after the one before it in `histories`: the order of a table's
/// histories does not matter, so one order is enough. The number of calls.
std::size_t forEveryTable(const std::vector<TableHistory>& histories, std::size_t number,
                          const std::function<bool(const Table&)>& visit);

}  // namespace mining_tests
