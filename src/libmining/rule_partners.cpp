#include "rule_partners.hpp"

namespace quarvis::mining {

void RulePartners::begin(Rank first, const std::vector<Rank>& partners) {
    for (const Rank item : m_items)
        m_numbers[at(item)] = NONE;
    m_items.assign(1, first);
    for (const Rank partner : partners)
        if (m_live.has(partner))
            m_items.push_back(partner);
    for (std::uint32_t number = 0; number < m_items.size(); ++number)
        m_numbers[at(m_items[number])] = number;
    m_words = (m_items.size() + 63) / 64;
    m_rows.assign(2 * m_items.size() * m_words, 0);
    for (std::uint32_t number = 0; number < m_items.size(); ++number)
        for (const LivePairs::Partner& partner : m_live.of(m_items[number])) {
            const std::uint32_t other = m_numbers[at(partner.item)];
            if (other == NONE)
                continue;
            if (partner.forward)
                m_addRule(number, other);
            if (partner.backward)
                m_addRule(other, number);
        }
}

void RulePartners::m_addRule(std::uint32_t antecedent, std::uint32_t subsequent) {
    m_rows[std::size_t{2} * antecedent * m_words + subsequent / 64] |= std::uint64_t{1}
                                                                       << (subsequent % 64);
    m_rows[(std::size_t{2} * subsequent + 1) * m_words + antecedent / 64] |= std::uint64_t{1}
                                                                             << (antecedent % 64);
}

}  // namespace quarvis::mining
