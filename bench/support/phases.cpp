#include "phases.hpp"

#include <numeric>
#include <utility>

#include "apriori.hpp"
#include "assembly.hpp"
#include "check.hpp"
#include "child.hpp"
#include "digest.hpp"
#include "memory.hpp"
#include "mine.hpp"
#include "oracle/mine.hpp"
#include "quiet.hpp"
#include "search.hpp"
#include "support/conversion.hpp"

namespace bench {

namespace {

using quarvis::rule::FrequentSets;
using quarvis::rule::HistoryIndex;
using quarvis::rule::ItemSetHistogram;
using quarvis::rule::RuleHistogram;
using quarvis::rule::RuleSet;
using quarvis::rule::TransactionSet;

/// The figures of a rule, which the mining and the oracle name alike.
template <class Figures>
void addFigures(Digest& digest, const Figures& figures) {
    digest.add(std::uint64_t{figures.count});
    digest.add(std::uint64_t{figures.icount});
    for (const double measure : {figures.support, figures.confidence, figures.lift,
                                 figures.conviction, figures.probability, figures.certainty})
        digest.add(measure);
}

std::uint64_t digestOf(const ItemSetHistogram& itemSets, const RuleSet& rules) {
    Digest digest;
    for (const auto& [items, count] : itemSets) {
        digest.add(items.toString());
        digest.add(std::uint64_t{count});
    }
    for (const auto& [rule, stats] : rules) {
        digest.add(rule.toString());
        addFigures(digest, stats);
    }
    return digest.value();
}

std::uint64_t digestOf(const oracle::Outcome& outcome) {
    Digest digest;
    for (const oracle::Outcome::ItemSet& items : outcome.itemSets) {
        digest.add(items.text);
        digest.add(std::uint64_t{items.count});
    }
    for (const oracle::Outcome::Rule& rule : outcome.rules) {
        digest.add(rule.text);
        addFigures(digest, rule);
    }
    return digest.value();
}

/// Whether the search goes on after the level of sets of `size` items, as `apriori` decides it.
bool goesOn(const Configuration& config, std::size_t size, std::size_t sets) {
    if (size == 2 && sets == 0)
        return false;
    return config.maxOrder != 0 ? size <= config.maxOrder : sets > 2;
}

/// The levels and rules, as `apriori` has them.
RuleHistogram search(const Configuration& config, const HistoryIndex& index, FrequentSets& sets,
                     Phases& phases) {
    RuleHistogram counts;
    Stopwatch watch;
    sets.add(oneSets(index), {});
    for (std::size_t size = 2;; ++size) {
        const std::size_t found = aprioriMerge(config, index, sets).size();
        (size == 2 ? phases.pairs : phases.larger) += watch.lap();
        if (size == 2 && found == 0)
            return counts;
        mineRules(config, index, sets, size, counts);
        phases.counting += watch.lap();
        if (!goesOn(config, size, found))
            return counts;
    }
}

void countSets(const FrequentSets& sets, Phases& phases) {
    for (std::size_t size = 1; size <= sets.levels(); ++size) {
        const quarvis::rule::Level& level = sets.level(size);
        phases.itemSets += level.size();
        phases.memberships +=
            std::accumulate(level.count.begin(), level.count.end(), std::size_t{0});
    }
    phases.items = sets.level(1).size();
    phases.pairCount = sets.level(2).size();
}

Phases phasesHere(const Configuration& config, const TransactionSet& txns) {
    const Quiet quiet;
    const MemoryPeak peak;
    Phases phases{};
    std::size_t heap = heapInUse();
    const auto grown = [&heap] {
        const std::size_t before = std::exchange(heap, heapInUse());
        return heap - before;
    };

    Stopwatch watch;
    const HistoryIndex index(txns, config.minCount);
    phases.index = watch.elapsed();
    grown();

    FrequentSets sets;
    const RuleHistogram counts = search(config, index, sets, phases);
    phases.setBytes = grown();
    phases.searchPeak = peak.rise();

    ItemSetHistogram itemSets;
    RuleSet rules;
    watch.lap();
    populateItemSets(itemSets, index, sets);
    populateRuleSet(config, rules, index, sets, counts, txns.size());
    phases.assembly = watch.elapsed();
    phases.resultBytes = grown();
    phases.totalPeak = peak.rise();

    countSets(sets, phases);
    phases.histories = txns.size();
    phases.indexBytes = index.memory();
    phases.ruleCount = rules.size();
    phases.digest = digestOf(itemSets, rules);
    return phases;
}

}  // namespace

Seconds Phases::total() const {
    Seconds sum = index;
    for (const Seconds& phase : {pairs, larger, counting, assembly})
        sum += phase;
    return sum;
}

Phases minedInPhases(const Configuration& config, const TransactionSet& txns) {
    return inChild([&] { return phasesHere(config, txns); });
}

WholeRun mined(const Configuration& config, const TransactionSet& txns) {
    return inChild([&] {
        const Quiet quiet;
        const Stopwatch watch;
        const quarvis::rule::MiningResult result = quarvis::rule::mine(config, txns);
        const Seconds time = watch.elapsed();
        return WholeRun{time, digestOf(result.itemSets(), result.rules())};
    });
}

WholeRun minedPlainly(const Configuration& config, const TransactionSet& txns) {
    return inChild([&] {
        const oracle::Settings settings = support::settingsOf(config);
        const oracle::Table table = support::tableOf(txns);
        const Stopwatch watch;
        const oracle::Outcome outcome = oracle::mine(settings, table);
        const Seconds time = watch.elapsed();
        return WholeRun{time, digestOf(outcome)};
    });
}

PhaseTimes repeatedPhases(std::size_t runs, const Configuration& config,
                          const TransactionSet& txns) {
    PhaseTimes times{};
    const std::uint64_t digest = mined(config, txns).digest;
    for (std::size_t run = 0; run < runs; ++run) {
        times.last = minedInPhases(config, txns);
        check(times.last.digest == digest, "the phases do not give what the mining gives");
        times.index.add(times.last.index.cpu);
        times.pairs.add(times.last.pairs.cpu);
        times.larger.add(times.last.larger.cpu);
        times.counting.add(times.last.counting.cpu);
        times.assembly.add(times.last.assembly.cpu);
        times.total.add(times.last.total());
    }
    return times;
}

}  // namespace bench
