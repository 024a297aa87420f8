#include "cli/support/expected_run.hpp"

#include <sstream>

namespace tool {

namespace {

std::string lines(const std::string& header, const std::vector<std::string>& rows) {
    std::string text = header + "\n";
    for (const std::string& row : rows)
        text += row + "\n";
    return text;
}

/// The number of rules proposed from a set of `size` items: one for each contiguous run of its
/// items, except the whole set.
std::size_t proposals(std::size_t size) {
    return size * (size + 1) / 2 - 1;
}

void writeLevel(std::ostream& os, std::size_t size, std::size_t sets) {
    os << "\t ... calculated " << sets << " frequent item sets of size " << size << " with "
       << sets * proposals(size) << " proposed rules.\n";
}

void writeSearch(std::ostream& os, const std::vector<std::size_t>& levels, unsigned maxOrder) {
    os << "\t ... calculated " << levels.at(0) << " frequent item sets of size 1. \n";
    writeLevel(os, 2, levels.at(1));
    if (levels.at(1) == 0) {
        os << "\t ... no rules of order 1 found.\n";
        return;
    }
    os << "\t ... deducing rules of order 1.\n";
    if (maxOrder == 0)
        os << "\t ... mining rules until there are no more frequent item sets.\n";
    else if (maxOrder > 1)
        os << "\t ... rules up to order " << maxOrder << " will be mined.\n";
    for (std::size_t size = 3; size <= levels.size(); ++size) {
        writeLevel(os, size, levels[size - 1]);
        os << "\t ... deducing rules of order " << size - 1 << ".\n";
    }
}

std::string braced(const std::vector<std::string>& items) {
    std::string text = "{";
    for (std::size_t i = 0; i < items.size(); ++i)
        text += (i == 0 ? "" : ",") + items[i];
    return text + "}";
}

}  // namespace

std::string usage(const std::string& name) {
    return "usage: " + name +
           " [input] [output] [item-sets]\n"
           "\n"
           "OPTIONS:\n"
           "  -?, --help\t\tDisplay this message.\n"
           "  -c, --count=i\t\tSet the minimum count necessary for inclusion (default: 5).\n"
           "  -C, --confidence=f\tSet the minimum confidence necessary for inclusion (default: "
           "0).\n"
           "  -l, --lift=f\t\tSet the minimum lift necessary for inclusion (default: 0).\n"
           "  -o, --order=i\t\tSet the maximum rule order to mine (default: 0).\n"
           "  -s, --support=f\tSet the minimum support necessary for inclusion (default: 0).\n"
           "  -V, --conviction=f\tSet the maximum conviction neccessary for inclusion (default: "
           "infinity).\n"
           "  -v, --verbose\t\tPrint additional information.\n"
           "  -w, --window\t\tSet the size of the window (default: 0)\n"
           "\n";
}

Outcome rejected(const std::string& messages, const std::string& out) {
    return {.out = out, .err = messages + usage(), .status = 1};
}

std::string rulesFile(const std::vector<std::string>& rows) {
    return lines(
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty",
        rows);
}

std::string itemSetFile(const std::vector<std::string>& rows) {
    return lines("Count\tItem Set", rows);
}

std::string progress(const Progress& run) {
    std::ostringstream os;
    os << "Read " << run.input << " with " << run.transactions << " transaction(s) over "
       << run.histories << " history record(s).\n";
    writeSearch(os, run.levels, run.maxOrder);
    os << "\t ... preparing rules for reporting.\n\t ... have " << run.rules << " rules.\n"
       << run.rules << "\n"
       << run.itemSets << "\n";
    return os.str();
}

void expectReading(const std::string& input, std::size_t transactions, std::size_t histories,
                   const std::vector<FrequentSet>& sets, const char* file, int line) {
    std::vector<std::size_t> levels{0, 0};
    std::vector<std::string> rows;
    for (const FrequentSet& set : sets) {
        ++levels.at(set.items.size() - 1);
        rows.push_back(std::to_string(set.count) + "\t" + braced(set.items));
    }
    // No support is greater than 1, so the minimum of 2 drops every rule.
    expectRun({.args = {"-c1", "-o1", "-s2", "-", "-", "sets"}, .input = input},
              {.out = rulesFile({}),
               .err = progress({.transactions = transactions,
                                .histories = histories,
                                .levels = levels,
                                .maxOrder = 1,
                                .itemSets = "sets"}),
               .files = {{"sets", itemSetFile(rows)}}},
              file, line);
}

}  // namespace tool
