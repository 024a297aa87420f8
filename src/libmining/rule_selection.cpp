#include "rule_selection.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <memory>
#include <numeric>
#include <span>
#include <utility>

#include "large_vector.hpp"
#include "tasks.hpp"

namespace quarvis::mining {

bool passes(const Rule& rule, const Thresholds& thresholds) {
    return rule.support >= thresholds.minSupport && rule.confidence >= thresholds.minConfidence &&
           rule.lift >= thresholds.minLift && rule.conviction <= thresholds.maxConviction;
}

/// Selects the rules of one thread that pass, and sorts them.
class RuleSelection {
  public:
    using Parts = std::vector<std::unique_ptr<RuleSelection>>;

    RuleSelection(const ItemSets& sets, const Thresholds& thresholds, std::size_t histories)
        : m_sets(sets),
          m_thresholds(thresholds),
          m_histories(histories),
          m_bits(s_bitsOf(sets.level(1))) {}

    /// Makes room for the items of rules that may be added, by this selection or from others.
    void reserve(std::span<const CountedRule> counted);

    /// Adds the rules that pass. Those of one set are worked on fastest when they follow each
    /// other.
    void add(std::span<const CountedRule> counted);

    void sort();

    /// The rules of all parts, each of which is sorted. The first part must have room for the items
    /// of all, and loses its own. Works in as many threads as there are parts.
    static Rules merge(Parts& parts, Step& step);

  private:
    using Key = std::array<std::uint64_t, 2>;

    /// A rule, the items of its part, and the beginning of its sides as a number.
    struct Keyed {
        Key key;
        const Rules::Stored* rule;
        const Rank* ranks;
    };

    /// Sorted rules of a part.
    struct Range {
        const Keyed* next;
        const Keyed* end;
        std::size_t shift;  // how far the items of the part move
    };

    static unsigned s_bitsOf(const Level& items);
    static bool s_standsBefore(const Keyed& a, const Keyed& b);
    static std::vector<Keyed> s_pivots(const Parts& parts);
    static void s_merge(std::vector<Range> ranges, Rules::Stored* merged);
    void m_add(const CountedRule& counted);
    std::uint32_t m_countOf(const Rank* items, std::size_t size) const;
    Key m_keyOf(const Rules::Stored& rule) const;

    const ItemSets& m_sets;
    const Thresholds& m_thresholds;
    std::size_t m_histories;
    unsigned m_bits;   // bits of a rank or an end mark in a key
    SplitSet m_set{};  // the rule whose items m_items holds
    std::vector<Rank> m_items;
    std::vector<Rank> m_ranks;  // of the sides of all rules
    LargeVector<Rules::Stored> m_rules;
    LargeVector<Keyed> m_order;
};

/// The bits of an end mark, which is greater than all ranks.
unsigned RuleSelection::s_bitsOf(const Level& items) {
    return static_cast<unsigned>(std::bit_width(at(items.last.back()) + std::size_t{1}));
}

/// The count of a part of a frequent set, which is frequent too.
std::uint32_t RuleSelection::m_countOf(const Rank* items, std::size_t size) const {
    const std::size_t set = m_sets.find({items, size});
    assert(set != ItemSets::NOT_FOUND);
    return m_sets.level(size).count[set];
}

void RuleSelection::reserve(std::span<const CountedRule> counted) {
    std::size_t ranks = 0;
    for (const CountedRule& rule : counted)
        ranks += rule.rule.size;
    m_ranks.reserve(ranks);
}

void RuleSelection::add(std::span<const CountedRule> counted) {
    m_rules.reserve(counted.size());
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
    const std::size_t begin = m_ranks.size();
    for (const SplitMask side : {SplitMask{0}, SplitMask{1}})
        for (std::size_t i = 0; i < set.size; ++i)
            if ((set.split >> i & 1) == side)
                m_ranks.push_back(m_items[i]);
    const auto subsequent = static_cast<std::uint32_t>(std::popcount(set.split));
    const std::uint32_t antecedent = set.size - subsequent;
    Rules::Stored stored;
    stored.begin = begin;
    stored.antecedent = antecedent;
    stored.subsequent = subsequent;
    stored.count = counted.count;
    stored.unionCount = m_sets.level(set.size).count[set.set];
    stored.antecedentCount = m_countOf(&m_ranks[begin], antecedent);
    stored.subsequentCount = m_countOf(&m_ranks[begin] + antecedent, subsequent);
    Rule rule = Rules::s_counted(stored, m_ranks.data());
    measure(rule, m_histories);
    if (passes(rule, m_thresholds))
        m_rules.push_back(stored);
    else
        m_ranks.resize(begin);
}

/// The ranks of the antecedent, an end mark, the ranks of the subsequent and end marks, as far as a
/// key holds them. A mark is greater than all ranks, so keys that differ are in the order of their
/// rules.
RuleSelection::Key RuleSelection::m_keyOf(const Rules::Stored& rule) const {
    const std::uint64_t mark = ~std::uint64_t{0} >> (64 - m_bits);
    const Rank* const end = &m_ranks[rule.begin] + rule.antecedent + rule.subsequent;
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

bool RuleSelection::s_standsBefore(const Keyed& a, const Keyed& b) {
    return a.key != b.key ? a.key < b.key
                          : standsBefore(Rules::s_counted(*a.rule, a.ranks),
                                         Rules::s_counted(*b.rule, b.ranks));
}

void RuleSelection::sort() {
    m_order.reserve(m_rules.size());
    for (const Rules::Stored& rule : m_rules)
        m_order.push_back({m_keyOf(rule), &rule, m_ranks.data()});
    std::sort(m_order.begin(), m_order.end(), s_standsBefore);
}

/// Rules that cut those of all parts into ranges of about equal size, found among samples. There
/// are more ranges than threads, so that none waits long for another.
std::vector<RuleSelection::Keyed> RuleSelection::s_pivots(const Parts& parts) {
    const std::size_t ranges = parts.size() == 1 ? 1 : 4 * parts.size();
    std::vector<Keyed> samples;
    for (const std::unique_ptr<RuleSelection>& part : parts)
        for (std::size_t i = 0; i < 16 * ranges && !part->m_order.empty(); ++i)
            samples.push_back(part->m_order[partOf(part->m_order.size(), i, 16 * ranges).begin]);
    std::sort(samples.begin(), samples.end(), s_standsBefore);
    std::vector<Keyed> pivots;
    for (std::size_t range = 1; range < ranges && !samples.empty(); ++range)
        pivots.push_back(samples[partOf(samples.size(), range, ranges).begin]);
    return pivots;
}

void RuleSelection::s_merge(std::vector<Range> ranges, Rules::Stored* merged) {
    const auto isDone = [](const Range& range) { return range.next == range.end; };
    std::erase_if(ranges, isDone);
    while (!ranges.empty()) {
        std::size_t first = 0;
        for (std::size_t range = 1; range < ranges.size(); ++range)
            if (s_standsBefore(*ranges[range].next, *ranges[first].next))
                first = range;
        Range& from = ranges[first];
        *merged = *from.next->rule;
        merged->begin += from.shift;
        ++merged;
        if (++from.next == from.end)
            std::erase_if(ranges, isDone);
    }
}

Rules RuleSelection::merge(Parts& parts, Step& step) {
    const std::vector<Keyed> pivots = s_pivots(parts);
    std::vector<std::vector<Range>> ranges(pivots.size() + 1);
    std::vector<std::size_t> begins(ranges.size() + 1);  // among the merged rules
    std::size_t ranks = 0;
    for (const std::unique_ptr<RuleSelection>& part : parts) {
        const Keyed* next = part->m_order.data();
        const Keyed* const end = next + part->m_order.size();
        for (std::size_t range = 0; range < ranges.size(); ++range) {
            const Keyed* const stop =
                range == pivots.size() ? end
                                       : std::lower_bound(next, end, pivots[range], s_standsBefore);
            ranges[range].push_back({next, stop, ranks});
            begins[range + 1] += static_cast<std::size_t>(stop - next);
            next = stop;
        }
        ranks += part->m_ranks.size();
    }
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    Rules all;
    all.m_histories = parts.front()->m_histories;
    assert(parts.front()->m_ranks.capacity() >= ranks);
    all.m_ranks = std::move(parts.front()->m_ranks);
    all.m_rules.resize(begins.back());
    const auto doTask = [&](std::size_t task) {
        if (task < ranges.size())
            s_merge(std::move(ranges[task]), all.m_rules.data() + begins[task]);
        else
            for (std::size_t part = 1; part < parts.size(); ++part)
                all.m_ranks.insert(all.m_ranks.end(), parts[part]->m_ranks.begin(),
                                   parts[part]->m_ranks.end());
    };
    workOn(
        ranges.size() + 1, static_cast<unsigned>(parts.size()), step,
        [&doTask](unsigned) { return doTask; }, [](std::size_t) {});
    return all;
}

Rules selectRules(const std::vector<CountedRule>& counted, const ItemSets& sets,
                  const Thresholds& thresholds, std::size_t histories, unsigned threads,
                  Step& step) {
    if (counted.empty())
        return {};
    RuleSelection::Parts parts(threads);
    workOnParts(threads, step, [&](std::size_t part) {
        auto selection = std::make_unique<RuleSelection>(sets, thresholds, histories);
        const auto [begin, end] = partOf(counted.size(), part, threads);
        const auto some = std::span(counted).subspan(begin, end - begin);
        // The first part takes the items of the others.
        selection->reserve(part == 0 ? std::span(counted) : some);
        selection->add(some);
        selection->sort();
        parts[part] = std::move(selection);
    });
    return RuleSelection::merge(parts, step);
}

}  // namespace quarvis::mining
