#pragma once

#include <cstddef>

/// \file
/// The cost model of the search for item sets, in units of about a nanosecond, and the choices
/// between two ways of a step that follow from it. Results do not depend on any of this.
namespace quarvis::mining::walk_costs {

/// Counting the later items in the histories of a first item: one unit an item, and four a history,
/// which may be anywhere in memory.
inline std::size_t delivery(std::size_t items, std::size_t histories) {
    return items + 4 * histories;
}

/// Whether to scan all counters for those that are not 0, rather than to pass again over the
/// histories that were counted. A scan takes eight counters at a time, so at this limit it is still
/// about twice as fast as a pass.
inline bool scanningPays(std::size_t counters, std::size_t delivered) {
    return counters <= 4 * delivered;
}

/// How many histories beyond the first `spare` to count before the first test whether some item can
/// still be in `least` of all of them.
inline std::size_t firstCheck(std::size_t least) {
    return least / 8 < 8 ? 8 : least / 8;
}

/// Intersecting a bitmap with `number` others of as many words.
inline std::size_t joins(std::size_t number, std::size_t words) {
    return number * (words / 2 + 2);
}

/// Whether to rebuild the bitmaps of a class over the `histories` that hold its prefix, with `less`
/// words instead of `words`. Rebuilding costs one unit for each of the `members` and each history.
/// Each member is joined with half of the others, which costs half a unit less for each word that
/// is saved, and the joins are joined again.
inline bool shrinkingPays(std::size_t members, std::size_t words, std::size_t less,
                          std::size_t histories) {
    return members * (words - less) >= 4 * histories + 16;
}

/// Storing a set that is found, and later putting it into the result.
inline constexpr std::size_t FOUND = 50;

/// What a search may cost without reporting anything: about a third of a second.
inline constexpr std::size_t SHORT_SEARCH = 300'000'000;

}  // namespace quarvis::mining::walk_costs
