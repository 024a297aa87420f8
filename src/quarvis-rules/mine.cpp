#include "mine.hpp"

#include <iostream>

#include "apriori.hpp"
#include "assembly.hpp"
#include "history_index.hpp"

namespace quarvis::rule {

MiningResult MiningResult::mine(const Configuration& config, const TransactionSet& txns) {
    MiningResult ret;
    const HistoryIndex index(txns, config.minCount);
    FrequentSets sets;
    const RuleHistogram counts = apriori(config, index, sets);
    populateItemSets(ret.m_is, index, sets);
    populateRuleSet(config, ret.m_rules, index, sets, counts, txns.size());
    std::cerr << "\t ... have " << ret.m_rules.size() << " rules." << std::endl;
    return ret;
}

MiningResult mine(const Configuration& config, const TransactionSet& txns) {
    return MiningResult::mine(config, txns);
}

}  // namespace quarvis::rule
