#pragma once

#include <cstdint>
#include <string>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/rules.hpp>

#include "mine.hpp"
#include "oracle/outcome.hpp"

/// Fingerprints of what a run finds: of the bytes of both files, and of all bits of the measures,
/// since a file shows only six digits. Equal results have equal fingerprints, whatever found them.
namespace bench {

struct ResultFiles {
    std::string rules;
    std::string itemSets;
};

/// The fingerprint of the engine's rules and of the files written by the same run.
std::uint64_t digestOf(const ResultFiles& files, const quarvis::mining::Rules& rules);

/// The same, with the files as the tool writes them.
std::uint64_t digestOf(const quarvis::mining::HistoryIndex& index,
                       const quarvis::mining::ItemSets& sets, const quarvis::mining::Rules& rules);

/// The fingerprint of the rule model, which writes its own files.
std::uint64_t digestOf(const quarvis::rule::MiningResult& result);

std::uint64_t digestOf(const oracle::Outcome& outcome);

}  // namespace bench
