#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

#include "oracle/draws.hpp"

/// Indexes whose runs take a while, and results as values that compare.
namespace mining_tests {

/// An index of `copies` copies of `histories` histories. Each item occurs in a history with an even
/// chance, at one of four times. A set that is in n histories with one copy is in n times `copies`
/// histories.
inline quarvis::mining::HistoryIndex evenHistories(std::size_t histories, std::uint32_t items,
                                                   std::size_t copies) {
    oracle::Draws draws(histories + items);
    quarvis::mining::Dictionary names;
    for (std::uint32_t item = 0; item < items; ++item)
        names.add(std::to_string(1000 + item));
    std::vector<std::uint32_t> entities;
    std::vector<std::uint32_t> times;
    std::vector<std::uint32_t> codes;
    for (std::size_t history = 0; history < histories; ++history)
        for (std::uint32_t item = 0; item < items; ++item) {
            const std::uint64_t draw = draws.upTo(7);
            if (draw > 3)
                continue;
            for (std::size_t copy = 0; copy < copies; ++copy) {
                entities.push_back(static_cast<std::uint32_t>(copy * histories + history));
                times.push_back(static_cast<std::uint32_t>(draw));
                codes.push_back(item);
            }
        }
    return indexColumns(entities, times, codes, histories * copies, names, 1);
}

/// All that a result tells of its item sets and rules.
struct Account {
    std::vector<quarvis::mining::Level> levels;
    std::vector<std::vector<double>> rules;  ///< Sides, counts and measures in a row.

    explicit Account(const quarvis::mining::Result& result) {
        for (std::size_t size = 1; size <= result.itemSets.levels(); ++size)
            levels.push_back(result.itemSets.level(size));
        for (std::size_t i = 0; i < result.rules.size(); ++i) {
            const quarvis::mining::Rule rule = result.rules[i];
            std::vector<double>& row = rules.emplace_back();
            for (const auto& side : {rule.antecedent, rule.subsequent}) {
                for (const quarvis::mining::Rank item : side)
                    row.push_back(static_cast<double>(item));
                row.push_back(-1);
            }
            for (const std::uint32_t count :
                 {rule.count, rule.unionCount, rule.antecedentCount, rule.subsequentCount})
                row.push_back(static_cast<double>(count));
            for (const double measure : {rule.support, rule.confidence, rule.lift, rule.conviction,
                                         rule.probability, rule.certainty})
                row.push_back(measure);
        }
    }

    bool operator==(const Account& other) const {
        if (levels.size() != other.levels.size() || rules != other.rules)
            return false;
        for (std::size_t i = 0; i < levels.size(); ++i)
            if (levels[i].prefix != other.levels[i].prefix ||
                levels[i].last != other.levels[i].last ||
                levels[i].count != other.levels[i].count ||
                levels[i].extensions != other.levels[i].extensions)
                return false;
        return true;
    }
};

}  // namespace mining_tests
