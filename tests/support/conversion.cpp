#include "support/conversion.hpp"

#include <cstddef>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>

#include "oracle/transaction_file.hpp"
#include "support/error_output.hpp"

namespace support {

using quarvis::rule::History;
using quarvis::rule::ItemSet;
using quarvis::rule::ItemSetHistogram;
using quarvis::rule::MiningResult;
using quarvis::rule::TransactionSet;

namespace {

template <class Number>
Number narrowed(oracle::Time value) {
    if (value > std::numeric_limits<Number>::max())
        throw std::out_of_range(std::to_string(value) + " is more than the tool can have");
    return static_cast<Number>(value);
}

/// The entities, each with its first time.
TransactionSet entitiesOf(const oracle::Table& table) {
    oracle::Table entities;
    entities.entities = table.entities;
    for (const oracle::History& history : table.histories) {
        if (history.empty())
            throw std::invalid_argument("a history without transactions");
        entities.histories.push_back({{history.begin()->first, {}}});
    }
    std::istringstream file(oracle::textOf(entities));
    TransactionSet txns;
    txns.readInto(file, '\t');
    return txns;
}

}  // namespace

Configuration configurationOf(const oracle::Settings& settings) {
    if (settings.allSplits)
        throw std::invalid_argument("the tool proposes rules by runs only");
    Configuration config;
    config.minCount = settings.minCount;
    config.minSupport = settings.minSupport;
    config.minConfidence = settings.minConfidence;
    config.minLift = settings.minLift;
    config.maxConviction = settings.maxConviction;
    config.maxOrder = settings.maxOrder;
    config.windowSize = narrowed<decltype(config.windowSize)>(settings.windowSize);
    return config;
}

oracle::Settings settingsOf(const Configuration& config) {
    oracle::Settings settings;
    settings.minCount = config.minCount;
    settings.minSupport = config.minSupport;
    settings.minConfidence = config.minConfidence;
    settings.minLift = config.minLift;
    settings.maxConviction = config.maxConviction;
    settings.maxOrder = config.maxOrder;
    settings.windowSize = config.windowSize;
    return settings;
}

TransactionSet transactionsOf(const oracle::Table& table) {
    // Only the entities are passed through a file, since items may be any bytes.
    TransactionSet txns = entitiesOf(table);
    std::map<std::string, History*> histories;
    for (auto& [entity, history] : txns)
        histories[entity] = &history;
    for (std::size_t i = 0; i < table.histories.size(); ++i) {
        History& history = *histories.at(entityOf(table, i));
        for (const auto& [time, items] : table.histories[i])
            history[narrowed<History::Time>(time)] = itemSetOf(items);
    }
    return txns;
}

oracle::Table tableOf(const TransactionSet& txns) {
    oracle::Table table;
    for (const auto& [entity, history] : txns) {
        table.entities.push_back(entity);
        auto& transactions = table.histories.emplace_back();
        for (const auto& [time, items] : history)
            transactions[time].insert(items.begin(), items.end());
    }
    return table;
}

ItemSet itemSetOf(const oracle::Items& items) {
    ItemSet set;
    for (const std::string& item : items)
        set.add(item);
    return set;
}

oracle::Outcome outcomeOf(const MiningResult& result, const std::string& messages) {
    oracle::Outcome outcome;
    outcome.messages = messages;
    const ItemSetHistogram itemSets = result.itemSets();
    for (const auto& [items, count] : itemSets)
        outcome.itemSets.push_back({items.toString(), count});
    for (const auto& [rule, stats] : result.rules())
        outcome.rules.push_back({rule.toString(), stats.count, stats.icount, stats.support,
                                 stats.confidence, stats.lift, stats.conviction, stats.probability,
                                 stats.certainty});
    return outcome;
}

oracle::Outcome mined(const Configuration& config, const TransactionSet& txns) {
    const ErrorOutput messages;
    const MiningResult result = quarvis::rule::mine(config, txns);
    return outcomeOf(result, messages.text());
}

oracle::Outcome mined(const oracle::Settings& settings, const oracle::Table& table) {
    return mined(configurationOf(settings), transactionsOf(table));
}

}  // namespace support
