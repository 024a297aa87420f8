#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/rules.hpp>

/// Writes the files of a run directly from the engine's result. The bytes are the same as those
/// that the rule model writes for the same rules and sets to a stream with default formatting.
/// Each line is flushed.
namespace result_files {

void writeRules(std::ostream& out, const quarvis::mining::HistoryIndex& index,
                const quarvis::mining::Rules& rules);

/// The same for `count` rules that are stored elsewhere: `rule(i)` returns the i-th one. Its items
/// are ranks of `index`.
void writeRules(std::ostream& out, const quarvis::mining::HistoryIndex& index, std::size_t count,
                const std::function<quarvis::mining::Rule(std::size_t)>& rule);

void writeItemSets(std::ostream& out, const quarvis::mining::HistoryIndex& index,
                   const quarvis::mining::ItemSets& sets);

}  // namespace result_files
