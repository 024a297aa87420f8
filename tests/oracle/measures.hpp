#pragma once

#include <cstddef>

namespace oracle {

/// The numbers of histories that a rule counts in, that hold its items, and of all histories.
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

/// The measures of a rule. Quotients are taken of supports, not of counts, because the result
/// includes their rounding.
Measures measuresOf(const RuleCounts& counts);

}  // namespace oracle
