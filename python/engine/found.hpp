#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <quarvis/mining/mine.hpp>

#include "arrays.hpp"
#include "rows.hpp"
#include "rule_list.hpp"
#include "watch.hpp"

namespace binding {

/// What a run found.
struct Found {
    IndexPointer index;  ///< The index that the ranks are of.
    std::shared_ptr<const quarvis::mining::ItemSets> itemSets;  ///< All sets of the run.
    RuleList rules;                                             ///< The rules that were asked for.

    /// In the order of the item-set file: whether a set is listed; empty when all are.
    std::vector<std::uint8_t> listed;

    /// By rank: whether the item may be on the side of a rule; empty when all may.
    std::vector<std::uint8_t> left;
    std::vector<std::uint8_t> right;

    /// Whether the items of a rule may be on their sides.
    bool allows(const quarvis::mining::Rule& rule) const;

    /// The number of the sets that are listed.
    std::size_t setCount() const;

    /// The numbers of those of each size, from 1 on.
    std::vector<std::size_t> setCounts() const;
};

/// Mines the index under the watch. Throws `BudgetExceeded` and Python errors.
Found mine(const IndexPointer& index, const quarvis::mining::MiningOptions& options, Watch& watch);

/// The item sets alone.
Found mineItemSets(const IndexPointer& index, const quarvis::mining::MiningOptions& options,
                   Watch& watch);

/// The rules as columns, in the order of the rules file: `antecedents` and `consequents` as lists
/// of ranks, the counts, and the measures of the engine under its names.
Columns ruleColumns(const Found& found, Watch& watch);

/// The listed item sets as columns, in the order of the item-set file: `items` and `count`. `keep`
/// has a byte for each of them; those with 0 are left out.
Columns itemSetColumns(const Found& found, const std::optional<Column<std::uint8_t>>& keep,
                       Watch& watch);

/// Writes the rules file, or without `rules` the item-set file, as the tool does. `keep` has a byte
/// for each rule or listed set; those with 0 are left out. Throws `std::system_error` when the file
/// cannot be opened or written.
void writeFile(const Found& found, const std::string& path, bool rules,
               const std::optional<Column<std::uint8_t>>& keep);

}  // namespace binding
