#include "rule_list.hpp"

#include <algorithm>

namespace binding {

using quarvis::mining::Rule;

Rule RuleList::operator[](std::size_t place) const {
    return m_added.empty() ? m_found[place] : m_ruleOf(m_added[place]);
}

/// The added rule with its sides set.
Rule RuleList::m_ruleOf(const Added& added) const {
    const std::span ranks(m_ranks);
    Rule rule = added.rule;
    rule.antecedent = ranks.subspan(added.begin, added.antecedent);
    rule.subsequent = ranks.subspan(added.begin + added.antecedent, added.subsequent);
    return rule;
}

void RuleList::add(const Rule& rule, std::size_t histories, const RuleBounds& bounds) {
    Rule measured = rule;
    quarvis::mining::measure(measured, histories);
    if (!(measured.confidence >= bounds.minConfidence && measured.lift >= bounds.minLift &&
          measured.conviction <= bounds.maxConviction))
        return;
    m_added.push_back({m_ranks.size(), rule.antecedent.size(), rule.subsequent.size(), measured});
    m_ranks.insert(m_ranks.end(), rule.antecedent.begin(), rule.antecedent.end());
    m_ranks.insert(m_ranks.end(), rule.subsequent.begin(), rule.subsequent.end());
}

void RuleList::sort() {
    std::sort(m_added.begin(), m_added.end(), [this](const Added& a, const Added& b) {
        return quarvis::mining::standsBefore(m_ruleOf(a), m_ruleOf(b));
    });
}

}  // namespace binding
