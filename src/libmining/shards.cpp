#include <quarvis/mining/shards.hpp>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "candidates.hpp"
#include "check_options.hpp"
#include "exceeded.hpp"
#include "forecast.hpp"
#include "item_set_walk.hpp"
#include "relevant_items.hpp"
#include "rule_selection.hpp"
#include "rule_walk.hpp"
#include "steps.hpp"
#include "tasks.hpp"

namespace quarvis::mining {

namespace {

/// What is made of a shard to count rules on it.
struct RuleParts {
    RuleParts(const HistoryIndex& index, const ItemSets& sets, const std::vector<bool>& relevant,
              std::uint64_t window, Step& step)
        : standings(Shard::whole(index), relevant, window, 1, step),
          tallies(standings, sets, 1, step) {}

    Standings standings;
    PairTallies tallies;
};

/// A run over shards: makes candidates, counts them on every shard, sums the counts and prunes.
class ShardedRun {
  public:
    ShardedRun(std::span<const HistoryIndex> shards, const MiningOptions& options,
               Observer& observer)
        : m_shards(shards),
          m_options(options),
          m_observer(observer),
          m_meter(options.budget),
          m_step(observer, m_meter),
          m_maxSize(options.maxSize == 0 ? std::numeric_limits<std::size_t>::max()
                                         : options.maxSize),
          m_order(shards.front(), options.minCount) {}

    ItemSets findItemSets() {
        try {
            return m_findItemSets();
        } catch (const OverBudget& over) {
            throw exceeded(over, m_order, {&m_found});
        }
    }

    Rules findRules(const ItemSets& sets) {
        try {
            return m_findRules(sets);
        } catch (const OverBudget& over) {
            throw exceeded(over.limit(), sets);
        }
    }

  private:
    ItemSets m_findItemSets() {
        m_meter.found(1, m_order.size());
        m_observer.levelFound(1, m_order.size());
        FoundSets& found = m_found;
        found.link(m_order.size());
        std::vector<std::unique_ptr<Baskets>> baskets(m_shards.size());
        m_onEach([&](std::size_t shard, Work&) {
            baskets[shard] =
                std::make_unique<Baskets>(Shard::whole(m_shards[shard]), m_order, 1, m_step);
            m_meter.took(baskets[shard]->bytes());
        });
        for (bool any = m_maxSize > 1; any;) {
            Candidates candidates(found, m_order.size(), m_options.minCount);
            const std::size_t size = candidates.size();
            m_observer.levelForecast(size, forecast(found, m_order.size(), m_step));
            while (candidates.next())
                m_meter.found(size, candidates.prune(m_countOnShards(baskets, found, candidates)));
            any = candidates.finish();
            m_observer.levelFound(size, found.count(size));
            any = any && size < m_maxSize;
        }
        for (const std::unique_ptr<Baskets>& of : baskets)
            m_meter.gaveBack(of->bytes());
        return std::move(found).ordered(m_order, m_options.threads, m_step);
    }

    Rules m_findRules(const ItemSets& sets) {
        std::size_t histories = 0;
        for (const HistoryIndex& shard : m_shards)
            histories += shard.historyCount();
        const std::vector<CountedRule> counted = m_countedRules(sets);
        m_observer.rulesCounted(counted.size());
        return selectRules(counted, sets, m_options.thresholds, histories, m_options.threads,
                           m_step);
    }

    /// Calls `onShard(shard, work)` for each shard, in the threads of the run.
    template <class OnShard>
    void m_onEach(OnShard onShard) {
        const auto makeWorker = [&](unsigned) {
            return [&, work = std::make_unique<Work>(m_step)](std::size_t shard) {
                onShard(shard, *work);
            };
        };
        workOn(m_shards.size(), m_options.threads, m_step, makeWorker,
               [this](std::size_t done) { m_observer.progressed(done, m_shards.size()); });
    }

    std::vector<std::uint32_t> m_countOnShards(const std::vector<std::unique_ptr<Baskets>>& baskets,
                                               const FoundSets& found, const Candidates& block) {
        const ItemSetWalk::Scope scope{&found, block.size() - 1, block.size()};
        std::vector<std::vector<std::uint32_t>> counts(m_shards.size());
        m_onEach([&](std::size_t shard, Work& work) {
            ItemSetWalk walk(*baskets[shard], 0, scope, work);
            counts[shard].reserve(block.count());
            for (std::size_t item = block.begin(); item < block.end(); ++item)
                walk.count(WalkItem{static_cast<std::uint32_t>(item)}, counts[shard]);
        });
        std::vector<std::uint32_t> sum = std::move(counts.front());
        for (std::size_t shard = 1; shard < counts.size(); ++shard)
            std::transform(sum.begin(), sum.end(), counts[shard].begin(), sum.begin(),
                           std::plus<>());
        return sum;
    }

    std::vector<CountedRule> m_countedRules(const ItemSets& sets) {
        std::vector<CountedRule> rules;
        if (sets.levels() < 2)
            return rules;
        const std::uint32_t least = std::max<std::uint32_t>(m_options.minCount, 1);
        std::vector<std::unique_ptr<RuleParts>> parts(m_shards.size());
        const std::vector<bool> relevant = relevantItems(sets, m_shards.front().itemCount());
        m_onEach([&](std::size_t shard, Work&) {
            parts[shard] = std::make_unique<RuleParts>(m_shards[shard], sets, relevant,
                                                       m_options.window, m_step);
            m_meter.took(parts[shard]->standings.bytes());
        });
        std::vector<SplitSet> live;
        for (std::uint32_t size = 2; size <= sets.levels(); ++size) {
            const std::size_t before = live.size();
            std::vector<SplitSet> alive;
            for (const ShardLedger::Entry& entry : m_tallyOnShards(parts, sets, size, live)) {
                if (entry.tally.met >= least)
                    alive.push_back(entry.rule);
                if (entry.tally.counted >= least)
                    rules.push_back({entry.rule, entry.tally.counted});
            }
            live.insert(live.end(), alive.begin(), alive.end());
            if (live.size() == before)
                break;
        }
        return rules;
    }

    /// The tallies of the rules of one size, summed over the shards, in ascending order.
    std::vector<ShardLedger::Entry> m_tallyOnShards(
        const std::vector<std::unique_ptr<RuleParts>>& parts, const ItemSets& sets,
        std::uint32_t size, const std::vector<SplitSet>& live) {
        std::vector<std::vector<ShardLedger::Entry>> tallies(m_shards.size());
        m_onEach([&](std::size_t shard, Work& work) {
            ShardLedger ledger(size, live);
            RuleWalk walk(parts[shard]->standings, parts[shard]->tallies, sets, size,
                          m_options.splits, m_options.window == 0, ledger, work);
            for (std::size_t first = 0; first < sets.level(1).size(); ++first)
                walk.walk(first);
            tallies[shard] = std::move(ledger.tallies);
        });
        std::vector<ShardLedger::Entry> all = std::move(tallies.front());
        for (std::size_t shard = 1; shard < tallies.size(); ++shard)
            all.insert(all.end(), tallies[shard].begin(), tallies[shard].end());
        std::sort(all.begin(), all.end(),
                  [](const auto& a, const auto& b) { return a.rule < b.rule; });
        std::vector<ShardLedger::Entry> sums;
        for (const ShardLedger::Entry& entry : all) {
            if (sums.empty() || sums.back().rule != entry.rule)
                sums.push_back({entry.rule, {}});
            sums.back().tally.met += entry.tally.met;
            sums.back().tally.counted += entry.tally.counted;
        }
        return sums;
    }

    std::span<const HistoryIndex> m_shards;
    const MiningOptions& m_options;
    Observer& m_observer;
    Meter m_meter;
    Step m_step;
    std::size_t m_maxSize;
    WalkOrder m_order;
    FoundSets m_found;
};

void check(std::span<const HistoryIndex> shards, const MiningOptions& options) {
    if (shards.empty())
        throw std::invalid_argument("a run needs one shard at least");
    const HistoryIndex& first = shards.front();
    for (const HistoryIndex& shard : shards) {
        bool same = shard.itemCount() == first.itemCount() && shard.minCount() == first.minCount();
        for (std::uint32_t item = 0; same && item < first.itemCount(); ++item)
            same = shard.count(Rank{item}) == first.count(Rank{item}) &&
                   shard.name(Rank{item}) == first.name(Rank{item});
        if (!same)
            throw std::invalid_argument("shards of different items");
    }
    checkOptions(first, options);
}

}  // namespace

Result mineShards(std::span<const HistoryIndex> shards, const MiningOptions& options,
                  Observer& observer) {
    check(shards, options);
    if (shards.size() == 1)
        return mine(shards.front(), options, observer);
    ShardedRun run(shards, options, observer);
    Result result;
    result.itemSets = run.findItemSets();
    result.rules = run.findRules(result.itemSets);
    return result;
}

}  // namespace quarvis::mining
