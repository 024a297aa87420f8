#include "plain_rule_counting.hpp"

#include <algorithm>

namespace quarvis::rule::plain {

void mineRules(const Configuration& config, const TransactionSet& txns,
               const RuleProposals& proposals, RuleHistogram& counts) {
    for (const auto& [key, history] : txns)
        mineRules(config, history, proposals, counts);
}

void mineRules(const Configuration& config, const History& seq, const RuleProposals& proposals,
               RuleHistogram& counts) {
    LastTime firstEvent;
    RuleMapped mapped;
    for (const auto& [time, txn] : seq) {
        clearLastTimes(config, firstEvent, txn, time);
        mineRules(config, firstEvent, txn, proposals, counts, mapped);
        updateLastTimes(config, firstEvent, txn, time);
    }
}

void mineRules(const Configuration& config, LastTime& firstEvent, const ItemSet& txn,
               const RuleProposals& proposals, RuleHistogram& counts, RuleMapped& mapped) {
    for (const auto& [antecedent, subsequents] : proposals)
        for (const ItemSet& subsequent : subsequents)
            mineRules(config, firstEvent, txn, antecedent, subsequent, counts, mapped);
}

void mineRules(const Configuration&, LastTime& firstEvent, const ItemSet& txn,
               const ItemSet& antecedent, const ItemSet& subsequent, RuleHistogram& counts,
               RuleMapped& mapped) {
    if (!txn.contains(subsequent))
        return;
    const Rule rule(antecedent, subsequent);
    if (mapped.contains(rule) || txn.contains(antecedent))
        return;
    const auto seenBefore = [&firstEvent](const Item& item) { return firstEvent.contains(item); };
    if (!std::all_of(antecedent.begin(), antecedent.end(), seenBefore) ||
        std::any_of(subsequent.begin(), subsequent.end(), seenBefore))
        return;
    ++counts[rule];
    mapped.insert(rule);
}

void clearLastTimes(const Configuration& config, LastTime& firstEvent, const ItemSet&,
                    History::Time time) {
    if (config.windowSize == 0)
        return;
    std::erase_if(firstEvent,
                  [&](const auto& seen) { return time - seen.second > config.windowSize; });
}

void updateLastTimes(const Configuration&, LastTime& firstEvent, const ItemSet& items,
                     History::Time time) {
    for (const Item& item : items)
        firstEvent[item] = time;
}

}  // namespace quarvis::rule::plain
