#include "rule_selection.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

bool passes(const Rule& rule, const Thresholds& thresholds) {
    return rule.support >= thresholds.minSupport && rule.confidence >= thresholds.minConfidence &&
           rule.lift >= thresholds.minLift && rule.conviction <= thresholds.maxConviction;
}

/// Collects some of the rules.
class RuleSelection {
  public:
    RuleSelection(const ItemSets& sets, const Thresholds& thresholds, std::size_t histories)
        : m_sets(sets), m_thresholds(thresholds), m_histories(histories) {}

    void add(const CountedRule& counted);

    /// Adds what another one has collected.
    void append(const RuleSelection& other);

    /// The rules in their order; leaves this empty.
    Rules sorted() &&;

  private:
    std::size_t m_countOf(const Rank* items, std::size_t size) const;
    std::uint64_t m_keyOf(const Rules::Stored& rule, unsigned bits) const;

    const ItemSets& m_sets;
    const Thresholds& m_thresholds;
    std::size_t m_histories;
    std::vector<Rank> m_items;
    Rules m_selected;
};

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
    measure(rule, m_histories);
    if (passes(rule, m_thresholds))
        m_selected.m_rules.push_back({begin, antecedent, subsequent, rule});
    else
        ranks.resize(begin);
}

void RuleSelection::append(const RuleSelection& other) {
    const std::size_t shift = m_selected.m_ranks.size();
    m_selected.m_ranks.insert(m_selected.m_ranks.end(), other.m_selected.m_ranks.begin(),
                              other.m_selected.m_ranks.end());
    for (Rules::Stored rule : other.m_selected.m_rules) {
        rule.begin += shift;
        m_selected.m_rules.push_back(rule);
    }
}

/// As much as 64 bits hold of the ranks of the antecedent, an end mark, the ranks of the subsequent
/// and an end mark. As a mark is greater than all ranks, keys that differ are in the order of their
/// rules.
std::uint64_t RuleSelection::m_keyOf(const Rules::Stored& rule, unsigned bits) const {
    const std::uint64_t mark = ~std::uint64_t{0} >> (64 - bits);
    std::uint64_t key = 0;
    unsigned left = 64 / bits;
    const auto put = [&](std::uint64_t code) {
        if (left == 0)
            return;
        key = key << bits | code;
        --left;
    };
    const Rank* rank = &m_selected.m_ranks[rule.begin];
    for (const std::size_t side : {rule.antecedent, rule.subsequent}) {
        for (std::size_t i = 0; i < side; ++i)
            put(at(*rank++));
        put(mark);
    }
    while (left > 0)
        put(0);
    return key;
}

Rules RuleSelection::sorted() && {
    const std::vector<Rank>& ranks = m_selected.m_ranks;
    std::vector<Rules::Stored>& rules = m_selected.m_rules;
    const std::size_t items =
        ranks.empty() ? 1 : at(*std::max_element(ranks.begin(), ranks.end())) + 1;
    const auto bits = static_cast<unsigned>(std::bit_width(items));
    std::vector<std::pair<std::uint64_t, std::size_t>> order;
    order.reserve(rules.size());
    for (std::size_t rule = 0; rule < rules.size(); ++rule)
        order.emplace_back(m_keyOf(rules[rule], bits), rule);
    std::sort(order.begin(), order.end(), [this](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first
                                  : standsBefore(m_selected[a.second], m_selected[b.second]);
    });
    std::vector<Rules::Stored> sorted;
    sorted.reserve(rules.size());
    for (const auto& [key, rule] : order)
        sorted.push_back(rules[rule]);
    rules.swap(sorted);
    return std::move(m_selected);
}

Rules selectRules(const std::vector<CountedRule>& counted, const ItemSets& sets,
                  const Thresholds& thresholds, std::size_t histories, unsigned threads,
                  Step& step) {
    std::vector<RuleSelection> parts(threads, RuleSelection(sets, thresholds, histories));
    const auto makeWorker = [&](unsigned) {
        return [&](std::size_t part) {
            const std::size_t end = counted.size() * (part + 1) / threads;
            for (std::size_t rule = counted.size() * part / threads; rule < end; ++rule)
                parts[part].add(counted[rule]);
            step.spend(0);
        };
    };
    workOn(threads, threads, step, makeWorker, [](std::size_t) {});
    for (std::size_t part = 1; part < threads; ++part)
        parts.front().append(parts[part]);
    return std::move(parts.front()).sorted();
}

}  // namespace quarvis::mining
