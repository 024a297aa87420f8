#include "progress_messages.hpp"

#include <iostream>

namespace {

/// The number of rules proposed from one item set. Each contiguous run of its sorted items, except
/// the whole set, is the antecedent of one rule.
std::size_t proposals(std::size_t size) {
    return size * (size + 1) / 2 - 1;
}

}  // namespace

void ProgressMessages::m_tellLevel(std::size_t size, std::size_t sets) {
    std::cerr << "\t ... calculated " << sets << " frequent item sets of size " << size << " with "
              << sets * proposals(size) << " proposed rules." << std::endl;
    if (size == 2 && sets == 0)
        std::cerr << "\t ... no rules of order 1 found." << std::endl;
    else
        std::cerr << "\t ... deducing rules of order " << size - 1 << "." << std::endl;
}

void ProgressMessages::levelFound(std::size_t size, std::size_t sets) {
    const std::size_t before = m_lastSets;
    m_lastSets = sets;
    if (size == 1) {
        std::cerr << "\t ... calculated " << sets << " frequent item sets of size 1. " << std::endl;
        return;
    }
    // Without a greatest order the search stops after a level, from size 2 on, of at most two sets,
    // although two sets could still join to one of the next size.
    if (size > 2 && m_maxOrder == 0 && before <= 2)
        return;
    m_tellLevel(size, sets);
    if (size == 2 && sets != 0 && m_maxOrder > 1)
        std::cerr << "\t ... rules up to order " << m_maxOrder << " will be mined." << std::endl;
    if (size == 2 && sets != 0 && m_maxOrder == 0)
        std::cerr << "\t ... mining rules until there are no more frequent item sets." << std::endl;
    // Each order up to the greatest has its lines, even after the sets have run out.
    if (size > 2 && sets == 0 && m_maxOrder != 0)
        for (std::size_t order = size; order <= m_maxOrder; ++order)
            m_tellLevel(order + 1, 0);
}

void ProgressMessages::rulesCounted(std::size_t) {
    std::cerr << "\t ... preparing rules for reporting." << std::endl;
}

void ProgressMessages::rulesPassed(std::size_t rules) {
    std::cerr << "\t ... have " << rules << " rules." << std::endl;
}
