#pragma once

#include <cstddef>

/// \file
/// What the steps of the search for item sets cost, in units of about a nanosecond, and the choices
/// between two ways of a step that follow from it. Results do not depend on any of this.
namespace quarvis::mining::walk_costs {

/// Counting the items after the first one in its histories: a unit for each item, and some for each
/// history, which lies anywhere in memory.
inline std::size_t delivery(std::size_t items, std::size_t histories) {
    return items + 4 * histories;
}

/// Whether counters are looked through one after the other, rather than by another walk over the
/// histories that were counted. The former goes eight counters at a time and twice as fast as a
/// walk in the worst case.
inline bool scanningPays(std::size_t counters, std::size_t delivered) {
    return counters <= 4 * delivered;
}

/// After how many histories beyond the first `spare` it is looked for the first time whether any
/// item can still be in `least` of all of them.
inline std::size_t firstCheck(std::size_t least) {
    return least / 8 < 8 ? 8 : least / 8;
}

/// Intersecting a bitmap with `number` others.
inline std::size_t joins(std::size_t number, std::size_t words) {
    return number * (words / 2 + 2);
}

/// Whether the bitmaps of a class of `members` are made anew over the `histories` that its prefix
/// is in, with `less` words instead of `words`. Each member costs a unit a history; each is joined
/// with half of the others, at half a unit a word that is saved, and what is joined is joined
/// again.
inline bool shrinkingPays(std::size_t members, std::size_t words, std::size_t less,
                          std::size_t histories) {
    return members * (words - less) >= 4 * histories + 16;
}

/// A set that is found, until it stands in the result.
inline constexpr std::size_t FOUND = 50;

/// What a search may cost during which nothing is told. About a third of a second.
inline constexpr std::size_t SHORT_SEARCH = 300'000'000;

}  // namespace quarvis::mining::walk_costs
