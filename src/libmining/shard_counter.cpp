#include <quarvis/mining/shard_counter.hpp>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include "baskets.hpp"
#include "index_parts.hpp"
#include "item_set_walk.hpp"
#include "level_state.hpp"
#include "meter.hpp"
#include "pair_tallies.hpp"
#include "relevant_items.hpp"
#include "rule_walk.hpp"
#include "run_control.hpp"
#include "shard.hpp"
#include "standings.hpp"

/// \file
/// The side of a run over shards that counts. The walks are those of `mineShards`; each call does
/// the work of one shard.
namespace quarvis::mining {

class ShardParts {
  public:
    ShardParts(const HistoryIndex& index, LevelState& of, const Observer& observer)
        : shard(index), state(of), step(observer, meter), work(step) {}

    const HistoryIndex& shard;
    LevelState& state;
    Meter meter{Budget()};
    Step step;
    Work work;
    std::optional<Baskets> baskets;
    std::optional<Standings> standings;
    std::optional<PairTallies> pairs;
};

ShardCounter::ShardCounter(const HistoryIndex& shard, const LevelRun& run, const Observer& observer)
    : m_parts(std::make_unique<ShardParts>(shard, *run.m_state, observer)) {
    if (shard.itemCount() != run.m_state->counts.size())
        throw std::invalid_argument("a shard of other items");
}

ShardCounter::~ShardCounter() = default;

void ShardCounter::countCandidates(const LevelBlock& block, std::span<std::uint32_t> sums) {
    const FoundSets& found = m_parts->state.found;
    if (block.begin > block.end || block.end > m_parts->state.order.size() ||
        sums.size() != block.count)
        throw std::invalid_argument("a block that is not there");
    if (!m_parts->baskets)
        m_parts->baskets.emplace(Shard::whole(m_parts->shard), m_parts->state.order, 1,
                                 m_parts->step);
    const ItemSetWalk::Scope scope{&found, found.maxSize(), found.maxSize() + 1};
    ItemSetWalk walk(*m_parts->baskets, 0, scope, m_parts->work);
    std::vector<std::uint32_t> counts;
    std::size_t place = 0;
    for (std::uint32_t item = block.begin; item < block.end; ++item) {
        counts.clear();
        walk.count(WalkItem{item}, counts);
        if (counts.size() > sums.size() - place)
            throw std::invalid_argument("a block of other candidates");
        for (const std::uint32_t count : counts)
            sums[place++] += count;
    }
    if (place != sums.size())
        throw std::invalid_argument("a block of other candidates");
}

std::vector<RuleTally> ShardCounter::tallyRules(const LevelBlock& block) {
    LevelState& state = m_parts->state;
    const ItemSets& sets = state.itemSets();
    const std::uint32_t size = state.tallied + 1;
    if (size > sets.levels() || block.begin > block.end || block.end > sets.level(1).size())
        throw std::invalid_argument("a block that is not there");
    if (!m_parts->standings) {
        m_parts->standings.emplace(Shard::whole(m_parts->shard),
                                   relevantItems(sets, m_parts->shard.itemCount()),
                                   state.options.window, 1, m_parts->step);
        m_parts->pairs.emplace(*m_parts->standings, sets, 1, m_parts->step);
    }
    ShardLedger ledger(size, state.live);
    RuleWalk walk(*m_parts->standings, *m_parts->pairs, sets, size, state.options.splits,
                  state.options.window == 0, ledger, m_parts->work);
    for (std::size_t first = block.begin; first < block.end; ++first)
        walk.walk(first);
    std::vector<RuleTally> tallies;
    tallies.reserve(ledger.tallies.size());
    for (const ShardLedger::Entry& entry : ledger.tallies)
        tallies.push_back({entry.rule.split, entry.rule.set, entry.tally.met, entry.tally.counted});
    std::sort(tallies.begin(), tallies.end(), precedes);
    return tallies;
}

HistoryIndex withoutRareItems(const HistoryIndex& shard, const LevelRun& run) {
    const WalkOrder& order = run.m_state->order;
    if (shard.itemCount() != order.ranks())
        throw std::invalid_argument("a shard of other items");
    HistoryIndex made = shard;
    IndexParts index(made);
    index.historyBegin.assign(1, 0);
    index.times32.clear();
    index.times64.clear();
    index.itemBegin.assign(1, 0);
    index.items.clear();
    std::uint32_t transactions = 0;
    for (std::uint32_t history = 0; history < shard.historyCount(); ++history) {
        const std::size_t end = shard.endTransaction(HistoryId{history});
        for (std::size_t place = shard.firstTransaction(HistoryId{history}); place < end; ++place) {
            const std::size_t before = index.items.size();
            for (const Rank item : shard.items(place))
                if (order.item(item) != WalkOrder::NOT_WALKED)
                    index.items.push_back(item);
            if (index.items.size() == before)
                continue;
            if (index.timeWidth == TimeWidth::BITS_32)
                index.times32.push_back(static_cast<std::uint32_t>(shard.time(place)));
            else
                index.times64.push_back(shard.time(place));
            index.itemBegin.push_back(static_cast<std::uint32_t>(index.items.size()));
            ++transactions;
        }
        index.historyBegin.push_back(transactions);
    }
    index.transactionCount = transactions;
    return made;
}

}  // namespace quarvis::mining
