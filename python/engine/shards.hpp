#pragma once

#include <nanobind/nanobind.h>

namespace binding {

/// Adds what a run over shards in other processes needs: `Shard`, `LevelRun`, and the sums.
void addShards(nanobind::module_& module);

}  // namespace binding
