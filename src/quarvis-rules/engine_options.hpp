#pragma once

#include <quarvis/mining/options.hpp>

#include "config.hpp"

/// What the engine is asked for with these settings.
inline quarvis::mining::MiningOptions engineOptions(const Configuration& config) {
    quarvis::mining::MiningOptions options;
    options.minCount = config.minCount;
    // A rule of the greatest order of all has more items than there can be; 0 is no bound.
    options.maxSize = config.maxOrder == 0 ? 0 : config.maxOrder + 1;
    options.window = config.windowSize;
    options.thresholds = {config.minSupport, config.minConfidence, config.minLift,
                          config.maxConviction};
    return options;
}
