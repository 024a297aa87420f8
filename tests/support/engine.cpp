#include "support/engine.hpp"

#include <cstddef>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>

#include <quarvis/mining/index_builder.hpp>

namespace support {

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::mining::ItemSetCursor;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;
using quarvis::mining::Result;
using quarvis::mining::Splits;
using quarvis::mining::TimeWidth;

namespace {

std::string listed(const HistoryIndex& index, std::span<const Rank> items) {
    std::string text;
    for (const Rank& item : items) {
        if (&item != &items.front())
            text += ',';
        text += index.name(item);
    }
    return text;
}

std::string braced(const HistoryIndex& index, std::span<const Rank> items) {
    return '{' + listed(index, items) + '}';
}

std::string side(const HistoryIndex& index, std::span<const Rank> items) {
    return items.size() == 1 ? listed(index, items) : braced(index, items);
}

}  // namespace

MiningOptions optionsOf(const oracle::Settings& settings) {
    MiningOptions options;
    options.minCount = settings.minCount;
    if (settings.maxOrder == std::numeric_limits<std::uint32_t>::max())
        throw std::out_of_range("an order whose rules have more items than the engine can count");
    options.maxSize = settings.maxOrder == 0 ? 0 : settings.maxOrder + 1;
    options.window = settings.windowSize;
    options.splits = settings.allSplits ? Splits::ALL : Splits::RUNS;
    options.thresholds = {settings.minSupport, settings.minConfidence, settings.minLift,
                          settings.maxConviction};
    return options;
}

HistoryIndex indexOf(const oracle::Table& table, std::uint32_t minCount, TimeWidth timeWidth) {
    IndexBuilder builder(timeWidth);
    for (std::size_t history = 0; history < table.histories.size(); ++history) {
        if (table.histories[history].empty())
            throw std::invalid_argument("a history without transactions");
        const std::string entity = entityOf(table, history);
        for (const auto& [time, items] : table.histories[history]) {
            builder.beginRow(entity, time);
            for (const std::string& item : items)
                builder.addItem(item);
        }
    }
    return builder.freeze(minCount);
}

oracle::Outcome outcomeOf(const HistoryIndex& index, const Result& result) {
    oracle::Outcome outcome;
    for (ItemSetCursor cursor(result.itemSets); cursor.next();)
        outcome.itemSets.push_back({braced(index, cursor.items()), cursor.count()});
    for (std::size_t i = 0; i < result.rules.size(); ++i) {
        const quarvis::mining::Rule rule = result.rules[i];
        outcome.rules.push_back(
            {side(index, rule.antecedent) + " => " + side(index, rule.subsequent), rule.count,
             rule.unionCount, rule.support, rule.confidence, rule.lift, rule.conviction,
             rule.probability, rule.certainty});
    }
    return outcome;
}

}  // namespace support
