#pragma once

#include <nanobind/nanobind.h>

namespace binding {

/// Adds the classes for a run over shards in other processes: `LevelRun`, `ShardWork`, `TallySum`.
void addShards(nanobind::module_& module);

}  // namespace binding
