#pragma once

#include <iosfwd>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/rules.hpp>

/// The files of a run, straight from the result of the engine: the same bytes that the rule model
/// writes of the same rules and sets. Each line is flushed. The streams have the default
/// formatting.
namespace result_files {

void writeRules(std::ostream& out, const quarvis::mining::HistoryIndex& index,
                const quarvis::mining::Rules& rules);

void writeItemSets(std::ostream& out, const quarvis::mining::HistoryIndex& index,
                   const quarvis::mining::ItemSets& sets);

}  // namespace result_files
