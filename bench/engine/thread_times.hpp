#pragma once

#include <cstddef>
#include <string>

#include "config.hpp"
#include "support/samples.hpp"

namespace bench {

/// The search of one index by one thread and by two, on the wall clock.
struct ThreadTimes {
    struct Of {
        Samples itemSets;
        Samples rules;
        Samples both;
    };

    Of one;
    Of two;
    std::size_t setCount;
    std::size_t ruleCount;
};

/// Runs both `runs` times, in turns and each in a process of its own, after checking that both find
/// the same. Reading is not part of the times.
ThreadTimes comparedThreads(std::size_t runs, const Configuration& config, const std::string& path);

}  // namespace bench
