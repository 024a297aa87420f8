#include "plain_mine.hpp"

#include <iostream>

#include "plain_apriori.hpp"
#include "plain_assembly.hpp"

namespace quarvis::rule::plain {

Result mine(const Configuration& config, const TransactionSet& txns) {
    Result ret;
    const RuleHistogram counts = apriori(config, txns, ret.itemSets);
    populateRuleSet(config, ret.rules, ret.itemSets, counts, txns.size());
    std::cerr << "\t ... have " << ret.rules.size() << " rules." << std::endl;
    return ret;
}

}  // namespace quarvis::rule::plain
