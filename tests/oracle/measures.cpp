#include "oracle/measures.hpp"

#include <limits>

namespace oracle {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

double share(std::size_t count, std::size_t all) {
    return static_cast<double>(count) / static_cast<double>(all);
}

double quotient(double dividend, double divisor, double ofZeroDivisor) {
    return divisor == 0 ? ofZeroDivisor : dividend / divisor;
}

}  // namespace

Measures measuresOf(const RuleCounts& counts) {
    const double both = share(counts.both, counts.all);
    const double antecedent = share(counts.antecedent, counts.all);
    const double subsequent = share(counts.subsequent, counts.all);
    const double confidence = quotient(both, antecedent, 0);
    return {.support = share(counts.rule, counts.all),
            .confidence = confidence,
            .lift = quotient(both, antecedent * subsequent, 0),
            .conviction = quotient(1 - subsequent, 1 - confidence, INFINITE),
            .probability = quotient(both, subsequent, 0),
            .certainty = quotient(both, subsequent - both, INFINITE)};
}

}  // namespace oracle
