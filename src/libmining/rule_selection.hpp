#pragma once

#include <cstddef>
#include <vector>

#include <quarvis/mining/item_sets.hpp>
#include <quarvis/mining/options.hpp>
#include <quarvis/mining/rules.hpp>

#include "rule_ledger.hpp"

namespace quarvis::mining {

/// Whether a rule passes. A NaN fails.
bool passes(const Rule& rule, const Thresholds& thresholds);

/// Collects the counted rules that pass the thresholds, with their measures.
class RuleSelection {
  public:
    RuleSelection(const ItemSets& sets, const Thresholds& thresholds, std::size_t histories)
        : m_sets(sets), m_thresholds(thresholds), m_histories(histories) {}

    void add(const CountedRule& counted);

    /// The rules in their order; leaves this empty.
    Rules sorted() &&;

  private:
    std::size_t m_countOf(const Rank* items, std::size_t size) const;

    const ItemSets& m_sets;
    const Thresholds& m_thresholds;
    std::size_t m_histories;
    std::vector<Rank> m_items;
    Rules m_selected;
};

}  // namespace quarvis::mining
