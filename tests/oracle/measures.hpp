#pragma once

#include <cstddef>

namespace oracle {

/// Numbers of histories: those that a rule counts in, those that have its items, and all.
struct RuleCounts {
    std::size_t rule;
    std::size_t both;
    std::size_t antecedent;
    std::size_t subsequent;
    std::size_t all;
};

struct Measures {
    double support;
    double confidence;
    double lift;
    double conviction;
    double probability;
    double certainty;
};

/// The measures of a rule. The quotients are of supports, not of counts, since their roundings are
/// part of the result.
Measures measuresOf(const RuleCounts& counts);

}  // namespace oracle
