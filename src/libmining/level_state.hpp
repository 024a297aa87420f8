#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include <quarvis/mining/level_run.hpp>

#include "found_sets.hpp"
#include "rule_ledger.hpp"
#include "walk_order.hpp"

namespace quarvis::mining {

/// The state of a `LevelRun`.
class LevelState {
  public:
    LevelState(std::vector<std::uint32_t> itemCounts, const MiningOptions& settings)
        : counts(std::move(itemCounts)), options(settings), order(counts, settings.minCount) {
        found.link(order.size());
    }

    std::vector<std::uint32_t> counts;  // by rank
    MiningOptions options;
    WalkOrder order;
    FoundSets found;            // linked
    bool searched = false;      // whether there are no larger sets
    std::uint32_t tallied = 1;  // the greatest size whose rules are known
    bool ruled = false;         // whether there are no larger rules
    std::vector<SplitSet> live;
    std::vector<CountedRule> rules;

    /// The sets found so far, in the order of their ranks; sorted when first asked for.
    const ItemSets& itemSets();

    /// Drops the sorted sets, because there are more.
    void changed() { m_ordered.reset(); }

  private:
    std::optional<ItemSets> m_ordered;
};

/// The order of tallies: by set, then by split.
bool precedes(const RuleTally& a, const RuleTally& b);

/// The number of sets of a size that begin with each set of the first level.
std::vector<std::uint64_t> setsByFirst(const ItemSets& sets, std::size_t size);

}  // namespace quarvis::mining
