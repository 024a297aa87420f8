#include "mine.hpp"

#include <string>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

#include "engine_options.hpp"
#include "progress_messages.hpp"

namespace quarvis::rule {

namespace {

mining::HistoryIndex indexOf(const TransactionSet& txns, std::uint32_t minCount) {
    mining::IndexBuilder builder;
    for (const auto& [entity, history] : txns)
        for (const auto& [time, items] : history) {
            builder.beginRow(entity, time);
            for (const Item& item : items)
                builder.addItem(item);
        }
    return builder.freeze(minCount);
}

ItemSet named(const mining::HistoryIndex& index, std::span<const mining::Rank> ranks) {
    ItemSet items;
    for (const mining::Rank rank : ranks)
        items.add(Item(index.name(rank)));
    return items;
}

RuleSet::Stats statsOf(const mining::Rule& rule) {
    RuleSet::Stats stats;
    stats.count = rule.count;
    stats.icount = rule.unionCount;
    stats.support = rule.support;
    stats.confidence = rule.confidence;
    stats.lift = rule.lift;
    stats.conviction = rule.conviction;
    stats.probability = rule.probability;
    stats.certainty = rule.certainty;
    return stats;
}

}  // namespace

MiningResult MiningResult::mine(const Configuration& config, const TransactionSet& txns) {
    const mining::HistoryIndex index = indexOf(txns, config.minCount);
    ProgressMessages messages(config.maxOrder);
    const mining::Result found = mining::mine(index, engineOptions(config), messages);

    MiningResult result;
    for (mining::ItemSetCursor cursor(found.itemSets); cursor.next();)
        result.m_is.add(named(index, cursor.items()), cursor.count());
    for (std::size_t i = 0; i < found.rules.size(); ++i) {
        const mining::Rule rule = found.rules[i];
        result.m_rules[Rule(named(index, rule.antecedent), named(index, rule.subsequent))] =
            statsOf(rule);
    }
    messages.rulesPassed(result.m_rules.size());
    return result;
}

MiningResult mine(const Configuration& config, const TransactionSet& txns) {
    return MiningResult::mine(config, txns);
}

}  // namespace quarvis::rule
