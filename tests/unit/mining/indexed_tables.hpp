#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

/// Tables of the oracle as indexes, and what is found in them in the terms of the oracle.
namespace mining_tests {

/// Each history of the table has a transaction.
inline quarvis::mining::HistoryIndex indexed(
    const oracle::Table& table, std::uint32_t minCount = 1,
    quarvis::mining::TimeWidth timeWidth = quarvis::mining::TimeWidth::BITS_64) {
    quarvis::mining::IndexBuilder builder(timeWidth);
    for (std::size_t history = 0; history < table.histories.size(); ++history)
        for (const auto& [time, items] : table.histories[history]) {
            builder.beginRow(oracle::entityOf(table, history), time);
            for (const std::string& item : items)
                builder.addItem(item);
        }
    return builder.freeze(minCount);
}

/// Settings have the order of rules, options the size of their item sets.
inline quarvis::mining::MiningOptions optionsLike(const oracle::Settings& settings) {
    quarvis::mining::MiningOptions options;
    options.minCount = settings.minCount;
    options.maxSize = settings.maxOrder == 0 ? 0 : settings.maxOrder + 1;
    options.window = settings.windowSize;
    options.splits =
        settings.allSplits ? quarvis::mining::Splits::ALL : quarvis::mining::Splits::RUNS;
    options.thresholds = {settings.minSupport, settings.minConfidence, settings.minLift,
                          settings.maxConviction};
    return options;
}

inline std::string braced(const quarvis::mining::HistoryIndex& index,
                          std::span<const quarvis::mining::Rank> items) {
    std::string text;
    for (const quarvis::mining::Rank item : items)
        text += (text.empty() ? '{' : ',') + std::string(index.name(item));
    return text + '}';
}

inline std::string side(const quarvis::mining::HistoryIndex& index,
                        std::span<const quarvis::mining::Rank> items) {
    return items.size() == 1 ? std::string(index.name(items[0])) : braced(index, items);
}

/// Without messages: the engine has none.
inline oracle::Outcome outcomeOf(const quarvis::mining::HistoryIndex& index,
                                 const quarvis::mining::Result& result) {
    oracle::Outcome outcome;
    for (quarvis::mining::ItemSetCursor sets(result.itemSets); sets.next();)
        outcome.itemSets.push_back({braced(index, sets.items()), sets.count()});
    for (std::size_t i = 0; i < result.rules.size(); ++i) {
        const quarvis::mining::Rule rule = result.rules[i];
        outcome.rules.push_back(
            {side(index, rule.antecedent) + " => " + side(index, rule.subsequent), rule.count,
             rule.unionCount, rule.support, rule.confidence, rule.lift, rule.conviction,
             rule.probability, rule.certainty});
    }
    return outcome;
}

}  // namespace mining_tests
