#include "plain_assembly.hpp"

#include <iostream>

#include "measures.hpp"

namespace quarvis::rule::plain {

namespace {

double supportOf(std::size_t count, std::size_t total) {
    return support(static_cast<unsigned int>(count), static_cast<unsigned int>(total));
}

bool filter(const Configuration& config, const RuleSet::Stats& stats) {
    return stats.count >= config.minCount && stats.support >= config.minSupport &&
           stats.confidence >= config.minConfidence && stats.lift >= config.minLift &&
           stats.conviction <= config.maxConviction;
}

}  // namespace

void populateRuleSet(const Configuration& config, RuleSet& ret, const ItemSetSupports& supports,
                     const RuleHistogram& hist, std::size_t txnCount) {
    std::cerr << "\t ... preparing rules for reporting." << std::endl;
    for (const auto& [rule, count] : hist) {
        RuleSet::Stats stats;
        stats.count = count;
        stats.icount = supports.at(rule.items());
        const double both = supportOf(stats.icount, txnCount);
        const double antecedent = supportOf(supports.at(rule.antecedent()), txnCount);
        const double subsequent = supportOf(supports.at(rule.subsequent()), txnCount);

        // The support is that of the rule, within the window; the other measures tell how often
        // the items occur together at all.
        stats.support = supportOf(count, txnCount);
        stats.confidence = confidence(both, antecedent);
        stats.lift = lift(both, antecedent, subsequent);
        stats.conviction = conviction(subsequent, stats.confidence);
        stats.probability = probability(both, subsequent);
        stats.certainty = certainty(both, subsequent);
        if (filter(config, stats))
            ret[rule] = stats;
    }
}

}  // namespace quarvis::rule::plain
