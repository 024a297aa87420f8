#include <quarvis/mining/level_run.hpp>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include <quarvis/mining/observer.hpp>

#include "candidates.hpp"
#include "level_state.hpp"
#include "meter.hpp"
#include "rule_selection.hpp"
#include "run_control.hpp"
#include "splits.hpp"

/// \file
/// The side of a run over shards that decides. `Candidates` makes and prunes the candidates, as in
/// `mineShards`. Rules that are met in enough histories are kept as sets and splits. Only the sums
/// of counts come from outside.
namespace quarvis::mining {

namespace {

/// Calls `visit` for each block that has candidates.
template <class Visit>
void forEachBlock(FoundSets& found, std::size_t items, std::uint32_t minCount, std::uint64_t most,
                  Visit visit) {
    Candidates candidates(found, items, minCount,
                          static_cast<std::size_t>(std::max<std::uint64_t>(most, 1)));
    while (candidates.next())
        if (candidates.count() > 0)
            visit(candidates);
}

LevelBlock blockOf(const Candidates& candidates) {
    return {static_cast<std::uint32_t>(candidates.begin()),
            static_cast<std::uint32_t>(candidates.end()), candidates.count()};
}

/// The counts of all candidates of a block; 0 for those that are not frequent.
std::vector<std::uint32_t> countsOf(const FrequentCandidates& frequent, std::size_t candidates) {
    if (frequent.places.size() != frequent.counts.size())
        throw std::invalid_argument("columns of different lengths");
    std::vector<std::uint32_t> counts(candidates);
    for (std::size_t i = 0; i < frequent.places.size(); ++i) {
        const std::uint32_t place = frequent.places[i];
        if (place >= candidates || (i > 0 && place <= frequent.places[i - 1]))
            throw std::invalid_argument("places of candidates in disorder");
        counts[place] = frequent.counts[i];
    }
    return counts;
}

}  // namespace

bool precedes(const RuleTally& a, const RuleTally& b) {
    return a.set != b.set ? a.set < b.set : a.split < b.split;
}

void addTallies(std::vector<RuleTally>& sum, std::span<const RuleTally> tallies) {
    if (tallies.empty())
        return;
    std::vector<RuleTally> merged;
    merged.reserve(sum.size() + tallies.size());
    auto own = sum.begin();
    for (const RuleTally& tally : tallies) {
        while (own != sum.end() && precedes(*own, tally))
            merged.push_back(*own++);
        merged.push_back(tally);
        if (own != sum.end() && !precedes(tally, *own)) {
            merged.back().met += own->met;
            merged.back().counted += own->counted;
            ++own;
        }
    }
    merged.insert(merged.end(), own, sum.end());
    sum = std::move(merged);
}

const ItemSets& LevelState::itemSets() {
    if (!m_ordered) {
        const Observer observer;
        Meter meter{Budget()};
        Step step(observer, meter);
        FoundSets copy = found;
        m_ordered = std::move(copy).ordered(order, 1, step);
    }
    return *m_ordered;
}

std::vector<std::uint64_t> setsByFirst(const ItemSets& sets, std::size_t size) {
    const std::size_t items = sets.level(1).size();
    std::vector<std::uint64_t> numbers(items);
    for (std::size_t first = 0; first < items; ++first) {
        std::size_t begin = first;
        std::size_t end = first + 1;
        for (std::size_t below = 1; below < size; ++below) {
            begin = sets.level(below).extensions[begin];
            end = sets.level(below).extensions[end];
        }
        numbers[first] = end - begin;
    }
    return numbers;
}

LevelRun::LevelRun(std::vector<std::uint32_t> counts, const MiningOptions& options)
    : m_state(std::make_unique<LevelState>(std::move(counts), options)) {}
LevelRun::LevelRun(std::unique_ptr<LevelState> state) : m_state(std::move(state)) {}
LevelRun::LevelRun(LevelRun&&) noexcept = default;
LevelRun& LevelRun::operator=(LevelRun&&) noexcept = default;
LevelRun::~LevelRun() = default;

const MiningOptions& LevelRun::options() const {
    return m_state->options;
}

std::size_t LevelRun::size() const {
    return m_state->found.maxSize();
}

std::size_t LevelRun::setCount(std::size_t size) const {
    return size == 1 ? m_state->order.size() : m_state->found.count(size);
}

bool LevelRun::hasCandidates() const {
    LevelState& state = *m_state;
    const std::uint32_t most = state.options.maxSize;
    if (state.searched || (most != 0 && size() >= most))
        return false;
    Candidates candidates(state.found, state.order.size(), state.options.minCount, 1);
    while (candidates.next())
        if (candidates.count() > 0)
            return true;
    return false;
}

std::vector<LevelBlock> LevelRun::candidates(std::uint64_t most) const {
    std::vector<LevelBlock> blocks;
    forEachBlock(m_state->found, m_state->order.size(), m_state->options.minCount, most,
                 [&blocks](const Candidates& block) { blocks.push_back(blockOf(block)); });
    return blocks;
}

void LevelRun::addLevel(std::uint64_t most, std::span<const FrequentCandidates> blocks) {
    LevelState& state = *m_state;
    Candidates candidates(state.found, state.order.size(), state.options.minCount,
                          static_cast<std::size_t>(std::max<std::uint64_t>(most, 1)));
    std::size_t block = 0;
    while (candidates.next()) {
        if (candidates.count() == 0)
            continue;
        if (block == blocks.size())
            throw std::invalid_argument("blocks of candidates that are missing");
        candidates.prune(countsOf(blocks[block++], candidates.count()));
    }
    if (block != blocks.size())
        throw std::invalid_argument("more blocks than there are candidates");
    state.searched = !candidates.finish();
    state.changed();
}

std::size_t LevelRun::ruleSize() const {
    return !m_state->ruled && m_state->tallied < size() ? m_state->tallied + 1 : 0;
}

std::vector<LevelBlock> LevelRun::rules(std::uint64_t most) const {
    std::vector<LevelBlock> blocks;
    const std::size_t size = ruleSize();
    if (size == 0)
        return blocks;
    const std::uint64_t splits = m_state->options.splits == Splits::ALL
                                     ? (std::uint64_t{1} << std::min<std::size_t>(size, 32)) - 2
                                     : size * (size + 1) / 2 - 1;
    const std::vector<std::uint64_t> sets = setsByFirst(itemSets(), size);
    LevelBlock block{0, 0, 0};
    for (std::uint32_t first = 0; first < sets.size(); ++first) {
        block.end = first + 1;
        block.count += sets[first] * splits;
        if (block.count >= most || (block.count > 0 && block.end == sets.size())) {
            blocks.push_back(block);
            block = {block.end, block.end, 0};
        }
    }
    if (block.count > 0)
        blocks.push_back(block);
    return blocks;
}

void LevelRun::addRules(std::span<const RuleTally> tallies) {
    LevelState& state = *m_state;
    const auto size = static_cast<std::uint32_t>(ruleSize());
    if (size == 0)
        throw std::invalid_argument("no rules are waited for");
    const std::uint32_t least = std::max<std::uint32_t>(state.options.minCount, 1);
    const std::size_t before = state.live.size();
    for (std::size_t i = 0; i < tallies.size(); ++i) {
        const RuleTally& tally = tallies[i];
        if (tally.set >= setCount(size) || tally.split == 0 || tally.split >= allOf(size) ||
            (i > 0 && !precedes(tallies[i - 1], tally)))
            throw std::invalid_argument("rules in disorder");
        const SplitSet rule{size, tally.set, tally.split};
        if (tally.met >= least)
            state.live.push_back(rule);
        if (tally.counted >= least)
            state.rules.push_back({rule, tally.counted});
    }
    state.ruled = state.live.size() == before;
    state.tallied = size;
}

std::size_t LevelRun::ruleCount() const {
    return m_state->rules.size();
}

const ItemSets& LevelRun::itemSets() const {
    return m_state->itemSets();
}

void LevelRun::sides(std::size_t size, const RuleTally& rule, std::vector<Rank>& antecedent,
                     std::vector<Rank>& subsequent) const {
    if (size < 2 || size > this->size() || rule.set >= setCount(size) || rule.split == 0 ||
        rule.split >= allOf(size))
        throw std::invalid_argument("a rule that is not there");
    std::vector<Rank> items(size);
    itemSets().items(size, rule.set, items.data());
    antecedent.clear();
    subsequent.clear();
    for (std::size_t i = 0; i < size; ++i)
        (rule.split >> i & 1 ? subsequent : antecedent).push_back(items[i]);
}

LevelRun LevelRun::withoutRules() const {
    auto state = std::make_unique<LevelState>(m_state->counts, m_state->options);
    state->found = m_state->found;
    state->searched = m_state->searched;
    return LevelRun(std::move(state));
}

Result LevelRun::result(std::size_t histories, std::size_t first, std::size_t most) const {
    const Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    const std::vector<CountedRule>& rules = m_state->rules;
    const std::size_t begin = std::min(first, rules.size());
    const std::size_t end = begin + std::min(most, rules.size() - begin);
    const std::vector<CountedRule> some(rules.begin() + static_cast<std::ptrdiff_t>(begin),
                                        rules.begin() + static_cast<std::ptrdiff_t>(end));
    Result result;
    result.itemSets = itemSets();
    result.rules =
        selectRules(some, result.itemSets, m_state->options.thresholds, histories, 1, step);
    return result;
}

std::size_t LevelRun::memory() const {
    std::size_t sets = 0;
    for (const std::size_t number : m_state->found.sizes())
        sets += number;
    return sizeof(std::uint32_t) * m_state->counts.size() +
           (sizeof(std::uint32_t) * 4 + sizeof(WalkItem)) * sets +
           sizeof(SplitSet) * m_state->live.size() + sizeof(CountedRule) * m_state->rules.size();
}

}  // namespace quarvis::mining
