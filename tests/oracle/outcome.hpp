#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "config.hpp"
#include "table.hpp"

namespace mining_tests {

/// All that a run of the mining shows: its results in the order of their files, and its messages.
struct Outcome {
    struct Rule {
        std::string text;
        std::size_t count;
        std::size_t icount;
        double support;
        double confidence;
        double lift;
        double conviction;
        double probability;
        double certainty;

        bool operator==(const Rule&) const = default;
    };
    struct ItemSet {
        std::string text;
        std::size_t count;

        bool operator==(const ItemSet&) const = default;
    };

    std::vector<Rule> rules;
    std::vector<ItemSet> itemSets;
    std::string messages;  ///< Standard error, whole.

    bool operator==(const Outcome&) const = default;

    /// The texts alone.
    std::vector<std::string> ruleTexts() const;
};

std::ostream& operator<<(std::ostream& os, const Outcome::Rule& rule);
std::ostream& operator<<(std::ostream& os, const Outcome::ItemSet& items);
std::ostream& operator<<(std::ostream& os, const Outcome& outcome);

/// The outcome of `quarvis::rule::mine`.
Outcome minedOutcome(const Configuration& config, const Table& table);
Outcome minedOutcome(const Configuration& config, const quarvis::rule::TransactionSet& txns);

/// The outcome of `quarvis::rule::plain::mine`.
Outcome plainOutcome(const Configuration& config, const quarvis::rule::TransactionSet& txns);

}  // namespace mining_tests
