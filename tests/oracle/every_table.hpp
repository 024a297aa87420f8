#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "oracle/table.hpp"

namespace oracle {

/// Every history over the times and the items: any subset of the items at each time, but not the
/// empty one at all times.
std::vector<History> allHistories(const std::vector<Time>& times,
                                  const std::vector<std::string>& items);

/// Calls `visit` with each table of up to `number` of the histories, until it returns false.
/// Returns the number of calls. The histories of a table are in the order of `histories`, and may
/// repeat: the order of a table's histories does not matter, so one order is enough.
std::size_t forEveryTable(const std::vector<History>& histories, std::size_t number,
                          const std::function<bool(const Table&)>& visit);

}  // namespace oracle
