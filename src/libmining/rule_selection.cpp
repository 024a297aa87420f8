#include "rule_selection.hpp"

#include <algorithm>
#include <bit>
#include <compare>
#include <span>
#include <utility>

#include <quarvis/mining/measures.hpp>

namespace quarvis::mining {

namespace {

using Ranks = std::span<const Rank>;

/// The order of sides: lexicographic, a side before those that it begins with.
std::strong_ordering compare(Ranks a, Ranks b) {
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (left == a.end())
        return right == b.end() ? std::strong_ordering::equal : std::strong_ordering::greater;
    return right == b.end() ? std::strong_ordering::less : *left <=> *right;
}

double shareOf(std::size_t count, std::size_t total) {
    return support(static_cast<unsigned int>(count), static_cast<unsigned int>(total));
}

}  // namespace

bool passes(const Rule& rule, const Thresholds& thresholds) {
    return rule.support >= thresholds.minSupport && rule.confidence >= thresholds.minConfidence &&
           rule.lift >= thresholds.minLift && rule.conviction <= thresholds.maxConviction;
}

/// The count of a frequent set, of which every part is frequent too.
std::size_t RuleSelection::m_countOf(const Rank* items, std::size_t size) const {
    const std::size_t set = m_sets.find({items, size});
    assert(set != ItemSets::NOT_FOUND);
    return m_sets.level(size).count[set];
}

void RuleSelection::add(const CountedRule& counted) {
    const std::size_t size = counted.rule.size;
    std::vector<Rank>& ranks = m_selected.m_ranks;
    const std::size_t begin = ranks.size();
    m_items.resize(size);
    m_sets.items(size, counted.rule.set, m_items.data());
    for (const SplitMask side : {SplitMask{0}, SplitMask{1}})
        for (std::size_t i = 0; i < size; ++i)
            if ((counted.rule.split >> i & 1) == side)
                ranks.push_back(m_items[i]);
    const auto subsequent = static_cast<std::uint32_t>(std::popcount(counted.rule.split));
    const auto antecedent = static_cast<std::uint32_t>(size) - subsequent;

    Rule rule{};
    rule.count = counted.count;
    rule.unionCount = m_sets.level(size).count[counted.rule.set];
    rule.antecedentCount = static_cast<std::uint32_t>(m_countOf(&ranks[begin], antecedent));
    rule.subsequentCount =
        static_cast<std::uint32_t>(m_countOf(&ranks[begin] + antecedent, subsequent));
    const double both = shareOf(rule.unionCount, m_histories);
    const double first = shareOf(rule.antecedentCount, m_histories);
    const double second = shareOf(rule.subsequentCount, m_histories);
    rule.support = shareOf(rule.count, m_histories);
    rule.confidence = confidence(both, first);
    rule.lift = lift(both, first, second);
    rule.conviction = conviction(second, rule.confidence);
    rule.probability = probability(both, second);
    rule.certainty = certainty(both, second);
    if (passes(rule, m_thresholds))
        m_selected.m_rules.push_back({begin, antecedent, subsequent, rule});
    else
        ranks.resize(begin);
}

Rules RuleSelection::sorted() && {
    const std::vector<Rank>& ranks = m_selected.m_ranks;
    const auto antecedent = [&ranks](const Rules::Stored& rule) {
        return Ranks(ranks).subspan(rule.begin, rule.antecedent);
    };
    const auto subsequent = [&ranks](const Rules::Stored& rule) {
        return Ranks(ranks).subspan(rule.begin + rule.antecedent, rule.subsequent);
    };
    std::sort(m_selected.m_rules.begin(), m_selected.m_rules.end(),
              [&](const Rules::Stored& a, const Rules::Stored& b) {
                  const std::strong_ordering order = compare(antecedent(a), antecedent(b));
                  return order != 0 ? order < 0 : compare(subsequent(a), subsequent(b)) < 0;
              });
    return std::move(m_selected);
}

}  // namespace quarvis::mining
