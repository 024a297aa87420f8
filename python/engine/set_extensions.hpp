#pragma once

#include <cstdint>
#include <vector>

#include "arrays.hpp"
#include "found.hpp"
#include "watch.hpp"

namespace binding {

/// By listed item set, in the order of the item-set file: 1 where a set that was found extends it
/// by one item with as many histories (`not_closed`), and with any number of them (`not_maximal`).
///
/// Takes time and memory in proportion to the items of all sets, and a byte a set. Throws Python
/// errors, and `BudgetExceeded` beyond the watch's budget of time.
Columns itemSetExtensions(const Found& found, Watch& watch);

}  // namespace binding
