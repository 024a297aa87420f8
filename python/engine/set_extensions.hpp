#pragma once

#include <cstdint>
#include <vector>

#include "arrays.hpp"
#include "found.hpp"
#include "watch.hpp"

namespace binding {

/// For each listed item set, in the order of the item-set file, two columns. `not_closed` is 1 if
/// a set that was found has one item more and the same count; `not_maximal` is 1 if any set that
/// was found has one item more.
///
/// Takes time and memory proportional to the items of all sets, plus a byte per set. Throws Python
/// errors, and `BudgetExceeded` when the watch's budget of time is exceeded.
Columns itemSetExtensions(const Found& found, Watch& watch);

}  // namespace binding
