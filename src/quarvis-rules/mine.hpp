#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"

namespace quarvis::rule {

/// What a run finds: the rules that pass the thresholds, and every frequent item set of every size
/// that the search reached.
class MiningResult {
  public:
    using ItemSets = ItemSetHistogram;

    /// Mines `txns`. Progress goes to standard error, a line a step.
    static MiningResult mine(const Configuration& config, const TransactionSet& txns);

    const RuleSet& rules() const { return m_rules; }

    /// A copy of the item sets.
    ItemSetHistogram itemSets() const { return m_is; }

  private:
    RuleSet m_rules;
    ItemSets m_is;
};

/// As `MiningResult::mine`.
MiningResult mine(const Configuration& config, const TransactionSet& txns);

}  // namespace quarvis::rule
