#include "oracle/outcome.hpp"

#include <array>
#include <cstdio>
#include <limits>
#include <sstream>

namespace oracle {

namespace {

/// Six significant digits, without trailing zeros.
std::string rounded(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value);
    return text.data();
}

}  // namespace

std::vector<std::string> Outcome::ruleTexts() const {
    std::vector<std::string> texts;
    texts.reserve(rules.size());
    for (const Rule& rule : rules)
        texts.push_back(rule.text);
    return texts;
}

std::string Outcome::rulesFile() const {
    std::string file =
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n";
    for (const Rule& rule : rules) {
        file += rule.text + '\t' + std::to_string(rule.count) + '\t' + std::to_string(rule.icount);
        for (const double measure : {rule.support, rule.confidence, rule.lift, rule.conviction,
                                     rule.probability, rule.certainty})
            file += '\t' + rounded(measure);
        file += '\n';
    }
    return file;
}

std::string Outcome::itemSetFile() const {
    std::string file = "Count\tItem Set\n";
    for (const ItemSet& items : itemSets)
        file += std::to_string(items.count) + '\t' + items.text + '\n';
    return file;
}

std::ostream& operator<<(std::ostream& os, const Outcome::Rule& rule) {
    std::ostringstream line;
    line.precision(std::numeric_limits<double>::max_digits10);
    line << rule.text << " | " << rule.count << " | " << rule.icount << " | " << rule.support
         << " | " << rule.confidence << " | " << rule.lift << " | " << rule.conviction << " | "
         << rule.probability << " | " << rule.certainty;
    return os << line.str();
}

std::ostream& operator<<(std::ostream& os, const Outcome::ItemSet& items) {
    return os << items.text << " | " << items.count;
}

std::ostream& operator<<(std::ostream& os, const Outcome& outcome) {
    for (const Outcome::ItemSet& items : outcome.itemSets)
        os << items << '\n';
    for (const Outcome::Rule& rule : outcome.rules)
        os << rule << '\n';
    return os << outcome.messages;
}

}  // namespace oracle
