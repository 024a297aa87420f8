#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/rules.hpp>

namespace binding {

/// Thresholds of a rule. They are inclusive, and a NaN fails.
struct RuleBounds {
    double minConfidence;
    double minLift;
    double maxConviction;
};

/// Rules in the order of the rules file. They come from a run of the engine, or are added one by
/// one and then sorted.
class RuleList {
  public:
    RuleList() = default;
    explicit RuleList(quarvis::mining::Rules rules) : m_found(std::move(rules)) {}

    std::size_t size() const { return m_found.size() + m_added.size(); }

    /// A rule by its place. Its sides are valid as long as the list.
    quarvis::mining::Rule operator[](std::size_t place) const;

    /// Adds a rule if it passes `bounds`. The list must have no rules of a run. The measures are
    /// computed from the rule's counts and from `histories`, the number of all histories.
    void add(const quarvis::mining::Rule& rule, std::size_t histories, const RuleBounds& bounds);

    /// Puts added rules into order.
    void sort();

  private:
    struct Added {
        std::size_t begin;
        std::size_t antecedent;
        std::size_t subsequent;
        quarvis::mining::Rule rule;  // its sides are not set
    };

    quarvis::mining::Rule m_ruleOf(const Added& added) const;

    quarvis::mining::Rules m_found;
    std::vector<quarvis::mining::Rank> m_ranks;  // of the sides of the added rules
    std::vector<Added> m_added;
};

}  // namespace binding
