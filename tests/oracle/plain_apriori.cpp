#include "plain_apriori.hpp"

#include <cstddef>
#include <iostream>

#include "plain_proposals.hpp"
#include "plain_search.hpp"

namespace quarvis::rule::plain {

namespace {

void reportLevel(std::size_t sets, std::size_t size, std::size_t rules) {
    std::cerr << "\t ... calculated " << sets << " frequent item sets of size " << size << " with "
              << rules << " proposed rules." << std::endl;
}

void reportOrder(std::size_t order) {
    std::cerr << "\t ... deducing rules of order " << order << "." << std::endl;
}

}  // namespace

RuleHistogram apriori(const Configuration& config, const TransactionSet& txns,
                      ItemSetHistogram& all) {
    RuleHistogram counts;

    all = oneSets(config, txns);
    std::cerr << "\t ... calculated " << all.size() << " frequent item sets of size 1. "
              << std::endl;

    ItemSetSupports cur = aprioriMerge(config, all, all, txns, 2);
    RuleProposals proposals = proposeRules(cur);
    reportLevel(cur.size(), 2, count(proposals));
    if (proposals.empty()) {
        std::cerr << "\t ... no rules of order 1 found." << std::endl;
        return counts;
    }
    reportOrder(1);
    mineRules(config, txns, proposals, counts);

    const auto mineOrder = [&](std::size_t order) {
        const std::size_t size = order + 1;
        cur = aprioriMerge(config, cur, all, txns, size);
        proposals = proposeRules(cur);
        reportLevel(cur.size(), size, count(proposals));
        reportOrder(order);
        mineRules(config, txns, proposals, counts);
    };
    if (config.maxOrder == 1)
        return counts;
    if (config.maxOrder != 0) {
        // Every order asked for is reported, also when the sets have run out.
        std::cerr << "\t ... rules up to order " << config.maxOrder << " will be mined."
                  << std::endl;
        for (std::size_t order = 2; order <= config.maxOrder; ++order)
            mineOrder(order);
    } else {
        // Two sets could still make one of the next size; the search ends before them.
        std::cerr << "\t ... mining rules until there are no more frequent item sets." << std::endl;
        for (std::size_t order = 2; cur.size() > 2; ++order)
            mineOrder(order);
    }
    return counts;
}

}  // namespace quarvis::rule::plain
