#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/support/run_tool.hpp"

/// The texts that a run of the program is expected to write, made from the parts that differ
/// between runs.
namespace tool {

/// The usage text of the program when it is called as `name`.
std::string usage(const std::string& name = "quarvis-rules");

/// The outcome of arguments that do not parse: the messages, then the usage text.
Outcome rejected(const std::string& messages, const std::string& out = {});

/// A rules file of these rows, each without its line end.
std::string rulesFile(const std::vector<std::string>& rows);

/// An item-set file of these rows, each without its line end.
std::string itemSetFile(const std::vector<std::string>& rows);

/// The numbers in the messages of a completed run.
struct Progress {
    std::string input = "-";
    std::size_t transactions = 0;
    std::size_t histories = 0;
    /// The number of frequent item sets of sizes 1, 2, ... that the search tries; at least two
    /// sizes. If there is no set of size 2, the search ends.
    std::vector<std::size_t> levels = {0, 0};
    unsigned maxOrder = 0;
    std::size_t rules = 0;
    std::string itemSets = {};
};
std::string progress(const Progress& run);

/// A frequent item set and its count.
struct FrequentSet {
    std::size_t count;
    std::vector<std::string> items;
};

/// Runs the program on `input` so that its output shows what it has read: no rules, and all item
/// sets of one or two items. `sets` are the expected sets, in the order of the item-set file.
void expectReading(const std::string& input, std::size_t transactions, std::size_t histories,
                   const std::vector<FrequentSet>& sets, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE());

}  // namespace tool
