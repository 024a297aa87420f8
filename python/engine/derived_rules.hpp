#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "arrays.hpp"
#include "found.hpp"
#include "rule_list.hpp"
#include "watch.hpp"

namespace binding {

/// The item sets with the rules that can be made of them without times: each split that is proposed
/// and passes among so many histories, counted wherever all of its items are. Keeps to the watch's
/// budget of time and bytes.
Found withBasketRules(const Found& found, std::size_t histories, quarvis::mining::Splits splits,
                      const RuleBounds& bounds, Watch& watch);

/// What was found in some of the histories, those that have items for both sides of the rules that
/// are asked for: leaves the rules all of whose antecedents are marked in `left` and all of whose
/// subsequents in `right`, both by rank, and lists the sets that have different items for either.
/// Counts of sides are taken from `all`, an index of the same items in all histories, and decide
/// with them whether a rule passes.
Found withSides(const Found& found, const IndexPointer& all, const Column<std::uint8_t>& left,
                const Column<std::uint8_t>& right, const RuleBounds& bounds, Watch& watch);

/// The same, where the counts of sides are given by the places of the rules in `found`, and the
/// number of all histories.
Found withCountedSides(const Found& found, const Column<std::uint8_t>& left,
                       const Column<std::uint8_t>& right,
                       const Column<std::uint32_t>& antecedentCounts,
                       const Column<std::uint32_t>& subsequentCounts, std::size_t histories,
                       const RuleBounds& bounds, Watch& watch);

}  // namespace binding
