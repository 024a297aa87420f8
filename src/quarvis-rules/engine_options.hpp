#pragma once

#include <quarvis/mining/options.hpp>

#include "config.hpp"

/// The settings as options of the engine.
inline quarvis::mining::MiningOptions engineOptions(const Configuration& config) {
    quarvis::mining::MiningOptions options;
    options.minCount = config.minCount;
    // For the greatest 32-bit order the sum wraps to 0, no bound, which is right: no rule can have
    // that many items.
    options.maxSize = config.maxOrder == 0 ? 0 : config.maxOrder + 1;
    options.window = config.windowSize;
    options.thresholds = {config.minSupport, config.minConfidence, config.minLift,
                          config.maxConviction};
    return options;
}
