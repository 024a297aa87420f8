#pragma once

#include <cstdint>
#include <limits>
#include <string>

/// The settings of a run, filled once from the command line. The file name "-" stands for standard
/// input or output.
struct Configuration {
    std::string inputFile;    ///< The transaction file.
    std::string outputFile;   ///< The rules file.
    std::string itemSetFile;  ///< The item-set file; empty when none is written.

    /// The least number of histories of a frequent item set, and the least count of a rule.
    std::uint32_t minCount = 5;

    double minSupport = 0;     ///< Least support of a rule; like all bounds, inclusive.
    double minConfidence = 0;  ///< Least confidence.
    double minLift = 0;        ///< Least lift.
    double maxConviction = std::numeric_limits<double>::infinity();  ///< Greatest conviction.

    std::uint32_t maxOrder = 0;    ///< Greatest order of a rule; 0: until the search runs out.
    std::uint32_t windowSize = 0;  ///< Window of rule counting, in units of time; 0: no window.
    bool verbose = false;          ///< Never read: messages are always printed.
};
