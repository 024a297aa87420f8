#include "rule_walk.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>

#include "free_step.hpp"
#include "naive_sets.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"
#include "support/sanitized.hpp"
#include "table_series.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::makeStandings;
using mining_tests::Series;
using mining_tests::Set;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;

/// The two sides of a rule.
using Sides = std::pair<Set, Set>;

/// By rule: in how many histories it is met, and in how many it counts.
using Tallies = std::map<Sides, std::pair<std::uint32_t, std::uint32_t>>;

/// Follows every rule that is met, and records all tallies.
class Recorder : public RuleLedger {
  public:
    explicit Recorder(std::uint32_t least) : m_least(least) {}

    std::uint32_t least() const override { return m_least; }
    bool follows(const SplitSet&, std::uint32_t met) override { return met >= m_least; }
    bool isCounted(const SplitSet&, std::uint32_t met) override { return met >= m_least; }
    void count(const SplitSet& rule, Tally tally) override {
        EXPECT_TRUE(tallies.emplace(rule, tally).second) << "counted twice";
    }

    std::map<SplitSet, Tally> tallies;

  private:
    std::uint32_t m_least;
};

struct Run {
    std::uint64_t window = 0;
    Splits splits = Splits::ALL;
    std::uint32_t least = 1;
    std::size_t maxSize = 64;
};

ItemSets setsOf(const HistoryIndex& index, std::uint32_t minCount) {
    MiningOptions options;
    options.minCount = minCount;
    Observer observer;
    return findItemSets(index, options, observer);
}

Tallies walked(const HistoryIndex& index, const Run& run) {
    const ItemSets sets = setsOf(index, run.least);
    const Standings standings =
        makeStandings(Shard::whole(index), std::vector<bool>(index.itemCount(), true), run.window);
    Recorder recorder(run.least);
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    const PairTallies pairs(standings, sets, 1, step);
    RuleWalk walk(standings, pairs, sets, run.maxSize, run.splits, run.window == 0, recorder, work);
    for (std::size_t first = 0; first < sets.count(1); ++first)
        walk.walk(first);
    Tallies tallies;
    for (const auto& [rule, tally] : recorder.tallies) {
        Set items(rule.size);
        sets.items(rule.size, rule.set, items.data());
        Sides sides;
        for (std::size_t i = 0; i < items.size(); ++i)
            ((rule.split >> i & 1) != 0 ? sides.second : sides.first).push_back(items[i]);
        tallies[sides] = {tally.met, tally.counted};
    }
    return tallies;
}

/// The rules of one history, by the definition.
class NaiveHistory {
  public:
    NaiveHistory(const HistoryIndex& index, HistoryId history, std::uint64_t window)
        : m_index(index),
          m_first(index.firstTransaction(history)),
          m_end(index.endTransaction(history)),
          m_window(window) {}

    /// Whether the rule is met, and whether it counts.
    std::pair<bool, bool> outcome(const Sides& rule) const {
        std::pair<bool, bool> outcome;
        for (std::size_t place = m_first; place < m_end; ++place) {
            const bool met =
                std::ranges::all_of(
                    rule.second,
                    [&](Rank item) { return m_occurs(place, item) && !m_isRecent(place, item); }) &&
                std::ranges::all_of(rule.first, [&](Rank item) { return m_isRecent(place, item); });
            outcome.first = outcome.first || met;
            outcome.second =
                outcome.second || (met && !std::ranges::all_of(rule.first, [&](Rank item) {
                                       return m_occurs(place, item);
                                   }));
        }
        return outcome;
    }

  private:
    bool m_occurs(std::size_t place, Rank item) const {
        return std::ranges::count(m_index.items(place), item) > 0;
    }
    bool m_isRecent(std::size_t place, Rank item) const {
        for (std::size_t before = m_first; before < place; ++before)
            if (m_occurs(before, item) &&
                (m_window == 0 || m_index.time(place) - m_index.time(before) <= m_window))
                return true;
        return false;
    }

    const HistoryIndex& m_index;
    std::size_t m_first;
    std::size_t m_end;
    std::uint64_t m_window;
};

/// The rules of the frequent sets that are met in at least `least` histories.
Tallies naive(const HistoryIndex& index, const Run& run) {
    Tallies tallies;
    for (const auto& [set, holders] :
         mining_tests::naiveSets(index, run.least, std::min<std::size_t>(run.maxSize, 12))) {
        for (SplitMask split = 1; set.size() > 1 && split < allOf(set.size()); ++split) {
            if (!isProposed(split, set.size(), run.splits))
                continue;
            Sides sides;
            for (std::size_t i = 0; i < set.size(); ++i)
                ((split >> i & 1) != 0 ? sides.second : sides.first).push_back(set[i]);
            std::pair<std::uint32_t, std::uint32_t> tally;
            for (std::uint32_t history = 0; history < index.historyCount(); ++history) {
                const auto [met, counted] =
                    NaiveHistory(index, HistoryId{history}, run.window).outcome(sides);
                tally.first += met ? 1 : 0;
                tally.second += counted ? 1 : 0;
            }
            if (tally.first >= std::max<std::uint32_t>(run.least, 1))
                tallies[sides] = tally;
        }
    }
    return tallies;
}

/// "a>b 2/1" for a rule a => b that is met in two histories and counts in one.
std::string textOf(const HistoryIndex& index, const Tallies& tallies) {
    std::string text;
    for (const auto& [sides, tally] : tallies) {
        text += text.empty() ? "" : ", ";
        for (const Rank item : sides.first)
            text += index.name(item);
        text += '>';
        for (const Rank item : sides.second)
            text += index.name(item);
        text += ' ' + std::to_string(tally.first) + '/' + std::to_string(tally.second);
    }
    return text;
}

std::string walkedText(std::initializer_list<const char*> histories, const Run& run) {
    const HistoryIndex index = support::indexOf(tableOf(histories), 1);
    return textOf(index, walked(index, run));
}

TEST(RuleWalk, MeetsRulesWhereTheSubsequentIsNewAndTheAntecedentRecent) {
    EXPECT_EQ("a>b 2/2, b>a 1/1", walkedText({"1:a 2:b", "1:b 2:a", "1:a 2:a 3:b", "1:a,b"}, {}));
}

TEST(RuleWalk, MeetsRulesOfThreeItemsWithEverySplit) {
    EXPECT_EQ("a>b 1/1, a>bc 1/1, a>c 1/1", walkedText({"1:a 2:b,c"}, {}));
    EXPECT_EQ("a>c 1/1, ab>c 1/1, b>c 1/1", walkedText({"1:a,b 2:c"}, {}));
    EXPECT_EQ("a>b 1/1, a>c 1/1, ac>b 1/1, c>b 1/1", walkedText({"1:a 2:c 3:b"}, {}));
    EXPECT_EQ("b>a 1/1, b>ac 1/1, b>c 1/1", walkedText({"1:b 2:a,c"}, {}));
}

TEST(RuleWalk, LeavesOutAntecedentsWithGapsWhereRunsAreAskedFor) {
    EXPECT_EQ("a>b 1/1, a>c 1/1, c>b 1/1", walkedText({"1:a 2:c 3:b"}, {.splits = Splits::RUNS}));
}

TEST(RuleWalk, DoesNotCountWhereAllOfTheAntecedentIsPresent) {
    EXPECT_EQ("a>b 2/1", walkedText({"1:a 2:a,b", "1:a 2:b"}, {}));
    EXPECT_EQ("a>c 1/0, ab>c 1/1, b>c 1/1", walkedText({"1:a,b 2:a,c"}, {}));
    EXPECT_EQ("a>c 1/0, ab>c 1/0, b>c 1/0", walkedText({"1:a,b 2:a,b,c"}, {}));
}

/// The antecedent is present at 2, but at 9 the subsequent is new again.
TEST(RuleWalk, CountsAHistoryThatMeetsARuleAgainWithoutTheAntecedent) {
    EXPECT_EQ("a>b 1/1", walkedText({"1:a 2:a,b 8:a 9:b"}, {.window = 2}));
}

TEST(RuleWalk, CountsAHistoryThatMeetsARuleOftenOnce) {
    EXPECT_EQ("a>b 1/1", walkedText({"1:a 2:b 10:a 11:b 20:a 21:b"}, {.window = 3}));
}

/// Two equal histories that meet a => b at 140 moments each, which take three words.
TEST(RuleWalk, CountsALongHistoryThatMeetsARuleOftenOnce) {
    Table table;
    table.histories.resize(2);
    for (oracle::History& history : table.histories)
        for (oracle::Time round = 0; round < 140; ++round) {
            history[10 * round] = {"a"};
            history[10 * round + 1] = {"b"};
        }
    const HistoryIndex index = support::indexOf(table, 1);
    EXPECT_EQ("a>b 2/2", textOf(index, walked(index, {.window = 3})));
}

TEST(RuleWalk, CountsHistoriesThatAreAlikeByTheirWeight) {
    EXPECT_EQ("a>b 5/5, b>a 3/3", walkedText({"1:a 2:b", "1:b 2:a", "3:a 4:b", "1:a 9:b", "5:b 6:a",
                                              "1:a 2:b", "7:b 9:a", "8:a 9:b"},
                                             {}));
}

TEST(RuleWalk, EndsAtTheGreatestSize) {
    EXPECT_EQ("a>c 1/1, b>c 1/1", walkedText({"1:a,b 2:c"}, {.maxSize = 2}));
    EXPECT_EQ("", walkedText({"1:a,b 2:c"}, {.maxSize = 1}));
}

TEST(RuleWalk, DropsRulesThatAreMetTooSeldom) {
    EXPECT_EQ("a>b 2/2, a>c 3/3, ab>c 2/2, b>c 2/2",
              walkedText({"1:a 2:b 3:c", "1:a 2:b,c", "1:a,b 2:c"}, {.least = 2}));
}

/// Whether the walk tallies what the definition says.
void expectNaive(const Table& table, const Run& run, std::uint64_t seed, std::size_t& rules) {
    const HistoryIndex index = support::indexOf(table, std::min<std::uint32_t>(run.least, 1));
    const Tallies expected = naive(index, run);
    rules += expected.size();
    ASSERT_EQ(textOf(index, expected), textOf(index, walked(index, run)))
        << "seed " << seed << ", window " << run.window << ", least " << run.least;
}

class RuleWalkOf : public testing::TestWithParam<Series> {};

TEST_P(RuleWalkOf, TalliesRulesAsTheDefinitionDoes) {
    const TableShape& shape = GetParam().shape;
    const std::size_t tables = ADDRESS_SANITIZED ? (GetParam().tables + 9) / 10 : GetParam().tables;
    std::size_t rules = 0;
    for (std::uint64_t seed = 0; seed < tables; ++seed) {
        const Table table = oracle::randomTable(shape, seed);
        for (const std::uint64_t window : {std::uint64_t{0}, 1 + seed % 3, shape.lastTime / 4 + 1})
            expectNaive(
                table,
                {.window = window,
                 .splits = seed % 4 == 3 ? Splits::RUNS : Splits::ALL,
                 .least = std::max(shape.leastMinCount, 1 + static_cast<std::uint32_t>(seed % 3)),
                 .maxSize = seed % 5 == 4 ? 3U : 64U},
                seed, rules);
    }
    EXPECT_GT(rules, tables);
}

std::vector<Series> series() {
    const std::vector<std::string> five = {"a", "b", "c", "d", "e"};
    const std::vector<std::string> three = {"a", "b", "c"};
    std::vector<std::string> hundred;
    for (std::size_t i = 100; i < 200; ++i)
        hundred.push_back("i" + std::to_string(i));
    // Histories, transactions, items of a transaction, last time, least count.
    return {
        {{"Small", five, 5, 5, 3, 8}, 150},
        {{"AlikeHistories", three, 200, 3, 2, 3}, 40},
        {{"PresentAntecedents", five, 12, 6, 6, 8}, 40},
        {{"MoreThan64Moments", three, 2, 250, 1, 900}, 30},
        {{"MetInSeveralWords", three, 3, 600, 1, 400}, 10},
        {{"LongAndShort", five, 12, 100, 1, 300, 2}, 10},
        {{"HundredItems", hundred, 300, 3, 5, 9, 2}, 6},
    };
}

INSTANTIATE_TEST_SUITE_P(Shapes, RuleWalkOf, testing::ValuesIn(series()),
                         [](const testing::TestParamInfo<Series>& one) {
                             return one.param.shape.name;
                         });

}  // namespace
}  // namespace quarvis::mining
