#pragma once

#include <cstddef>
#include <functional>
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

/// The same for rules that are listed elsewhere: `rule` gives each of `count` by its place. Their
/// ranks are those of the index.
void writeRules(std::ostream& out, const quarvis::mining::HistoryIndex& index, std::size_t count,
                const std::function<quarvis::mining::Rule(std::size_t)>& rule);

void writeItemSets(std::ostream& out, const quarvis::mining::HistoryIndex& index,
                   const quarvis::mining::ItemSets& sets);

}  // namespace result_files
