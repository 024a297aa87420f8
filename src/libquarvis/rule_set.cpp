#include <quarvis/rule_set.hpp>

#include <iostream>

namespace quarvis::rule {

void RuleSet::filter(std::size_t minCount, double minSupport, double minConfidence, double minLift,
                     double maxConviction) {
    for (auto next = m_data.begin(); next != m_data.end();) {
        const auto it = next++;
        const auto& [rule, stats] = *it;
        const bool kept = stats.count >= minCount && stats.support >= minSupport &&
                          stats.confidence >= minConfidence && stats.lift >= minLift &&
                          maxConviction >= stats.conviction;
        if (kept)
            std::cerr << rule << ": " << stats.support << ',' << minSupport << ','
                      << stats.confidence << ',' << stats.lift << std::endl;
        else
            m_data.erase(it);
    }
}

}  // namespace quarvis::rule
