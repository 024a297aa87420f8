#include "rule_list.hpp"

#include <algorithm>
#include <compare>

#include <quarvis/mining/measures.hpp>

namespace binding {

using quarvis::mining::Rank;
using quarvis::mining::Rule;

namespace {

using Ranks = std::span<const Rank>;

/// The order of sides: lexicographic, a side before those that it begins with.
std::strong_ordering compare(Ranks a, Ranks b) {
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (left == a.end())
        return right == b.end() ? std::strong_ordering::equal : std::strong_ordering::greater;
    return right == b.end() ? std::strong_ordering::less : *left <=> *right;
}

double shareOf(std::uint32_t count, std::size_t histories) {
    return quarvis::mining::support(count, static_cast<unsigned int>(histories));
}

}  // namespace

Rule RuleList::operator[](std::size_t place) const {
    if (m_added.empty())
        return m_found[place];
    const Added& added = m_added[place];
    Rule rule = added.rule;
    rule.antecedent = Ranks(m_ranks).subspan(added.begin, added.antecedent);
    rule.subsequent = Ranks(m_ranks).subspan(added.begin + added.antecedent, added.subsequent);
    return rule;
}

void RuleList::add(const Rule& rule, std::size_t histories, const RuleBounds& bounds) {
    Rule measured = rule;
    const double both = shareOf(rule.unionCount, histories);
    const double first = shareOf(rule.antecedentCount, histories);
    const double second = shareOf(rule.subsequentCount, histories);
    measured.support = shareOf(rule.count, histories);
    measured.confidence = quarvis::mining::confidence(both, first);
    measured.lift = quarvis::mining::lift(both, first, second);
    measured.conviction = quarvis::mining::conviction(second, measured.confidence);
    measured.probability = quarvis::mining::probability(both, second);
    measured.certainty = quarvis::mining::certainty(both, second);
    if (!(measured.confidence >= bounds.minConfidence && measured.lift >= bounds.minLift &&
          measured.conviction <= bounds.maxConviction))
        return;
    m_added.push_back({m_ranks.size(), rule.antecedent.size(), rule.subsequent.size(), measured});
    m_ranks.insert(m_ranks.end(), rule.antecedent.begin(), rule.antecedent.end());
    m_ranks.insert(m_ranks.end(), rule.subsequent.begin(), rule.subsequent.end());
}

void RuleList::sort() {
    const Ranks ranks(m_ranks);
    std::sort(m_added.begin(), m_added.end(), [ranks](const Added& a, const Added& b) {
        const std::strong_ordering sides =
            compare(ranks.subspan(a.begin, a.antecedent), ranks.subspan(b.begin, b.antecedent));
        return std::is_neq(sides)
                   ? std::is_lt(sides)
                   : std::is_lt(compare(ranks.subspan(a.begin + a.antecedent, a.subsequent),
                                        ranks.subspan(b.begin + b.antecedent, b.subsequent)));
    });
}

}  // namespace binding
