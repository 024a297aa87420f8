#include "result_digest.hpp"

#include <cstddef>
#include <sstream>

#include "result_files.hpp"
#include "support/digest.hpp"

namespace bench {

using quarvis::mining::HistoryIndex;
using quarvis::mining::ItemSets;
using quarvis::mining::Rules;
using quarvis::rule::MiningResult;

namespace {

Digest digestOfFiles(const ResultFiles& files) {
    Digest digest;
    digest.add(files.rules);
    digest.add(files.itemSets);
    return digest;
}

/// The measures of a rule, which the engine, the rule model and the oracle name alike.
template <class Rule>
void addMeasures(Digest& digest, const Rule& rule) {
    for (const double measure : {rule.support, rule.confidence, rule.lift, rule.conviction,
                                 rule.probability, rule.certainty})
        digest.add(measure);
}

template <class Write>
std::string written(Write write) {
    std::ostringstream out;
    write(out);
    return std::move(out).str();
}

}  // namespace

std::uint64_t digestOf(const ResultFiles& files, const Rules& rules) {
    Digest digest = digestOfFiles(files);
    for (std::size_t place = 0; place < rules.size(); ++place)
        addMeasures(digest, rules[place]);
    return digest.value();
}

std::uint64_t digestOf(const HistoryIndex& index, const ItemSets& sets, const Rules& rules) {
    return digestOf(
        {written([&](std::ostream& out) { result_files::writeRules(out, index, rules); }),
         written([&](std::ostream& out) { result_files::writeItemSets(out, index, sets); })},
        rules);
}

std::uint64_t digestOf(const MiningResult& result) {
    Digest digest =
        digestOfFiles({written([&](std::ostream& out) { result.rules().write(out); }),
                       written([&](std::ostream& out) { result.itemSets().write(out); })});
    for (const auto& [rule, stats] : result.rules())
        addMeasures(digest, stats);
    return digest.value();
}

std::uint64_t digestOf(const oracle::Outcome& outcome) {
    Digest digest = digestOfFiles({outcome.rulesFile(), outcome.itemSetFile()});
    for (const oracle::Outcome::Rule& rule : outcome.rules)
        addMeasures(digest, rule);
    return digest.value();
}

}  // namespace bench
