#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "oracle/numbered.hpp"

namespace oracle {

/// A division of an item set into the two sides of a rule: bit i is set when item i of the set is
/// of the antecedent. Neither side is empty.
using Split = std::uint64_t;

inline bool isOfAntecedent(Split split, std::size_t item) {
    return (split >> item & 1U) != 0;
}

/// The splits that are proposed for a set of so many items: each run of neighbours but the whole
/// set is an antecedent. Throws `std::invalid_argument` for more than 63 items.
std::vector<Split> splitsByRuns(std::size_t items);

/// Every split there is; the same limit, and as many as two to the power of the items.
std::vector<Split> allSplits(std::size_t items);

/// The two sides.
NumberedItems antecedentOf(Split split, const NumberedItems& items);
NumberedItems subsequentOf(Split split, const NumberedItems& items);

}  // namespace oracle
