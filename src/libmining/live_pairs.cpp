#include "live_pairs.hpp"

namespace quarvis::mining {

LivePairs::LivePairs(const PairTallies& tallies, const ItemSets& sets, std::size_t items,
                     RuleLedger& ledger)
    : m_begin(items + 1), m_has(items) {
    if (sets.levels() < 2)
        return;
    const Level& firsts = sets.level(1);
    const Level& pairs = sets.level(2);
    std::size_t next = 0;  // the first item whose beginning is not set
    for (std::size_t first = 0; first < firsts.size(); ++first) {
        const Rank item = firsts.last[first];
        for (; next <= at(item); ++next)
            m_begin[next] = m_partners.size();
        for (std::size_t pair = firsts.extensions[first]; pair < firsts.extensions[first + 1];
             ++pair) {
            const PairTallies::Pair& met = tallies.met(pair);
            const auto follows = [&](SplitMask split, std::uint32_t histories) {
                return histories >= ledger.least() &&
                       ledger.follows({2, static_cast<std::uint32_t>(pair), split}, histories);
            };
            const bool backward = follows(1, met.backward);
            const bool forward = follows(2, met.forward);
            if (!forward && !backward)
                continue;
            m_partners.push_back({pairs.last[pair], forward, backward});
            m_has[at(item)] = m_has[at(pairs.last[pair])] = true;
        }
    }
    for (; next <= items; ++next)
        m_begin[next] = m_partners.size();
}

}  // namespace quarvis::mining
