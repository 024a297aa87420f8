#include "rule_selection.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

bool passes(const Rule& rule, const Thresholds& thresholds) {
    return rule.support >= thresholds.minSupport && rule.confidence >= thresholds.minConfidence &&
           rule.lift >= thresholds.minLift && rule.conviction <= thresholds.maxConviction;
}

/// Selects some of the rules, and puts them into order.
class RuleSelection {
  public:
    RuleSelection(const ItemSets& sets, const Thresholds& thresholds, std::size_t histories)
        : m_sets(sets),
          m_thresholds(thresholds),
          m_histories(histories),
          m_bits(s_bitsOf(sets.level(1))) {}

    /// Adds a rule if it passes.
    void add(const CountedRule& counted);

    /// Orders the rules that were added.
    void sort();

    /// Adds the rules of another selection; both are sorted.
    void merge(const RuleSelection& other);

    /// The rules, sorted; leaves this empty.
    Rules take() &&;

  private:
    /// A rule at a place of m_selected, with the beginning of its text.
    struct Keyed {
        std::uint64_t key;
        std::size_t place;
    };

    static unsigned s_bitsOf(const Level& items);
    std::size_t m_countOf(const Rank* items, std::size_t size) const;
    std::uint64_t m_keyOf(const Rules::Stored& rule) const;
    bool m_standsBefore(const Keyed& a, const Keyed& b) const {
        return a.key != b.key ? a.key < b.key
                              : standsBefore(m_selected[a.place], m_selected[b.place]);
    }

    const ItemSets& m_sets;
    const Thresholds& m_thresholds;
    std::size_t m_histories;
    unsigned m_bits;  // of a rank or an end mark in a key
    std::vector<Rank> m_items;
    Rules m_selected;
    std::vector<Keyed> m_order;
};

/// As many as a mark takes that is greater than all ranks.
unsigned RuleSelection::s_bitsOf(const Level& items) {
    return static_cast<unsigned>(std::bit_width(at(items.last.back()) + std::size_t{1}));
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
    measure(rule, m_histories);
    if (passes(rule, m_thresholds))
        m_selected.m_rules.push_back({begin, antecedent, subsequent, rule});
    else
        ranks.resize(begin);
}

/// As much as 64 bits hold of the ranks of the antecedent, an end mark, the ranks of the subsequent
/// and an end mark. As a mark is greater than all ranks, keys that differ are in the order of their
/// rules.
std::uint64_t RuleSelection::m_keyOf(const Rules::Stored& rule) const {
    const std::uint64_t mark = ~std::uint64_t{0} >> (64 - m_bits);
    std::uint64_t key = 0;
    unsigned left = 64 / m_bits;
    const auto put = [&](std::uint64_t code) {
        if (left == 0)
            return;
        key = key << m_bits | code;
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

void RuleSelection::sort() {
    m_order.reserve(m_selected.m_rules.size());
    for (std::size_t place = 0; place < m_selected.m_rules.size(); ++place)
        m_order.push_back({m_keyOf(m_selected.m_rules[place]), place});
    std::sort(m_order.begin(), m_order.end(),
              [this](const Keyed& a, const Keyed& b) { return m_standsBefore(a, b); });
}

void RuleSelection::merge(const RuleSelection& other) {
    const std::size_t shift = m_selected.m_ranks.size();
    m_selected.m_ranks.insert(m_selected.m_ranks.end(), other.m_selected.m_ranks.begin(),
                              other.m_selected.m_ranks.end());
    const std::size_t before = m_order.size();
    for (Rules::Stored rule : other.m_selected.m_rules) {
        rule.begin += shift;
        m_selected.m_rules.push_back(rule);
    }
    for (const Keyed& rule : other.m_order)
        m_order.push_back({rule.key, before + rule.place});
    std::inplace_merge(m_order.begin(), m_order.begin() + static_cast<std::ptrdiff_t>(before),
                       m_order.end(),
                       [this](const Keyed& a, const Keyed& b) { return m_standsBefore(a, b); });
}

Rules RuleSelection::take() && {
    std::vector<Rules::Stored> sorted;
    sorted.reserve(m_order.size());
    for (const Keyed& rule : m_order)
        sorted.push_back(m_selected.m_rules[rule.place]);
    m_selected.m_rules.swap(sorted);
    return std::move(m_selected);
}

Rules selectRules(const std::vector<CountedRule>& counted, const ItemSets& sets,
                  const Thresholds& thresholds, std::size_t histories, unsigned threads,
                  Step& step) {
    if (counted.empty())
        return {};
    std::vector<std::optional<RuleSelection>> parts(threads);
    workOnParts(threads, step, [&](std::size_t part) {
        RuleSelection selection(sets, thresholds, histories);
        const auto [begin, end] = partOf(counted.size(), part, threads);
        for (std::size_t rule = begin; rule < end; ++rule)
            selection.add(counted[rule]);
        selection.sort();
        parts[part].emplace(std::move(selection));
    });
    RuleSelection all = *std::move(parts.front());
    for (std::size_t part = 1; part < threads; ++part)
        all.merge(*parts[part]);
    return std::move(all).take();
}

}  // namespace quarvis::mining
