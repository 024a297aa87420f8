#include "standings.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "oracle/draws.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::makeStandings;
using oracle::Table;
using oracle::tableOf;
using oracle::TableShape;

/// " new 0,2" for the moments of a mask; empty if there are none.
std::string momentsOf(const char* kind, const std::uint64_t* mask, std::size_t words) {
    std::ostringstream text;
    const char* separator = " ";
    for (std::size_t moment = 0; mask != nullptr && moment < 64 * words; ++moment)
        if ((mask[moment / 64] >> (moment % 64) & 1) != 0) {
            if (*separator == ' ')
                text << ' ' << kind;
            text << separator << moment;
            separator = ",";
        }
    return text.str();
}

/// The items of a history and their moments: "a recent 0; b new 0".
std::string textOf(const Standings& standings, const HistoryIndex& index, std::size_t history) {
    std::string text;
    // The first entry is where those of the history before end.
    const std::size_t begin = history == 0 ? 0 : standings.endEntry(history - 1);
    for (std::size_t entry = begin; entry < standings.endEntry(history); ++entry) {
        const Standings::Masks masks = standings.masks(history, entry);
        text += text.empty() ? "" : "; ";
        text += index.name(standings.item(entry));
        text += momentsOf("new", masks.fresh, masks.words);
        text += momentsOf("recent", masks.recent(), masks.words);
        text += momentsOf("present", masks.present, masks.words);
    }
    return text;
}

/// All histories, with their weights where these are not 1: "2 x a recent 0; b new 0".
std::vector<std::string> textsOf(const Standings& standings, const HistoryIndex& index) {
    std::vector<std::string> texts;
    for (std::size_t history = 0; history < standings.historyCount(); ++history) {
        const std::uint32_t weight = standings.weight(history);
        texts.push_back((weight == 1 ? "" : std::to_string(weight) + " x ") +
                        textOf(standings, index, history));
    }
    return texts;
}

using Texts = std::vector<std::string>;

Texts standingsOf(const Table& table, std::uint64_t window, const std::string& irrelevant = "") {
    const HistoryIndex index = support::indexOf(table, 1);
    std::vector<bool> relevant;
    for (std::uint32_t item = 0; item < index.itemCount(); ++item)
        relevant.push_back(index.name(Rank{item}) != irrelevant);
    return textsOf(makeStandings(Shard::whole(index), relevant, window), index);
}

TEST(Standings, AnItemIsNewOnceAndRecentFromThenOn) {
    EXPECT_EQ((Texts{"a recent 0,1; b new 0 recent 1; c new 1"}),
              standingsOf(tableOf({"1:a 2:b 7:c"}), 0));
}

TEST(Standings, AnItemIsNewAgainAfterTheWindow) {
    // At 2, b is new and the a of 1 is recent. At 4 nothing is recent. At 5, b is new again, and
    // the a and c of 4 are recent.
    EXPECT_EQ((Texts{"a recent 0,1; b new 0,1; c recent 1"}),
              standingsOf(tableOf({"1:a 2:b 4:a,c 5:b"}), 1));
}

TEST(Standings, TheWindowIncludesItsEnd) {
    const Table table = tableOf({"1:a 4:b"});
    EXPECT_EQ((Texts{}), standingsOf(table, 2));
    EXPECT_EQ((Texts{"a recent 0; b new 0"}), standingsOf(table, 3));
    EXPECT_EQ((Texts{"a recent 0; b new 0"}), standingsOf(table, 4));
}

TEST(Standings, AnItemThatOccursAgainWithinTheWindowStaysRecent) {
    EXPECT_EQ((Texts{"a recent 0 present 0; b new 0"}), standingsOf(tableOf({"1:a 3:a,b"}), 2));
    // The a of 3 is not new, but keeps a recent until 5.
    EXPECT_EQ((Texts{"a recent 0; b new 0"}), standingsOf(tableOf({"1:a 3:a 5:b"}), 2));
    EXPECT_EQ((Texts{"a recent 0,1; b new 0 recent 1; c new 1"}),
              standingsOf(tableOf({"1:a 2:b 3:a 4:c"}), 2));
}

TEST(Standings, AnItemIsPresentWhereItIsRecentAndOccursToo) {
    EXPECT_EQ((Texts{"a recent 0,1 present 1; b new 0 recent 1; c new 1"}),
              standingsOf(tableOf({"1:a 2:b 3:a,c"}), 0));
}

/// Only the second history has an item that is present; the present masks of the first are empty.
TEST(Standings, ItemsOfEarlierHistoriesArePresentNowhere) {
    EXPECT_EQ((Texts{"a recent 0; b new 0", "a recent 0; c new 0", "a recent 0 present 0; b new 0",
                     "b recent 0; c new 0"}),
              standingsOf(tableOf({"1:a 2:b", "1:a 2:c", "1:a 2:a,b", "1:b 2:c"}), 0));
}

TEST(Standings, KnowWhetherAnyItemIsPresent) {
    for (const bool present : {false, true}) {
        const HistoryIndex index =
            support::indexOf(tableOf({"1:a 2:b", present ? "1:a 2:a,b" : "1:a 2:b"}), 1);
        const Standings standings = makeStandings(Shard::whole(index), {true, true}, 0);
        EXPECT_EQ(present, standings.anyPresent());
        EXPECT_EQ(present, standings.masks(0, 0).present != nullptr);
    }
}

TEST(Standings, LeaveOutHistoriesWithoutMoments) {
    EXPECT_EQ((Texts{}), standingsOf(tableOf({"1:a,b", "1:a", "1:a 2:a", "3:"}), 0));
    EXPECT_EQ((Texts{}), standingsOf(tableOf({"1:a 9:b 20:a"}), 5));
    EXPECT_EQ((Texts{}), standingsOf(tableOf({}), 0));
}

TEST(Standings, LeaveOutItemsThatAreNeitherNewNorRecentAtAMoment) {
    // At 1 nothing is recent yet, and at 9 the a of 1 is too old.
    EXPECT_EQ((Texts{"b recent 0; c new 0"}), standingsOf(tableOf({"1:a 9:b 10:c"}), 2));
}

TEST(Standings, LeaveOutItemsThatAreNotRelevant) {
    EXPECT_EQ((Texts{"b recent 0; c new 0"}), standingsOf(tableOf({"1:a 2:b 3:a 4:c"}), 0, "a"));
    EXPECT_EQ((Texts{}), standingsOf(tableOf({"1:a 2:b"}), 0, "a"));
    // The a between does not make the b of 1 recent.
    EXPECT_EQ((Texts{}), standingsOf(tableOf({"1:b 3:a 5:c"}), 2, "a"));
}

TEST(Standings, HistoriesThatAreAlikeAreOneWithAWeight) {
    EXPECT_EQ((Texts{"4 x a recent 0; b new 0", "a new 0; b recent 0"}),
              standingsOf(tableOf({"1:a 2:b", "5:a 9:b", "1:b 2:a", "1:a 2:a 3:b", "1:a 2:b"}), 0));
}

/// Their masks agree in what is new and recent, but not in what is present.
TEST(Standings, HistoriesThatDifferInWhatIsPresentAreNotAlike) {
    EXPECT_EQ((Texts{"2 x a recent 0; b new 0", "2 x a recent 0 present 0; b new 0"}),
              standingsOf(tableOf({"1:a 2:b", "1:a 2:a,b", "1:a 2:b", "7:a 8:a,b"}), 0));
}

TEST(Standings, ListThePlacesOfEachItem) {
    const HistoryIndex index =
        support::indexOf(tableOf({"1:a 2:b", "1:b,c 2:a", "1:a,b", "1:c 3:b"}), 1);
    const Standings standings = makeStandings(Shard::whole(index), {true, true, true}, 0);
    ASSERT_EQ(3U, standings.itemCount());
    ASSERT_EQ(3U, standings.historyCount());
    const std::vector<std::vector<std::uint32_t>> histories = {{0, 1}, {0, 1, 2}, {1, 2}};
    for (std::uint32_t item = 0; item < 3; ++item) {
        std::vector<std::uint32_t> found;
        for (const Standings::Place& place : standings.places(Rank{item})) {
            EXPECT_EQ(Rank{item}, standings.item(place.entry));
            found.push_back(place.history);
        }
        EXPECT_EQ(histories[item], found);
    }
}

TEST(Standings, OfAShardHaveItsHistoriesAlone) {
    const HistoryIndex index =
        support::indexOf(tableOf({"1:a 2:b", "1:b 2:a", "1:a 2:c", "1:c 2:a"}), 1);
    const Standings standings = makeStandings(Shard{&index, 1, 3}, {true, true, true}, 0);
    EXPECT_EQ((Texts{"a new 0; b recent 0", "a recent 0; c new 0"}), textsOf(standings, index));
}

/// Each of 70 items occurs at one time, and each time but the first is a moment.
TEST(Standings, AHistoryMayHaveMoreThan64Moments) {
    Table table;
    table.histories.resize(1);
    for (std::size_t item = 0; item < 70; ++item)
        table.histories[0][item] = {"i" + std::to_string(100 + item)};
    const HistoryIndex index = support::indexOf(table, 1);
    const Standings standings = makeStandings(Shard::whole(index), std::vector<bool>(70, true), 0);
    ASSERT_EQ(1U, standings.historyCount());
    for (std::size_t item = 0; item < 70; ++item) {
        const Standings::Masks masks = standings.masks(0, item);
        ASSERT_EQ(2U, masks.words);
        for (std::size_t moment = 0; moment < 128; ++moment) {
            const auto has = [moment](const std::uint64_t* mask) {
                return (mask[moment / 64] >> (moment % 64) & 1) != 0;
            };
            ASSERT_EQ(item == moment + 1, has(masks.fresh)) << item << " at " << moment;
            ASSERT_EQ(moment < 69 && item <= moment, has(masks.recent()))
                << item << " at " << moment;
        }
    }
}

/// The standing of each item at each transaction, by the definitions.
class NaiveStandings {
  public:
    NaiveStandings(const oracle::History& history, std::uint64_t window)
        : m_history(history), m_window(window) {}

    std::string text() const {
        std::map<std::string, std::string> kinds[3];
        std::size_t moments = 0;
        for (const auto& [time, items] : m_history) {
            if (!m_isMoment(time))
                continue;
            for (const std::string& item : m_allItems()) {
                const bool occurs = m_history.at(time).contains(item);
                const bool standing[] = {occurs && !m_isRecent(item, time), m_isRecent(item, time),
                                         occurs && m_isRecent(item, time)};
                for (std::size_t kind = 0; kind < 3; ++kind)
                    if (standing[kind]) {
                        std::string& list = kinds[kind][item];
                        list += (list.empty() ? "" : ",") + std::to_string(moments);
                    }
            }
            ++moments;
        }
        std::string text;
        for (const std::string& item : m_allItems()) {
            if (!kinds[0].contains(item) && !kinds[1].contains(item))
                continue;
            text += (text.empty() ? "" : "; ") + item;
            const char* const names[] = {" new ", " recent ", " present "};
            for (std::size_t kind = 0; kind < 3; ++kind)
                if (kinds[kind].contains(item))
                    text += names[kind] + kinds[kind][item];
        }
        return text;
    }

  private:
    oracle::Items m_allItems() const {
        oracle::Items all;
        for (const auto& [time, items] : m_history)
            all.insert(items.begin(), items.end());
        return all;
    }

    bool m_isRecent(const std::string& item, oracle::Time time) const {
        for (const auto& [before, items] : m_history)
            if (before < time && items.contains(item) &&
                (m_window == 0 || time - before <= m_window))
                return true;
        return false;
    }

    bool m_isMoment(oracle::Time time) const {
        bool anyNew = false;
        for (const std::string& item : m_history.at(time))
            anyNew = anyNew || !m_isRecent(item, time);
        bool anyRecent = false;
        for (const std::string& item : m_allItems())
            anyRecent = anyRecent || m_isRecent(item, time);
        return anyNew && anyRecent;
    }

    const oracle::History& m_history;
    std::uint64_t m_window;
};

/// The number of histories with each text. Where merging has stopped, several kept histories have
/// one text.
std::map<std::string, std::uint32_t> weightsOf(const Standings& standings,
                                               const HistoryIndex& index) {
    std::map<std::string, std::uint32_t> weights;
    for (std::size_t history = 0; history < standings.historyCount(); ++history)
        weights[textOf(standings, index, history)] += standings.weight(history);
    return weights;
}

/// Checks that the places of an item are its entries, by ascending history.
void expectPlaces(const Standings& standings) {
    std::vector<std::vector<std::size_t>> expected(standings.itemCount());
    std::size_t entry = 0;
    for (std::size_t history = 0; history < standings.historyCount(); ++history)
        for (; entry < standings.endEntry(history); ++entry)
            expected[at(standings.item(entry))].push_back(entry);
    for (std::uint32_t item = 0; item < standings.itemCount(); ++item) {
        std::vector<std::size_t> entries;
        for (const Standings::Place& place : standings.places(Rank{item})) {
            entries.push_back(place.entry);
            ASSERT_LT(place.entry, standings.endEntry(place.history));
            ASSERT_TRUE(place.history == 0 || place.entry >= standings.endEntry(place.history - 1));
        }
        ASSERT_EQ(expected[item], entries);
    }
}

/// Checks that the order of an item is the only moment at which it is new, counted from 1.
void expectOrders(const Standings& standings) {
    std::size_t entry = 0;
    for (std::size_t history = 0; history < standings.historyCount(); ++history)
        for (; entry < standings.endEntry(history); ++entry) {
            const Standings::Masks masks = standings.masks(history, entry);
            if (masks.words > Standings::ORDERED_WORDS)
                continue;
            std::size_t order = 0;
            for (std::size_t moment = 0; moment < 64 * masks.words; ++moment)
                if ((masks.fresh[moment / 64] >> (moment % 64) & 1) != 0)
                    order = moment + 1;
            ASSERT_EQ(order, standings.order(entry));
        }
}

void expectNaive(const Table& table, std::uint64_t window, std::uint64_t seed) {
    std::map<std::string, std::uint32_t> expected;
    for (const oracle::History& history : table.histories)
        if (const std::string text = NaiveStandings(history, window).text(); !text.empty())
            ++expected[text];
    const HistoryIndex index = support::indexOf(table, 1);
    for (const unsigned threads : {1U, 2U, 7U}) {
        const Standings standings = makeStandings(
            Shard::whole(index), std::vector<bool>(index.itemCount(), true), window, threads);
        ASSERT_EQ(expected, weightsOf(standings, index))
            << "seed " << seed << ", window " << window << ", " << threads << " threads";
        expectPlaces(standings);
        if (window == 0)
            expectOrders(standings);
    }
}

TEST(Standings, OfRandomTablesAreThoseOfTheDefinition) {
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 220U : 2200U); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        expectNaive(drawn.table, drawn.settings.windowSize, seed);
    }
}

TEST(Standings, OfLongHistoriesAreThoseOfTheDefinition) {
    const TableShape shape{"", {"a", "b", "c"}, 2, 300, 1, 1200};
    for (std::uint64_t seed = 0; seed < 8; ++seed)
        expectNaive(oracle::randomTable(shape, seed), 1 + seed, seed);
}

/// An item that keeps occurring stays recent at the moments of 70 others.
TEST(Standings, OfAnItemThatOccursAgainInALongHistoryAreThoseOfTheDefinition) {
    Table table;
    table.histories.resize(1);
    for (std::size_t item = 0; item < 70; ++item) {
        table.histories[0][2 * item] = {"again"};
        table.histories[0][2 * item + 1] = {"i" + std::to_string(100 + item)};
    }
    for (const std::uint64_t window : {0U, 1U, 2U, 3U, 50U})
        expectNaive(table, window, 0);
}

/// The items of a history are sorted in one way if they are few and in another if they are many.
TEST(Standings, OfHistoriesOfAnyNumberOfItemsAreThoseOfTheDefinition) {
    for (std::size_t items = 2; items < 70; ++items) {
        Table table;
        table.histories.resize(1);
        for (std::size_t item = 0; item < items; ++item)
            table.histories[0][items - item / 2].insert("i" + std::to_string(100 + item));
        expectNaive(table, 0, items);
    }
}

/// There are more than the 2,048 histories after which merging may stop.
TEST(Standings, OfManyHistoriesThatDifferAreThoseOfTheDefinition) {
    Table table;
    for (std::uint32_t i = 0; i < 50; ++i)
        for (std::uint32_t j = 0; j < 50; ++j)
            if (i != j)
                table.histories.push_back(
                    {{1, {"i" + std::to_string(i)}}, {2, {"i" + std::to_string(j)}}});
    table.histories.push_back(table.histories[0]);
    table.histories.push_back(table.histories[2300]);
    expectNaive(table, 0, 0);
}

/// There are so many kinds of histories that the hash table grows, and each kind occurs several
/// times.
TEST(Standings, OfManyAlikeHistoriesAreThoseOfTheDefinition) {
    Table table;
    for (std::uint32_t round = 0; round < 3; ++round)
        for (std::uint32_t i = 0; i < 40; ++i)
            for (std::uint32_t j = 0; j < 40; ++j)
                if (i != j)
                    table.histories.push_back({{round, {"i" + std::to_string(i)}},
                                               {round + 7, {"i" + std::to_string(j)}}});
    expectNaive(table, 0, 0);
    const HistoryIndex index = support::indexOf(table, 1);
    for (const unsigned threads : {1U, 2U, 3U})
        EXPECT_EQ(40U * 39,
                  makeStandings(Shard::whole(index), std::vector<bool>(40, true), 0, threads)
                      .historyCount());
}

}  // namespace
}  // namespace quarvis::mining
