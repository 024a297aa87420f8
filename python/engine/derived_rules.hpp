#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "arrays.hpp"
#include "found.hpp"
#include "rule_list.hpp"
#include "watch.hpp"

namespace binding {

/// Returns the item sets together with rules that ignore times: each proposed split of a set is a
/// rule, which counts in every history with all of its items. `histories` is the number of all
/// histories. Rules that fail `bounds` are left out. Keeps to the watch's budget of time and bytes.
Found withBasketRules(const Found& found, std::size_t histories, quarvis::mining::Splits splits,
                      const RuleBounds& bounds, Watch& watch);

/// Restricts a result to rules whose antecedents are all marked in `left` and whose subsequents are
/// all marked in `right`, both by rank. `found` comes from only those histories that have items for
/// both sides, so the counts of single sides are taken from `all`, an index of the same items in
/// all histories, before `bounds` are applied. Of the item sets, those with different items for the
/// two sides stay listed.
Found withSides(const Found& found, const IndexPointer& all, const Column<std::uint8_t>& left,
                const Column<std::uint8_t>& right, const RuleBounds& bounds, Watch& watch);

/// The same with known counts of sides, one for each rule of `found`, and the number of all
/// histories.
Found withCountedSides(const Found& found, const Column<std::uint8_t>& left,
                       const Column<std::uint8_t>& right,
                       const Column<std::uint32_t>& antecedentCounts,
                       const Column<std::uint32_t>& subsequentCounts, std::size_t histories,
                       const RuleBounds& bounds, Watch& watch);

}  // namespace binding
