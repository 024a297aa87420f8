#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace oracle {

/// All that a run shows: its results in the order of their files, and its messages.
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
    std::string messages;  ///< What the search writes to standard error, whole.

    bool operator==(const Outcome&) const = default;

    /// The texts alone.
    std::vector<std::string> ruleTexts() const;

    /// The bytes of the files that the tool writes.
    std::string rulesFile() const;
    std::string itemSetFile() const;
};

/// The measures with every digit, unlike the rules file.
std::ostream& operator<<(std::ostream& os, const Outcome::Rule& rule);
std::ostream& operator<<(std::ostream& os, const Outcome::ItemSet& items);
std::ostream& operator<<(std::ostream& os, const Outcome& outcome);

}  // namespace oracle
