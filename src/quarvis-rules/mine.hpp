#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"

namespace quarvis::rule {

/// The result of a run: the rules that pass the thresholds, and the frequent item sets of all sizes
/// that the search reached.
class MiningResult {
  public:
    using ItemSets = ItemSetHistogram;

    /// Mines `txns`. Prints a line to standard error for each step.
    static MiningResult mine(const Configuration& config, const TransactionSet& txns);

    const RuleSet& rules() const { return m_rules; }

    /// A copy of the item sets.
    ItemSetHistogram itemSets() const { return m_is; }

  private:
    RuleSet m_rules;
    ItemSets m_is;
};

/// The same as `MiningResult::mine`.
MiningResult mine(const Configuration& config, const TransactionSet& txns);

}  // namespace quarvis::rule
