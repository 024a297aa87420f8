#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#pragma GCC visibility push(default)

/// \file
/// The ids that the engine works with. Each kind is a type of its own, so that one cannot be passed
/// for another. `at` converts an id into an array index.
namespace quarvis::mining {

/// A frequent item: its place among the frequent items of an index, in the byte order of their
/// names. Ascending sequences of ranks therefore compare as the sequences of names do.
enum class Rank : std::uint32_t {};

/// A history: its place in an index. Histories are numbered in the order in which their entities
/// were first met, or by the codes that the caller gave.
enum class HistoryId : std::uint32_t {};

/// A name in a dictionary: its place in the order in which the names were first met.
enum class Code : std::uint32_t {};

/// Stands for the item of a row that has no item.
inline constexpr Code NO_ITEM{std::numeric_limits<std::uint32_t>::max()};

/// The array index that an id stands for.
template <class Id>
constexpr std::size_t at(Id id) {
    return static_cast<std::size_t>(id);
}

}  // namespace quarvis::mining

#pragma GCC visibility pop
