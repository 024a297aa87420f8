#include "outcome.hpp"

#include <limits>
#include <sstream>

#include "mine.hpp"
#include "plain_mine.hpp"
#include "support/error_output.hpp"

namespace mining_tests {

using quarvis::rule::ItemSetHistogram;
using quarvis::rule::MiningResult;

std::vector<std::string> Outcome::ruleTexts() const {
    std::vector<std::string> texts;
    texts.reserve(rules.size());
    for (const Rule& rule : rules)
        texts.push_back(rule.text);
    return texts;
}

std::ostream& operator<<(std::ostream& os, const Outcome::Rule& rule) {
    std::ostringstream line;
    line.precision(std::numeric_limits<double>::max_digits10);
    line << rule.text << " | " << rule.count << " | " << rule.icount << " | " << rule.support
         << " | " << rule.confidence << " | " << rule.lift << " | " << rule.conviction << " | "
         << rule.probability << " | " << rule.certainty;
    return os << line.str();
}

std::ostream& operator<<(std::ostream& os, const Outcome::ItemSet& items) {
    return os << items.text << " | " << items.count;
}

std::ostream& operator<<(std::ostream& os, const Outcome& outcome) {
    for (const Outcome::ItemSet& items : outcome.itemSets)
        os << items << '\n';
    for (const Outcome::Rule& rule : outcome.rules)
        os << rule << '\n';
    return os << outcome.messages;
}

namespace {

Outcome outcomeOf(const quarvis::rule::RuleSet& rules, const ItemSetHistogram& itemSets,
                  const std::string& messages) {
    Outcome outcome;
    outcome.messages = messages;
    for (const auto& [items, count] : itemSets)
        outcome.itemSets.push_back({items.toString(), count});
    for (const auto& [rule, stats] : rules)
        outcome.rules.push_back({rule.toString(), stats.count, stats.icount, stats.support,
                                 stats.confidence, stats.lift, stats.conviction, stats.probability,
                                 stats.certainty});
    return outcome;
}

}  // namespace

Outcome minedOutcome(const Configuration& config, const quarvis::rule::TransactionSet& txns) {
    const support::ErrorOutput messages;
    const MiningResult result = quarvis::rule::mine(config, txns);
    return outcomeOf(result.rules(), result.itemSets(), messages.text());
}

Outcome minedOutcome(const Configuration& config, const Table& table) {
    return minedOutcome(config, transactionsOf(table));
}

Outcome plainOutcome(const Configuration& config, const quarvis::rule::TransactionSet& txns) {
    const support::ErrorOutput messages;
    const quarvis::rule::plain::Result result = quarvis::rule::plain::mine(config, txns);
    return outcomeOf(result.rules, result.itemSets, messages.text());
}

}  // namespace mining_tests
