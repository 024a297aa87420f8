#pragma once

#include <cstddef>
#include <string>

#include "config.hpp"
#include "support/samples.hpp"

namespace bench {

/// The wall-clock time of searching an index by one thread and by two.
struct ThreadTimes {
    struct Of {
        Samples itemSets;
        Samples rules;
        Samples both;
        Samples bare;  ///< Arithmetic in registers, split among the threads.
    };

    Of one;
    Of two;
    std::size_t setCount;
    std::size_t ruleCount;
};

/// Checks that both find the same, and runs each `runs` times, in turns and in this process, so
/// that the first touch of memory is not timed. Bare arithmetic follows each run, to tell what two
/// threads can gain at that time: cores that seem free can be shared with other machines. Reading
/// is not timed.
ThreadTimes comparedThreads(std::size_t runs, const Configuration& config, const std::string& path);

}  // namespace bench
