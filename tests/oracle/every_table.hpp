#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "oracle/table.hpp"

namespace oracle {

/// Every history over the times and the items: at each time nothing, or any subset of the items;
/// something at one time at least.
std::vector<History> allHistories(const std::vector<Time>& times,
                                  const std::vector<std::string>& items);

/// Calls `visit` with the tables of up to `number` of the histories, until it returns false. Each
/// history of a table is at or after the one before it in `histories`: the order of a table's
/// histories does not matter, so one order is enough. The number of calls.
std::size_t forEveryTable(const std::vector<History>& histories, std::size_t number,
                          const std::function<bool(const Table&)>& visit);

}  // namespace oracle
