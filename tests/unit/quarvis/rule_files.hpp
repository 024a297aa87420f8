#pragma once

#include <limits>
#include <sstream>
#include <string>

#include <quarvis/rule_set.hpp>

#include "support/error_output.hpp"

namespace quarvis::test {

inline constexpr double INF = std::numeric_limits<double>::infinity();
inline constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// The first line of every rules file.
inline const std::string RULES_HEADER =
    "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n";

/// The rules file of `rules`. The message on standard error is discarded.
inline std::string written(const rule::RuleSet& rules) {
    const support::ErrorOutput errors;
    std::ostringstream os;
    rules.write(os);
    return os.str();
}

/// Replaces `rules` by the content of the rules file `text`.
inline void readRules(rule::RuleSet& rules, const std::string& text, char delim = '\t') {
    std::istringstream in(text);
    rules.readInto(in, delim);
}

}  // namespace quarvis::test
