#include "derived_rules.hpp"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "set_counts.hpp"

namespace binding {

using quarvis::mining::at;
using quarvis::mining::Budget;
using quarvis::mining::BudgetExceeded;
using quarvis::mining::HistoryIndex;
using quarvis::mining::ItemSetCursor;
using quarvis::mining::ItemSets;
using quarvis::mining::Rank;
using quarvis::mining::Rule;
using quarvis::mining::Splits;

namespace {

std::uint32_t countOf(const ItemSets& sets, const std::vector<Rank>& items) {
    return sets.level(items.size()).count[sets.find(items)];
}

/// Whether the set bits are contiguous.
bool isRun(std::uint64_t bits) {
    const std::uint64_t lowest = bits & -bits;
    return ((bits + lowest) & bits) == 0;
}

}  // namespace

Found withBasketRules(const Found& found, std::size_t histories, Splits splits,
                      const RuleBounds& bounds, Watch& watch) {
    const ItemSets& sets = *found.itemSets;
    const std::size_t mostBytes = watch.budget().bytes;
    watch.beginStep("rules");
    const auto derive = [&] {
        Found derived{found.index, found.itemSets, {}, {}, {}, {}};
        std::vector<Rank> antecedent;
        std::vector<Rank> subsequent;
        for (ItemSetCursor cursor(sets); cursor.next();) {
            const std::span<const Rank> items = cursor.items();
            watch.endIfAsked();
            // The bits are enough: a set with more items has too many subsets to fit in memory.
            const std::uint64_t all = (std::uint64_t{1} << items.size()) - 1;
            for (std::uint64_t split = 1; split < all; ++split) {
                if (splits == Splits::RUNS && !isRun(split))
                    continue;
                antecedent.clear();
                subsequent.clear();
                for (std::size_t i = 0; i < items.size(); ++i)
                    (split >> i & 1 ? antecedent : subsequent).push_back(items[i]);
                Rule rule{};
                rule.antecedent = antecedent;
                rule.subsequent = subsequent;
                rule.count = rule.unionCount = cursor.count();
                rule.antecedentCount = countOf(sets, antecedent);
                rule.subsequentCount = countOf(sets, subsequent);
                derived.rules.add(rule, histories, bounds);
            }
            if (mostBytes != 0 &&
                sets.size() * Budget::SET_BYTES + derived.rules.size() * Budget::RULE_BYTES >
                    mostBytes)
                throw exceeded(BudgetExceeded::Limit::BYTES, sets);
        }
        derived.rules.sort();
        return derived;
    };
    return watch.runInTime(derive, sets);
}

namespace {

/// For each rank of `from`, the rank in `to`, which has the same items and possibly more.
std::vector<Rank> ranksIn(const HistoryIndex& from, const HistoryIndex& to) {
    std::vector<Rank> ranks;
    std::uint32_t other = 0;
    for (std::uint32_t rank = 0; rank < from.itemCount(); ++rank) {
        while (other < to.itemCount() && to.name(Rank{other}) != from.name(Rank{rank}))
            ++other;
        if (other == to.itemCount())
            throw std::invalid_argument("an item that is not in all histories");
        ranks.push_back(Rank{other});
    }
    return ranks;
}

/// Counts sides in all histories, each side once.
class SideCounts {
  public:
    SideCounts(const HistoryIndex& some, const HistoryIndex& all)
        : m_ranks(ranksIn(some, all)), m_counts(all) {}

    std::uint32_t count(std::span<const Rank> side) {
        m_side.assign(side.begin(), side.end());
        const auto [known, isNew] = m_known.try_emplace(m_side, 0);
        if (isNew) {
            for (Rank& item : m_side)
                item = m_ranks[at(item)];
            known->second = m_counts.count(m_side);
        }
        return known->second;
    }

  private:
    std::vector<Rank> m_ranks;
    SetCounts m_counts;
    std::vector<Rank> m_side;
    std::map<std::vector<Rank>, std::uint32_t> m_known;
};

/// The rules and sets whose items match the sides. `countsOf(rule, place)` sets the counts of the
/// rule's sides.
template <class CountsOf>
Found selectedBySides(const Found& found, std::span<const std::uint8_t> left,
                      std::span<const std::uint8_t> right, std::size_t histories,
                      const RuleBounds& bounds, Watch& watch, CountsOf countsOf) {
    Found derived{found.index,
                  found.itemSets,
                  {},
                  {},
                  {left.begin(), left.end()},
                  {right.begin(), right.end()}};
    const auto isLeft = [left](Rank item) { return left[at(item)] != 0; };
    const auto isRight = [right](Rank item) { return right[at(item)] != 0; };
    for (std::size_t place = 0; place < found.rules.size(); ++place) {
        watch.endIfAsked();
        Rule rule = found.rules[place];
        if (!derived.allows(rule))
            continue;
        countsOf(rule, place);
        derived.rules.add(rule, histories, bounds);
    }
    for (ItemSetCursor cursor(*found.itemSets); cursor.next();) {
        watch.endIfAsked();
        const std::span<const Rank> items = cursor.items();
        const bool both = items.size() > 1 && std::any_of(items.begin(), items.end(), isLeft) &&
                          std::any_of(items.begin(), items.end(), isRight);
        derived.listed.push_back(both ? 1 : 0);
    }
    return derived;
}

void checkMasks(const Found& found, const Column<std::uint8_t>& left,
                const Column<std::uint8_t>& right) {
    if (left.size() != found.index->itemCount() || right.size() != found.index->itemCount())
        throw std::invalid_argument("a mask of another length");
}

}  // namespace

Found withSides(const Found& found, const IndexPointer& all, const Column<std::uint8_t>& left,
                const Column<std::uint8_t>& right, const RuleBounds& bounds, Watch& watch) {
    checkMasks(found, left, right);
    Found derived;
    const auto derive = [&] {
        SideCounts counts(*found.index, *all);
        derived = selectedBySides(found, valuesOf(left), valuesOf(right), all->historyCount(),
                                  bounds, watch, [&counts](Rule& rule, std::size_t) {
                                      rule.antecedentCount = counts.count(rule.antecedent);
                                      rule.subsequentCount = counts.count(rule.subsequent);
                                  });
    };
    watch.runInTime(derive, *found.itemSets);
    return derived;
}

Found withCountedSides(const Found& found, const Column<std::uint8_t>& left,
                       const Column<std::uint8_t>& right,
                       const Column<std::uint32_t>& antecedentCounts,
                       const Column<std::uint32_t>& subsequentCounts, std::size_t histories,
                       const RuleBounds& bounds, Watch& watch) {
    checkMasks(found, left, right);
    if (antecedentCounts.size() != found.rules.size() ||
        subsequentCounts.size() != found.rules.size())
        throw std::invalid_argument("columns of different lengths");
    Found derived;
    const auto derive = [&] {
        derived = selectedBySides(found, valuesOf(left), valuesOf(right), histories, bounds, watch,
                                  [&](Rule& rule, std::size_t place) {
                                      rule.antecedentCount = antecedentCounts.data()[place];
                                      rule.subsequentCount = subsequentCounts.data()[place];
                                  });
    };
    watch.runInTime(derive, *found.itemSets);
    return derived;
}

}  // namespace binding
