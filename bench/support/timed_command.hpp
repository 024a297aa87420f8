#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// The cost of a command, and what it wrote to standard error.
struct TimedCommand {
    struct Line {
        double end;        ///< Seconds on the wall clock from the start until its end arrived.
        std::string text;  ///< Without the line end.
    };

    std::string messages;        ///< Standard error.
    std::vector<Line> lines;     ///< Its lines, without a last one that has no end.
    double wall = 0;             ///< Seconds until the command had ended.
    double cpu = 0;              ///< Seconds of the processor, in user and in kernel mode.
    std::size_t peakMemory = 0;  ///< The greatest resident size, in bytes.

    /// When the first line with this end arrived. Throws `std::runtime_error` when there is none.
    double momentOf(std::string_view ending) const;
};

/// Runs the program at path `arguments[0]` without input, discards its standard output, and waits
/// for its end. Throws `std::runtime_error` unless its exit status is 0.
///
/// The peak of memory is never less than the resident memory of the calling process at the time,
/// because the system counts the process from its fork on.
TimedCommand timeCommand(const std::vector<std::string>& arguments);

}  // namespace bench
