#pragma once

#include <cstdint>

#include "arrays.hpp"
#include "rows.hpp"

/// \file
/// Counts given sets and rules on a shard. Lists of ranks are given by offsets and values.
namespace binding {

/// The number of histories of the shard in which each rule counts.
Array<std::uint32_t> countRules(const IndexPointer& shard, std::uint64_t window,
                                const Column<std::int64_t>& leftOffsets,
                                const Column<std::uint32_t>& left,
                                const Column<std::int64_t>& rightOffsets,
                                const Column<std::uint32_t>& right);

/// The number of histories of the shard that hold each set.
Array<std::uint32_t> countSets(const IndexPointer& shard, const Column<std::int64_t>& offsets,
                               const Column<std::uint32_t>& ranks);

}  // namespace binding
