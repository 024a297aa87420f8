#include "assembly.hpp"

#include <algorithm>
#include <iostream>
#include <span>
#include <utility>
#include <vector>

#include "measures.hpp"

namespace quarvis::rule {

namespace {

/// Adds to the histogram in its own order, in which a set comes right after its extensions.
class ItemSetEmitter {
  public:
    ItemSetEmitter(ItemSetHistogram& ret, const HistoryIndex& index, const FrequentSets& sets)
        : m_ret(ret), m_index(index), m_sets(sets) {}

    /// Adds the sets [begin, end) of a level, all extensions of `prefix`, and all that extend them.
    void emit(std::size_t size, std::size_t begin, std::size_t end, const ItemSet& prefix) {
        const Level& level = m_sets.level(size);
        for (std::size_t set = begin; set < end; ++set) {
            ItemSet items = prefix;
            items.add(m_index.name(level.last[set]));
            if (!level.extensions.empty())
                emit(size + 1, level.extensions[set], level.extensions[set + 1], items);
            m_ret.add(std::move(items), level.count[set]);
        }
    }

  private:
    ItemSetHistogram& m_ret;
    const HistoryIndex& m_index;
    const FrequentSets& m_sets;
};

double supportOf(std::size_t count, std::size_t total) {
    return support(static_cast<unsigned int>(count), static_cast<unsigned int>(total));
}

/// A rule that passed the thresholds: its antecedent, then its subsequent, as ranks from `begin` on
/// in a common array.
struct PassedRule {
    std::size_t begin;
    std::uint32_t antecedentSize;
    std::uint32_t size;
    RuleSet::Stats stats;
};

using Ranks = std::span<const Rank>;

/// The order of item sets on ranks: lexicographic, a set before its own prefixes.
bool precedes(Ranks a, Ranks b) {
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (left == a.end())
        return false;
    return right == b.end() || *left < *right;
}

class RuleSelection {
  public:
    RuleSelection(const Configuration& config, const FrequentSets& supports, std::size_t txnCount)
        : m_config(config), m_supports(supports), m_txnCount(txnCount) {}

    /// Keeps the rule if it passes.
    void add(const CountedRule& rule) {
        const std::size_t begin = m_ranks.size();
        m_items.resize(rule.size);
        m_supports.items(rule.size, rule.set, m_items.data());
        const auto first = m_items.begin() + rule.first;
        const auto after = m_items.begin() + rule.last + 1;
        m_ranks.insert(m_ranks.end(), first, after);
        m_ranks.insert(m_ranks.end(), m_items.begin(), first);
        m_ranks.insert(m_ranks.end(), after, m_items.end());
        PassedRule passed{begin, rule.last - rule.first + 1, rule.size, {}};
        passed.stats =
            m_stats(rule.count, m_supports.level(rule.size).count[rule.set],
                    m_supports.count(m_antecedent(passed)), m_supports.count(m_subsequent(passed)));
        if (filter(m_config, passed.stats))
            m_passed.push_back(passed);
        else
            m_ranks.resize(begin);
    }

    void moveInto(RuleSet& ret, const HistoryIndex& index) {
        std::sort(m_passed.begin(), m_passed.end(), [this](const auto& a, const auto& b) {
            if (precedes(m_antecedent(a), m_antecedent(b)))
                return true;
            if (precedes(m_antecedent(b), m_antecedent(a)))
                return false;
            return precedes(m_subsequent(a), m_subsequent(b));
        });
        const auto named = [&index](Ranks ranks) {
            ItemSet items;
            for (const Rank item : ranks)
                items.add(index.name(item));
            return items;
        };
        for (const PassedRule& rule : m_passed)
            ret[Rule(named(m_antecedent(rule)), named(m_subsequent(rule)))] = rule.stats;
    }

  private:
    /// The support is that of the rule, within the window; the other measures tell how often the
    /// items occur together at all.
    RuleSet::Stats m_stats(std::size_t count, std::size_t both, std::size_t antecedent,
                           std::size_t subsequent) const {
        const double supportI = supportOf(both, m_txnCount);
        const double supportA = supportOf(antecedent, m_txnCount);
        const double supportS = supportOf(subsequent, m_txnCount);
        RuleSet::Stats stats;
        stats.count = count;
        stats.icount = both;
        stats.support = supportOf(count, m_txnCount);
        stats.confidence = confidence(supportI, supportA);
        stats.lift = lift(supportI, supportA, supportS);
        stats.conviction = conviction(supportS, stats.confidence);
        stats.probability = probability(supportI, supportS);
        stats.certainty = certainty(supportI, supportS);
        return stats;
    }

    Ranks m_antecedent(const PassedRule& rule) const {
        return Ranks(m_ranks).subspan(rule.begin, rule.antecedentSize);
    }
    Ranks m_subsequent(const PassedRule& rule) const {
        return Ranks(m_ranks).subspan(rule.begin + rule.antecedentSize,
                                      rule.size - rule.antecedentSize);
    }

    const Configuration& m_config;
    const FrequentSets& m_supports;
    std::size_t m_txnCount;
    std::vector<Rank> m_items;
    std::vector<Rank> m_ranks;
    std::vector<PassedRule> m_passed;
};

}  // namespace

void populateItemSets(ItemSetHistogram& ret, const HistoryIndex& index, const FrequentSets& sets) {
    ItemSetEmitter(ret, index, sets).emit(1, 0, sets.level(1).size(), ItemSet());
}

void populateRuleSet(const Configuration& config, RuleSet& ret, const HistoryIndex& index,
                     const FrequentSets& supports, const RuleHistogram& hist,
                     std::size_t txnCount) {
    std::cerr << "\t ... preparing rules for reporting." << std::endl;
    RuleSelection selection(config, supports, txnCount);
    for (const CountedRule& rule : hist.rules)
        selection.add(rule);
    selection.moveInto(ret, index);
}

bool filter(const Configuration& config, const RuleSet::Stats& stats) {
    return stats.count >= config.minCount && stats.support >= config.minSupport &&
           stats.confidence >= config.minConfidence && stats.lift >= config.minLift &&
           stats.conviction <= config.maxConviction;
}

}  // namespace quarvis::rule
