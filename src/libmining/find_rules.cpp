#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "check_options.hpp"
#include "exceeded.hpp"
#include "relevant_items.hpp"
#include "rule_selection.hpp"
#include "rule_walk.hpp"
#include "steps.hpp"
#include "tasks.hpp"

namespace quarvis::mining {

namespace {

/// Counts the rules, in the threads of the run.
std::vector<CountedRule> countRules(const HistoryIndex& index, const ItemSets& sets,
                                    const MiningOptions& options, Observer& observer, Step& step) {
    std::vector<CountedRule> counted;
    if (sets.levels() < 2)
        return counted;
    Work ownWork(step);
    const Standings standings(Shard::whole(index), relevantItems(sets, index.itemCount()),
                              options.window, &ownWork);
    step.meter().took(standings.bytes());
    const std::uint32_t least = std::max<std::uint32_t>(options.minCount, 1);
    const PairTallies tallies(standings, sets, options.threads, step);
    std::vector<std::unique_ptr<WholeLedger>> ledgers(options.threads);
    const auto makeWorker = [&](unsigned thread) {
        ledgers[thread] = std::make_unique<WholeLedger>(least);
        auto work = std::make_unique<Work>(step);
        auto walk = std::make_unique<RuleWalk>(
            standings, tallies, sets, std::numeric_limits<std::size_t>::max(), options.splits,
            options.window == 0, *ledgers[thread], *work);
        return [work = std::move(work), walk = std::move(walk)](std::size_t task) {
            walk->walk(task);
        };
    };
    const std::size_t tasks = sets.level(1).size();
    workOn(tasks, options.threads, step, makeWorker,
           [&](std::size_t done) { observer.progressed(done, tasks); });
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
        throw exceeded(over, sets);
    }
}

Rules findRules(const HistoryIndex& index, const ItemSets& sets, const MiningOptions& options,
                Observer& observer) {
    Meter meter(options.budget);
    return findRules(index, sets, options, observer, meter);
}

}  // namespace quarvis::mining
