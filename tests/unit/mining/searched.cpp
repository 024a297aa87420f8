#include "searched.hpp"

#include <span>

#include "search.hpp"
#include "support/conversion.hpp"

namespace mining_tests {

using quarvis::rule::Rank;

namespace {

std::string joined(const quarvis::rule::HistoryIndex& index, std::span<const Rank> items) {
    std::string text;
    for (const Rank item : items)
        text += (text.empty() ? "" : ",") + index.name(item);
    return text;
}

}  // namespace

Searched::Searched(const Table& table, std::uint32_t minCount, std::size_t maxSize)
    : txns(support::transactionsOf(table)), index(txns, minCount) {
    Configuration config;
    config.minCount = minCount;
    sets.add(oneSets(index), {});
    while (maxSize == 0 ? sets.level(sets.levels()).size() != 0 : sets.levels() < maxSize)
        aprioriMerge(config, index, sets);
}

std::string Searched::namesOf(std::size_t size, std::size_t set) const {
    std::vector<Rank> items(size);
    sets.items(size, set, items.data());
    return joined(index, items);
}

std::vector<std::string> Searched::listed(std::size_t size) const {
    std::vector<std::string> texts;
    for (std::size_t set = 0; set < sets.level(size).size(); ++set)
        texts.push_back(namesOf(size, set) + ' ' + std::to_string(sets.level(size).count[set]));
    return texts;
}

std::string Searched::textOf(const quarvis::rule::CountedRule& rule) const {
    std::vector<Rank> items(rule.size);
    sets.items(rule.size, rule.set, items.data());
    const auto first = items.begin() + rule.first;
    const auto after = items.begin() + rule.last + 1;
    const std::vector<Rank> antecedent(first, after);
    items.erase(first, after);
    return joined(index, antecedent) + " => " + joined(index, items) + ' ' +
           std::to_string(rule.count);
}

}  // namespace mining_tests
