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

/// The result of a run.
struct Found {
    IndexPointer index;  ///< The index that the ranks refer to.
    std::shared_ptr<const quarvis::mining::ItemSets> itemSets;  ///< All sets of the run.
    RuleList rules;                                             ///< The rules that were requested.

    /// Whether each set is listed, in the order of the item-set file; empty if all are.
    std::vector<std::uint8_t> listed;

    /// Whether each item, by rank, may be on the left or right side of a rule; empty if all may.
    std::vector<std::uint8_t> left;
    std::vector<std::uint8_t> right;

    /// Whether all items of the rule may be on their sides.
    bool allows(const quarvis::mining::Rule& rule) const;

    /// The number of listed sets.
    std::size_t setCount() const;

    /// The number of listed sets of each size, from 1 on.
    std::vector<std::size_t> setCounts() const;
};

/// Mines the index under the watch. Throws `BudgetExceeded` and Python errors.
Found mine(const IndexPointer& index, const quarvis::mining::MiningOptions& options, Watch& watch);

/// Finds only the item sets.
Found mineItemSets(const IndexPointer& index, const quarvis::mining::MiningOptions& options,
                   Watch& watch);

/// The rules as columns, in the order of the rules file: `antecedents` and `consequents` as lists
/// of ranks, the counts, and the measures under the engine's names.
Columns ruleColumns(const Found& found, Watch& watch);

/// The listed item sets as columns, in the order of the item-set file: `items` and `count`. `keep`
/// has a byte for each listed set; sets with 0 are left out.
Columns itemSetColumns(const Found& found, const std::optional<Column<std::uint8_t>>& keep,
                       Watch& watch);

/// Writes the rules file, or if `rules` is false the item-set file, as the tool does. `keep` has a
/// byte for each rule or listed set; those with 0 are left out. Throws `std::system_error` when the
/// file cannot be opened or written.
void writeFile(const Found& found, const std::string& path, bool rules,
               const std::optional<Column<std::uint8_t>>& keep);

}  // namespace binding
