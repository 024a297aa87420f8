#include "mine.hpp"

#include <iostream>

#include "apriori.hpp"
#include "assembly.hpp"

namespace quarvis::rule {

MiningResult MiningResult::mine(const Configuration& config, const TransactionSet& txns) {
    MiningResult ret;
    const RuleHistogram counts = apriori(config, txns, ret.m_is);
    populateRuleSet(config, ret.m_rules, ret.m_is, counts, txns.size());
    std::cerr << "\t ... have " << ret.m_rules.size() << " rules." << std::endl;
    return ret;
}

MiningResult mine(const Configuration& config, const TransactionSet& txns) {
    return MiningResult::mine(config, txns);
}

}  // namespace quarvis::rule
