#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/support/run_tool.hpp"

/// The texts that a run of the program is expected to leave, put together from what differs
/// between runs.
namespace tool {

/// The usage text of a program that was called under `name`.
std::string usage(const std::string& name = "quarvis-rules");

/// The outcome of arguments that do not parse: the messages, then the usage text.
Outcome rejected(const std::string& messages, const std::string& out = {});

/// A rules file of these rows, each without its line end.
std::string rulesFile(const std::vector<std::string>& rows);

/// An item-set file of these rows, each without its line end.
std::string itemSetFile(const std::vector<std::string>& rows);

/// What standard error tells about a completed run.
struct Progress {
    std::string input = "-";
    std::size_t transactions = 0;
    std::size_t histories = 0;
    /// The number of frequent item sets of the sizes 1, 2, ... as far as the search tries them;
    /// never fewer than two sizes. None of size 2 ends the search.
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

/// Runs the program on `input` so that it tells what it read: with every item set of one or two
/// items in the item-set file, and with no rule. `sets` are all of these in the file's order.
void expectReading(const std::string& input, std::size_t transactions, std::size_t histories,
                   const std::vector<FrequentSet>& sets, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE());

}  // namespace tool
