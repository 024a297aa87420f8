#pragma once

#include <cstdint>

#include "arrays.hpp"
#include "rows.hpp"

/// \file
/// What is counted on a shard of sets and rules that the caller names. Lists of ranks are given by
/// offsets and values.
namespace binding {

/// In how many histories of the shard each rule counts.
Array<std::uint32_t> countRules(const IndexPointer& shard, std::uint64_t window,
                                const Column<std::int64_t>& leftOffsets,
                                const Column<std::uint32_t>& left,
                                const Column<std::int64_t>& rightOffsets,
                                const Column<std::uint32_t>& right);

/// In how many histories of the shard each set is.
Array<std::uint32_t> countSets(const IndexPointer& shard, const Column<std::int64_t>& offsets,
                               const Column<std::uint32_t>& ranks);

}  // namespace binding
