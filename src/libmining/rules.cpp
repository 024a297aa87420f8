#include <quarvis/mining/rules.hpp>

#include <algorithm>
#include <cassert>
#include <compare>

#include <quarvis/mining/measures.hpp>

namespace quarvis::mining {

namespace {

using Ranks = std::span<const Rank>;

/// The order of sides: lexicographic, but a side comes before its own prefixes.
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

void measure(Rule& rule, std::size_t histories) {
    const double both = shareOf(rule.unionCount, histories);
    const double first = shareOf(rule.antecedentCount, histories);
    const double second = shareOf(rule.subsequentCount, histories);
    rule.support = shareOf(rule.count, histories);
    rule.confidence = confidence(both, first);
    rule.lift = lift(both, first, second);
    rule.conviction = conviction(second, rule.confidence);
    rule.probability = probability(both, second);
    rule.certainty = certainty(both, second);
}

bool standsBefore(const Rule& a, const Rule& b) {
    const std::strong_ordering sides = compare(a.antecedent, b.antecedent);
    return std::is_neq(sides) ? std::is_lt(sides) : std::is_lt(compare(a.subsequent, b.subsequent));
}

Rule Rules::operator[](std::size_t place) const {
    assert(place < size());
    Rule rule = s_counted(m_rules[place], m_ranks.data());
    measure(rule, m_histories);
    return rule;
}

Rule Rules::s_counted(const Stored& stored, const Rank* ranks) {
    Rule rule{};
    rule.antecedent = {ranks + stored.begin, stored.antecedent};
    rule.subsequent = {rule.antecedent.data() + stored.antecedent, stored.subsequent};
    rule.count = stored.count;
    rule.unionCount = stored.unionCount;
    rule.antecedentCount = stored.antecedentCount;
    rule.subsequentCount = stored.subsequentCount;
    return rule;
}

}  // namespace quarvis::mining
