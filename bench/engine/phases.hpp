#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "config.hpp"
#include "support/samples.hpp"

namespace bench {

/// One run of what the tool does with a transaction file, phase by phase.
struct Phases {
    Seconds reading;    ///< The rows of the file, into the builder of the index.
    Seconds index;      ///< Freezing the builder.
    Seconds itemSets;   ///< Finding the frequent item sets.
    Seconds counting;   ///< Counting the rules, up to the report that all are counted.
    Seconds selection;  ///< The measures and thresholds of the counted rules, and sorting.
    Seconds writing;    ///< Both files.

    std::size_t fileBytes;
    std::size_t histories;
    std::size_t items;        ///< That are frequent.
    std::size_t pairs;        ///< Frequent sets of two items.
    std::size_t setCount;     ///< All frequent sets.
    std::size_t memberships;  ///< The counts of all item sets together.
    std::size_t counted;      ///< Rules with the least count, of which those that
    std::size_t ruleCount;    ///< pass the thresholds are kept.

    std::uint64_t digest;  ///< Of the result.

    /// The item sets and the rules.
    Seconds search() const;
    Seconds total() const;
};

/// A whole run by another miner: the time of the mining alone, and the digest of the result.
struct WholeRun {
    Seconds time;
    std::uint64_t digest;
};

/// By `quarvis::rule::mine`, from the rule model into the rule model.
WholeRun minedByModel(const Configuration& config, const std::string& path);

/// By the plain miner of the tests.
WholeRun minedPlainly(const Configuration& config, const std::string& path);

/// Checks that all runs have the result of `minedByModel`, and returns the processor times of
/// `runs` runs in phases, each in a process of its own, and the last run.
struct PhaseTimes {
    Samples reading, index, itemSets, counting, selection, writing;
    Samples search;
    Times total;
    Phases last;
};
PhaseTimes repeatedPhases(std::size_t runs, const Configuration& config, const std::string& path);

}  // namespace bench
