#include "plain_proposals.hpp"

#include <iterator>

namespace quarvis::rule::plain {

void proposeRules(const ItemSet& items, RuleProposals& ret) {
    ItemSet before;
    for (auto first = items.begin(); first != items.end(); ++first) {
        ItemSet antecedent;
        for (auto last = first; last != items.end(); ++last) {
            ItemSet subsequent = before;
            for (auto after = std::next(last); after != items.end(); ++after)
                subsequent.add(*after);
            if (subsequent.size() == 0)
                break;
            antecedent.add(*last);
            ret[antecedent].insert(subsequent);
        }
        before.add(*first);
    }
}

RuleProposals proposeRules(const ItemSetSupports& src) {
    RuleProposals ret;
    for (const auto& [items, count] : src)
        proposeRules(items, ret);
    return ret;
}

std::size_t count(const RuleProposals& p) {
    std::size_t total = 0;
    for (const auto& [antecedent, subsequents] : p)
        total += subsequents.size();
    return total;
}

}  // namespace quarvis::rule::plain
