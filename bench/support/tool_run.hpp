#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

/// The outputs of a run of the tool.
struct Outputs {
    std::string rules;
    std::string itemSets;
    std::string messages;
};

/// The cost of a run of the tool.
struct ToolRun {
    double cpu;              ///< Seconds of the processor, in user and in kernel mode.
    std::size_t peakMemory;  ///< The greatest resident size, in bytes.

    // Seconds on the wall clock. The tool writes each message as soon as it is known, so messages
    // mark where phases end.
    double reading;    ///< With the index: from the start until the frequent items are known.
    double searching;  ///< With the rules: from there until they are prepared for reporting.
    double writing;    ///< From there until the exit.
};

/// Runs the tool at path `tool` with `options` on the file `input`. Its outputs replace the named
/// files. Throws `std::runtime_error` when the run fails.
ToolRun runTool(const std::string& tool, const std::vector<std::string>& options,
                const std::string& input, const Outputs& files);

}  // namespace bench
