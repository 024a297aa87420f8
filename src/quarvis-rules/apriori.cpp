#include "apriori.hpp"

#include <cstddef>
#include <iostream>

#include "search.hpp"

namespace quarvis::rule {

namespace {

void reportLevel(std::size_t sets, std::size_t size) {
    std::cerr << "\t ... calculated " << sets << " frequent item sets of size " << size << " with "
              << proposeRules(sets, size) << " proposed rules." << std::endl;
}

void reportOrder(std::size_t order) {
    std::cerr << "\t ... deducing rules of order " << order << "." << std::endl;
}

}  // namespace

RuleHistogram apriori(const Configuration& config, const HistoryIndex& index, FrequentSets& all) {
    RuleHistogram counts;

    all.add(oneSets(index), {});
    std::cerr << "\t ... calculated " << all.level(1).size() << " frequent item sets of size 1. "
              << std::endl;

    std::size_t sets = aprioriMerge(config, index, all).size();
    reportLevel(sets, 2);
    if (sets == 0) {
        std::cerr << "\t ... no rules of order 1 found." << std::endl;
        return counts;
    }
    reportOrder(1);
    mineRules(config, index, all, 2, counts);

    const auto mineOrder = [&](std::size_t order) {
        const std::size_t size = order + 1;
        // Without sets of a size there are none of the next, but any number of orders to report.
        if (sets != 0)
            sets = aprioriMerge(config, index, all).size();
        reportLevel(sets, size);
        reportOrder(order);
        if (sets != 0)
            mineRules(config, index, all, size, counts);
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
        std::size_t order = 2;
        while (sets > 2)
            mineOrder(order++);
    }
    return counts;
}

}  // namespace quarvis::rule
