#include "rule_selection.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

bool passes(const Rule& rule, const Thresholds& thresholds) {
    return rule.support >= thresholds.minSupport && rule.confidence >= thresholds.minConfidence &&
           rule.lift >= thresholds.minLift && rule.conviction <= thresholds.maxConviction;
}

/// Selects the rules of one thread that pass, and sorts them.
class RuleSelection {
  public:
    RuleSelection(const ItemSets& sets, const Thresholds& thresholds, std::size_t histories)
        : m_sets(sets), m_thresholds(thresholds), m_bits(s_bitsOf(sets.level(1))) {
        m_selected.m_histories = histories;
    }

    /// Makes room for rules that may be added, by this selection or from others.
    void reserve(std::span<const CountedRule> counted);

    /// Adds the rules that pass. Those of one set are worked on fastest when they follow each
    /// other.
    void add(std::span<const CountedRule> counted);

    void sort();

    /// Adds the rules of another selection; both are sorted.
    void merge(const RuleSelection& other);

    /// The rules, sorted; leaves this empty.
    Rules take() &&;

  private:
    using Key = std::array<std::uint64_t, 2>;

    /// The place of a rule in m_selected, and the beginning of its sides as a number.
    struct Keyed {
        Key key;
        std::size_t place;
    };

    static unsigned s_bitsOf(const Level& items);
    void m_add(const CountedRule& counted);
    std::size_t m_countOf(const Rank* items, std::size_t size) const;
    Key m_keyOf(const Rules::Stored& rule) const;
    Rule m_ruleOf(const Keyed& rule) const {
        return m_selected.m_counted(m_selected.m_rules[rule.place]);
    }
    bool m_standsBefore(const Keyed& a, const Keyed& b) const {
        return a.key != b.key ? a.key < b.key : standsBefore(m_ruleOf(a), m_ruleOf(b));
    }

    const ItemSets& m_sets;
    const Thresholds& m_thresholds;
    unsigned m_bits;   // bits of a rank or an end mark in a key
    SplitSet m_set{};  // the rule whose items m_items holds
    std::vector<Rank> m_items;
    Rules m_selected;
    std::vector<Keyed> m_order;
};

/// The bits of an end mark, which is greater than all ranks.
unsigned RuleSelection::s_bitsOf(const Level& items) {
    return static_cast<unsigned>(std::bit_width(at(items.last.back()) + std::size_t{1}));
}

/// The count of a part of a frequent set, which is frequent too.
std::size_t RuleSelection::m_countOf(const Rank* items, std::size_t size) const {
    const std::size_t set = m_sets.find({items, size});
    assert(set != ItemSets::NOT_FOUND);
    return m_sets.level(size).count[set];
}

void RuleSelection::reserve(std::span<const CountedRule> counted) {
    std::size_t ranks = 0;
    for (const CountedRule& rule : counted)
        ranks += rule.rule.size;
    m_selected.m_ranks.reserve(ranks);
    m_selected.m_rules.reserve(counted.size());
}

void RuleSelection::add(std::span<const CountedRule> counted) {
    for (const CountedRule& rule : counted)
        m_add(rule);
}

void RuleSelection::m_add(const CountedRule& counted) {
    const SplitSet& set = counted.rule;
    if (set.size != m_set.size || set.set != m_set.set) {
        m_items.resize(set.size);
        m_sets.items(set.size, set.set, m_items.data());
        m_set = set;
    }
    std::vector<Rank>& ranks = m_selected.m_ranks;
    const std::size_t begin = ranks.size();
    for (const SplitMask side : {SplitMask{0}, SplitMask{1}})
        for (std::size_t i = 0; i < set.size; ++i)
            if ((set.split >> i & 1) == side)
                ranks.push_back(m_items[i]);
    const auto subsequent = static_cast<std::uint32_t>(std::popcount(set.split));
    const std::uint32_t antecedent = set.size - subsequent;
    const Rules::Stored stored{
        begin,
        antecedent,
        subsequent,
        counted.count,
        m_sets.level(set.size).count[set.set],
        static_cast<std::uint32_t>(m_countOf(&ranks[begin], antecedent)),
        static_cast<std::uint32_t>(m_countOf(&ranks[begin] + antecedent, subsequent))};
    Rule rule = m_selected.m_counted(stored);
    measure(rule, m_selected.m_histories);
    if (passes(rule, m_thresholds))
        m_selected.m_rules.push_back(stored);
    else
        ranks.resize(begin);
}

/// The ranks of the antecedent, an end mark, the ranks of the subsequent and end marks, as far as a
/// key holds them. A mark is greater than all ranks, so keys that differ are in the order of their
/// rules.
RuleSelection::Key RuleSelection::m_keyOf(const Rules::Stored& rule) const {
    const std::uint64_t mark = ~std::uint64_t{0} >> (64 - m_bits);
    const Rank* const end = &m_selected.m_ranks[rule.begin] + rule.antecedent + rule.subsequent;
    const Rank* const subsequent = end - rule.subsequent;
    const Rank* next = end - rule.antecedent - rule.subsequent;
    bool isMarked = false;  // whether the mark of the antecedent is done
    Key key{};
    for (std::uint64_t& word : key)
        for (unsigned left = 64 / m_bits; left > 0; --left) {
            std::uint64_t code = mark;
            if (next == subsequent && !isMarked)
                isMarked = true;
            else if (next != end)
                code = at(*next++);
            word = word << m_bits | code;
        }
    return key;
}

void RuleSelection::sort() {
    m_order.reserve(m_selected.m_rules.capacity());
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
        const auto some = std::span(counted).subspan(begin, end - begin);
        // The first part takes the rules of the others.
        selection.reserve(part == 0 ? std::span(counted) : some);
        selection.add(some);
        selection.sort();
        parts[part].emplace(std::move(selection));
    });
    RuleSelection all = *std::move(parts.front());
    for (std::size_t part = 1; part < threads; ++part)
        all.merge(*parts[part]);
    return std::move(all).take();
}

}  // namespace quarvis::mining
