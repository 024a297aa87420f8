#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "check_options.hpp"
#include "exceeded.hpp"
#include "relevant_items.hpp"
#include "rule_selection.hpp"
#include "rule_walk.hpp"
#include "steps.hpp"
#include "tasks.hpp"

/// \file
/// Finds the rules of a whole index. Histories become masks (`Standings`), and pairs are counted
/// first (`PairTallies`). Then each thread takes one first item at a time and counts the rules of
/// its sets (`RuleWalk`). Rules that reach the least count are measured, filtered and sorted.
namespace quarvis::mining {

namespace {

/// The number of sets that begin with an item and have others.
std::size_t setsBelow(const ItemSets& sets, std::size_t first) {
    std::size_t begin = first;
    std::size_t end = first + 1;
    std::size_t sum = 0;
    for (std::size_t size = 1; size < sets.levels() && begin < end; ++size) {
        begin = sets.level(size).extensions[begin];
        end = sets.level(size).extensions[end];
        sum += end - begin;
    }
    return sum;
}

/// The sets of the first level, the most expensive ones first, so that no thread begins one of
/// these when the others are nearly done.
std::vector<std::size_t> longestFirst(const Standings& standings, const ItemSets& sets) {
    const Level& items = sets.level(1);
    std::vector<std::size_t> costs(items.size());
    for (std::size_t first = 0; first < items.size(); ++first)
        costs[first] = standings.places(items.last[first]).size() * setsBelow(sets, first);
    std::vector<std::size_t> order(items.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return costs[a] > costs[b]; });
    return order;
}

/// Counts the rules in the threads of the run.
std::vector<CountedRule> countRules(const HistoryIndex& index, const ItemSets& sets,
                                    const MiningOptions& options, Observer& observer, Step& step) {
    std::vector<CountedRule> counted;
    if (sets.levels() < 2)
        return counted;
    const Standings standings(Shard::whole(index), relevantItems(sets, index.itemCount()),
                              options.window, options.threads, step);
    step.meter().took(standings.bytes());
    const std::uint32_t least = std::max<std::uint32_t>(options.minCount, 1);
    const PairTallies tallies(standings, sets, options.threads, step);
    const std::vector<std::size_t> order = longestFirst(standings, sets);
    std::vector<std::unique_ptr<WholeLedger>> ledgers(options.threads);
    const auto makeWorker = [&](unsigned thread) {
        ledgers[thread] = std::make_unique<WholeLedger>(least);
        auto work = std::make_unique<Work>(step);
        auto walk = std::make_unique<RuleWalk>(
            standings, tallies, sets, std::numeric_limits<std::size_t>::max(), options.splits,
            options.window == 0, *ledgers[thread], *work);
        return [&order, work = std::move(work), walk = std::move(walk)](std::size_t task) {
            walk->walk(order[task]);
        };
    };
    workOn(order.size(), options.threads, step, makeWorker,
           [&](std::size_t done) { observer.progressed(done, order.size()); });
    for (const std::unique_ptr<WholeLedger>& ledger : ledgers)
        if (ledger)
            counted.insert(counted.end(), ledger->rules.begin(), ledger->rules.end());
    return counted;
}

}  // namespace

Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer, Meter& meter) {
    checkOptions(index, options);
    Step step(observer, meter);
    try {
        const std::vector<CountedRule> counted = countRules(index, sets, options, observer, step);
        observer.rulesCounted(counted.size());
        return selectRules(counted, sets, options.thresholds, index.historyCount(), options.threads,
                           step);
    } catch (const OverBudget& over) {
        throw exceeded(over.limit(), sets);
    }
}

Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer) {
    Meter meter(options.budget);
    return findRules(index, sets, options, observer, meter);
}

}  // namespace quarvis::mining
