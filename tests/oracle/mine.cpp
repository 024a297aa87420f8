#include "oracle/mine.hpp"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "oracle/frequent_sets.hpp"
#include "oracle/measures.hpp"
#include "oracle/numbered.hpp"
#include "oracle/proposals.hpp"
#include "oracle/rule_counting.hpp"

namespace oracle {

namespace {

struct MinedRule {
    NumberedItems antecedent;
    NumberedItems subsequent;
    RuleCounts counts;
    Measures measures;
};

bool isListedBefore(const MinedRule& a, const MinedRule& b) {
    return a.antecedent == b.antecedent ? precedes(a.subsequent, b.subsequent)
                                        : precedes(a.antecedent, b.antecedent);
}

bool passes(const MinedRule& rule, const Settings& settings) {
    return rule.counts.rule >= settings.minCount && rule.measures.support >= settings.minSupport &&
           rule.measures.confidence >= settings.minConfidence &&
           rule.measures.lift >= settings.minLift &&
           rule.measures.conviction <= settings.maxConviction;
}

class Miner {
  public:
    Miner(const Settings& settings, const Table& table)
        : m_settings(settings), m_table(numbered(table)) {}

    Outcome outcome() {
        m_search();
        m_say("preparing rules for reporting.");
        m_say("have " + std::to_string(m_rules.size()) + " rules.");

        Outcome outcome;
        outcome.messages = m_messages;
        for (const auto& [items, count] : m_counts)
            outcome.itemSets.push_back({braced(items, m_table.names), count});
        std::sort(m_rules.begin(), m_rules.end(), isListedBefore);
        for (const MinedRule& rule : m_rules)
            outcome.rules.push_back({ruleText(rule.antecedent, rule.subsequent, m_table.names),
                                     rule.counts.rule, rule.counts.both, rule.measures.support,
                                     rule.measures.confidence, rule.measures.lift,
                                     rule.measures.conviction, rule.measures.probability,
                                     rule.measures.certainty});
        return outcome;
    }

  private:
    /// The order of the item-set file.
    struct InOrder {
        bool operator()(const NumberedItems& a, const NumberedItems& b) const {
            return precedes(a, b);
        }
    };
    using Counts = std::map<NumberedItems, std::size_t, InOrder>;

    void m_say(const std::string& text) { m_messages += "\t ... " + text + '\n'; }

    /// Only the first order ends the search when it has no rules. Without a greatest order the
    /// search ends after a level of at most two sets, although two sets may still make a larger
    /// one.
    void m_search() {
        m_level = firstLevel(m_table, m_settings.minCount);
        m_recordLevel();
        m_say("calculated " + std::to_string(m_level.size()) + " frequent item sets of size 1. ");
        if (m_goUp(2) == 0) {
            m_say("no rules of order 1 found.");
            return;
        }
        m_deduce(1);
        if (m_settings.maxOrder == 0)
            m_say("mining rules until there are no more frequent item sets.");
        else if (m_settings.maxOrder > 1)
            m_say("rules up to order " + std::to_string(m_settings.maxOrder) + " will be mined.");
        for (std::size_t order = 2; m_isAskedFor(order); ++order) {
            m_goUp(order + 1);
            m_deduce(order);
        }
    }

    bool m_isAskedFor(std::size_t order) const {
        return m_settings.maxOrder == 0 ? m_level.size() > 2 : order <= m_settings.maxOrder;
    }

    /// Goes to the sets of `size` items. Returns the number of rules that are proposed for them.
    std::size_t m_goUp(std::size_t size) {
        m_level = nextLevel(m_level, m_settings.minCount);
        m_recordLevel();
        m_splits.clear();
        if (!m_level.empty())
            m_splits = m_settings.allSplits ? allSplits(size) : splitsByRuns(size);
        const std::size_t rules = m_level.size() * m_splits.size();
        m_say("calculated " + std::to_string(m_level.size()) + " frequent item sets of size " +
              std::to_string(size) + " with " + std::to_string(rules) + " proposed rules.");
        return rules;
    }

    void m_recordLevel() {
        for (const FrequentSet& set : m_level)
            m_counts[set.items] = set.count();
    }

    void m_deduce(std::size_t order) {
        m_say("deducing rules of order " + std::to_string(order) + '.');
        for (const FrequentSet& set : m_level) {
            const auto counts = ruleCounts(m_table, set, m_splits, m_settings.windowSize);
            for (std::size_t i = 0; i < m_splits.size(); ++i)
                m_addRule(set, m_splits[i], counts[i]);
        }
    }

    /// A rule that counts nowhere is not listed, whatever the least count.
    void m_addRule(const FrequentSet& set, Split split, std::size_t count) {
        if (count == 0)
            return;
        MinedRule rule;
        rule.antecedent = antecedentOf(split, set.items);
        rule.subsequent = subsequentOf(split, set.items);
        rule.counts = {.rule = count,
                       .both = set.count(),
                       .antecedent = m_counts.at(rule.antecedent),
                       .subsequent = m_counts.at(rule.subsequent),
                       .all = m_table.histories.size()};
        rule.measures = measuresOf(rule.counts);
        if (passes(rule, m_settings))
            m_rules.push_back(rule);
    }

    const Settings& m_settings;
    const NumberedTable m_table;
    Level m_level;
    std::vector<Split> m_splits;  ///< The splits of each set of the level.
    Counts m_counts;
    std::vector<MinedRule> m_rules;
    std::string m_messages;
};

}  // namespace

Outcome mine(const Settings& settings, const Table& table) {
    return Miner(settings, table).outcome();
}

}  // namespace oracle
