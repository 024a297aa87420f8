#pragma once

#include <cstddef>
#include <cstdint>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "samples.hpp"

namespace bench {

/// One run of the mining, phase by phase. Bytes are of the heap.
struct Phases {
    Seconds index;     ///< The compact histories.
    Seconds pairs;     ///< The frequent sets of two items.
    Seconds larger;    ///< All larger ones.
    Seconds counting;  ///< Of the rules.
    Seconds assembly;  ///< Naming the item sets and rules, and the measures.

    std::size_t histories;
    std::size_t items;      ///< That are frequent.
    std::size_t pairCount;  ///< Frequent sets of two items.
    std::size_t itemSets;
    std::size_t memberships;  ///< The counts of all item sets together.
    std::size_t ruleCount;

    std::size_t indexBytes;   ///< As the index tells.
    std::size_t setBytes;     ///< The frequent sets as ranks, and the counted rules.
    std::size_t resultBytes;  ///< The item sets and rules by name.
    std::size_t searchPeak;   ///< The greatest rise of the memory up to the assembly,
    std::size_t totalPeak;    ///< and up to the end.

    std::uint64_t digest;  ///< Of the result.

    Seconds total() const;
};

/// Mines the histories in a process of its own.
Phases minedInPhases(const Configuration& config, const quarvis::rule::TransactionSet& txns);

/// The same by `quarvis::rule::mine`, and by the plain miner of the tests: how long all of it
/// takes, and the digest of the result.
struct WholeRun {
    Seconds time;
    std::uint64_t digest;
};
WholeRun mined(const Configuration& config, const quarvis::rule::TransactionSet& txns);
WholeRun minedPlainly(const Configuration& config, const quarvis::rule::TransactionSet& txns);

/// The processor times of `runs` runs in phases, and the last of them, after checking that all have
/// the result of `mined`.
struct PhaseTimes {
    Samples index, pairs, larger, counting, assembly;
    Times total;
    Phases last;

    /// The medians of the two phases of the search together.
    double search() const { return pairs.median() + larger.median(); }
};
PhaseTimes repeatedPhases(std::size_t runs, const Configuration& config,
                          const quarvis::rule::TransactionSet& txns);

}  // namespace bench
