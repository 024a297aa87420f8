#include <quarvis/mining/occurrences.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "indexed_tables.hpp"
#include "oracle/brute_force.hpp"
#include "oracle/draws.hpp"
#include "oracle/numbered.hpp"
#include "oracle/occurrences.hpp"
#include "oracle/random_table.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::indexed;
using oracle::Reason;
using oracle::Table;
using oracle::tableOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t LARGEST_NUMBER = std::numeric_limits<std::uint64_t>::max();

Reason reasonOf(Miss miss) {
    switch (miss) {
        case Miss::SUBSEQUENT_APART:
            return Reason::SUBSEQUENT_APART;
        case Miss::OTHER_ORDER:
            return Reason::OTHER_ORDER;
        case Miss::SAME_TIME:
            return Reason::SAME_TIME;
        case Miss::TOO_LATE:
            return Reason::TOO_LATE;
        case Miss::NOT_NEW:
            return Reason::NOT_NEW;
        case Miss::ANTECEDENT_PRESENT:
            return Reason::ANTECEDENT_PRESENT;
    }
    throw std::logic_error("a miss that is none");
}

std::vector<oracle::Occurrence> listed(const Occurrences& occurrences) {
    std::vector<oracle::Occurrence> all;
    for (std::size_t i = 0; i < occurrences.size(); ++i) {
        const Occurrence occurrence = occurrences[i];
        if (occurrence.counts)
            all.push_back({at(occurrence.history), oracle::Counted{occurrence.time,
                                                                   {occurrence.lastTimes.begin(),
                                                                    occurrence.lastTimes.end()}}});
        else
            all.push_back({at(occurrence.history), reasonOf(occurrence.miss)});
    }
    return all;
}

std::vector<std::string> texts(const std::vector<oracle::Occurrence>& occurrences) {
    std::vector<std::string> all;
    for (const oracle::Occurrence& occurrence : occurrences) {
        std::ostringstream text;
        text << occurrence;
        all.push_back(text.str());
    }
    return all;
}

/// The ranks of the items of "b,a", in this order.
std::vector<Rank> ranksOf(const HistoryIndex& index, const std::string& names) {
    std::vector<Rank> ranks;
    std::istringstream list(names);
    for (std::string name; std::getline(list, name, ',');)
        for (std::uint32_t item = 0; item < index.itemCount(); ++item)
            if (index.name(Rank{item}) == name)
                ranks.push_back(Rank{item});
    return ranks;
}

Occurrences occurrences(const char* antecedent, const char* subsequent, const Table& table,
                        std::uint64_t window = 0) {
    const HistoryIndex index = indexed(table);
    return findOccurrences(index, ranksOf(index, antecedent), ranksOf(index, subsequent), window);
}

struct Searched {
    const char* history;
    const char* antecedent;
    const char* subsequent;
    std::uint64_t window;
    const char* outcome;
};

void expectOutcomes(const std::vector<Searched>& rows) {
    for (const Searched& row : rows)
        EXPECT_THAT(texts(listed(occurrences(row.antecedent, row.subsequent, tableOf({row.history}),
                                             row.window))),
                    ElementsAre(std::string("0 ") + row.outcome))
            << row.antecedent << " => " << row.subsequent << " in " << row.history << ", window "
            << row.window;
}

TEST(Occurrences, OneCountsFromItsFirstTransactionOn) {
    expectOutcomes({
        {"1:a 2:b", "a", "b", 0, "at 2 after 1"},
        {"1:a 2:b 3:a 9:b", "a", "b", 0, "at 2 after 1"},
        {"1:a 3:b 7:b", "a", "b", 2, "at 3 after 1"},
        {"1:b 6:a 7:b 9:a 20:b", "a", "b", 5, "at 7 after 6"},
    });
}

TEST(Occurrences, TheLastTimesAreThoseBeforeTheTransaction) {
    expectOutcomes({
        {"1:a 2:a 3:c 4:b 5:a", "a,c", "b", 0, "at 4 after 2,3"},
        {"1:a 2:a,c 4:a,b", "a,c", "b", 0, "at 4 after 2,2"},
    });
}

TEST(Occurrences, TheLastTimesStandAsTheAntecedentWasGiven) {
    expectOutcomes({
        {"1:a 2:c 3:d 4:b", "a,c,d", "b", 0, "at 4 after 1,2,3"},
        {"1:a 2:c 3:d 4:b", "d,a,c", "b", 0, "at 4 after 3,1,2"},
    });
}

TEST(Occurrences, EachMissHasItsTransactions) {
    expectOutcomes({
        {"1:a 2:b 3:c", "a", "b,c", 0, "SUBSEQUENT_APART"},
        {"1:b 2:a", "a", "b", 0, "OTHER_ORDER"},
        {"1:a 2:b 3:c", "a,c", "b", 0, "OTHER_ORDER"},
        {"1:a,b", "a", "b", 0, "SAME_TIME"},
        {"1:a 2:b,c", "a,c", "b", 0, "SAME_TIME"},
        {"1:a 4:b", "a", "b", 2, "TOO_LATE"},
        {"1:a 3:c 4:b", "a,c", "b", 2, "TOO_LATE"},
        {"1:b 2:a 3:b", "a", "b", 0, "NOT_NEW"},
        {"1:b 2:a 3:b,c", "a", "b,c", 0, "NOT_NEW"},
        {"1:a 2:a,b", "a", "b", 0, "ANTECEDENT_PRESENT"},
        {"1:a 2:c 3:a,b,c", "a,c", "b", 0, "ANTECEDENT_PRESENT"},
    });
}

TEST(Occurrences, TheMissIsThatOfTheTransactionThatGetsFurthest) {
    expectOutcomes({
        {"1:b 2:a,b", "a", "b", 0, "SAME_TIME"},
        {"1:b 2:a 3:b 9:b", "a", "b", 2, "NOT_NEW"},
        {"1:a,b 9:b", "a", "b", 5, "TOO_LATE"},
        {"1:a 2:a,b 3:b", "a", "b", 0, "ANTECEDENT_PRESENT"},
        {"1:a 2:a,b 3:a 4:b", "a", "b", 2, "ANTECEDENT_PRESENT"},
    });
}

TEST(Occurrences, TheWindowIsInclusive) {
    expectOutcomes({
        {"1:a 4:b", "a", "b", 3, "at 4 after 1"},
        {"1:a 5:b", "a", "b", 3, "TOO_LATE"},
        {"1:b 3:a 4:b", "a", "b", 3, "NOT_NEW"},
        {"1:b 3:a 5:b", "a", "b", 3, "at 5 after 3"},
        {"0:a 18446744073709551615:b", "a", "b", LARGEST_NUMBER, "at 18446744073709551615 after 0"},
        {"0:a 18446744073709551615:b", "a", "b", LARGEST_NUMBER - 1, "TOO_LATE"},
        {"4294967295:a 4294967296:b", "a", "b", 1, "at 4294967296 after 4294967295"},
    });
}

TEST(Occurrences, AreOfTheHistoriesThatHoldAllItems) {
    const Occurrences found =
        occurrences("a", "b", tableOf({"1:a", "1:a 2:b", "1:b 2:c", "3:", "1:b 5:a", "2:a 3:b"}));
    EXPECT_THAT(texts(listed(found)),
                ElementsAre("1 at 2 after 1", "4 OTHER_ORDER", "5 at 3 after 2"));
    EXPECT_EQ(2U, found.count());
    EXPECT_EQ(1U, found.reverseCount());
}

TEST(Occurrences, AHistoryMayCountInBothDirections) {
    const Occurrences found = occurrences("a", "b", tableOf({"1:a 2:b 9:b 10:a"}), 1);
    EXPECT_THAT(texts(listed(found)), ElementsAre("0 at 2 after 1"));
    EXPECT_EQ(1U, found.count());
    EXPECT_EQ(1U, found.reverseCount());
}

TEST(Occurrences, ThereAreNoneWhereNoHistoryHoldsAllItems) {
    const Occurrences found = occurrences("a", "b", tableOf({"1:a 2:c", "1:b"}));
    EXPECT_THAT(listed(found), IsEmpty());
    EXPECT_EQ(0U, found.count());
    EXPECT_EQ(0U, found.reverseCount());
}

TEST(Occurrences, RulesThatAreNoneAreRefused) {
    const HistoryIndex index = indexed(tableOf({"1:a,b 2:c"}));
    struct Sides {
        std::vector<Rank> antecedent;
        std::vector<Rank> subsequent;
        const char* message;
    };
    const Rank a{0};
    const Rank b{1};
    const char* const empty = "a rule without items on one side";
    const char* const unknown = "an item of a rule that is unknown or comes twice";
    for (const Sides& sides :
         {Sides{{}, {}, empty}, Sides{{a}, {}, empty}, Sides{{}, {a}, empty},
          Sides{{a}, {Rank{3}}, unknown}, Sides{{Rank{3}}, {a}, unknown},
          Sides{{a, Rank{4294967295}}, {b}, unknown}, Sides{{a, a}, {b}, unknown},
          Sides{{a}, {b, b}, unknown}, Sides{{a, b}, {b}, unknown}})
        EXPECT_THAT([&] { findOccurrences(index, sides.antecedent, sides.subsequent, 0); },
                    testing::ThrowsMessage<std::invalid_argument>(sides.message));
    EXPECT_THROW(findOccurrences(HistoryIndex(), std::vector{a}, std::vector{b}, 0),
                 std::invalid_argument);
}

/// A rule of some of the items, as sides of ascending ranks.
std::pair<std::vector<Rank>, std::vector<Rank>> drawRule(std::size_t items, oracle::Draws& draws) {
    std::vector<Rank> antecedent;
    std::vector<Rank> subsequent;
    const std::uint64_t rarity = draws.upTo(items);
    for (std::uint32_t item = 0; item < items; ++item)
        if (const std::uint64_t drawn = draws.upTo(1 + rarity); drawn < 2)
            (drawn == 0 ? antecedent : subsequent).push_back(Rank{item});
    return {antecedent, subsequent};
}

oracle::Items namesOf(const HistoryIndex& index, const std::vector<Rank>& ranks) {
    oracle::Items names;
    for (const Rank rank : ranks)
        names.emplace(index.name(rank));
    return names;
}

/// The table with all of its times as late as possible.
Table atTheEndOfTime(const Table& table, oracle::Time lastTime) {
    Table late;
    for (const oracle::History& history : table.histories) {
        auto& moved = late.histories.emplace_back();
        for (const auto& [time, items] : history)
            moved[LARGEST_NUMBER - lastTime + time] = items;
    }
    return late;
}

class OccurrencesInTablesOfShape : public testing::TestWithParam<std::size_t> {};

/// Rules with infrequent items are tested too, and an index without these items.
TEST_P(OccurrencesInTablesOfShape, AreThoseOfTheOracle) {
    const std::vector<oracle::TableShape>& shapes = oracle::tableShapes();
    std::size_t counted = 0;
    std::size_t missed = 0;
    const std::size_t tables = ADDRESS_SANITIZED ? 20 : 150;
    for (std::size_t i = 0; i < tables; ++i) {
        const std::uint64_t seed = GetParam() + i * shapes.size();
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        const Table table =
            i % 2 == 0 ? drawn.table : atTheEndOfTime(drawn.table, shapes[GetParam()].lastTime);
        const HistoryIndex index = indexed(table, i % 3 == 0 ? drawn.settings.minCount : 0);
        oracle::Draws draws(seed);
        for (int rule = 0; rule < 20; ++rule) {
            const auto [antecedent, subsequent] = drawRule(index.itemCount(), draws);
            if (antecedent.empty() || subsequent.empty())
                continue;
            const oracle::Time window = drawn.settings.windowSize;
            const oracle::Implication implication{namesOf(index, antecedent),
                                                  namesOf(index, subsequent)};
            const oracle::Occurrences expected = occurrencesOf(implication, table, window);
            const Occurrences found = findOccurrences(index, antecedent, subsequent, window);
            ASSERT_EQ(texts(expected.histories), texts(listed(found))) << "seed " << seed;
            ASSERT_EQ(expected.count, found.count()) << "seed " << seed;
            ASSERT_EQ(expected.reverseCount, found.reverseCount()) << "seed " << seed;
            counted += found.count();
            missed += found.size() - found.count();
        }
    }
    EXPECT_GE(counted, tables / 8);
    EXPECT_GE(missed, tables);
}

INSTANTIATE_TEST_SUITE_P(Shapes, OccurrencesInTablesOfShape,
                         testing::Range(std::size_t{0}, oracle::tableShapes().size()),
                         [](const testing::TestParamInfo<std::size_t>& shape) {
                             return oracle::tableShapes()[shape.param].name;
                         });

oracle::NumberedItems numbersOf(const std::vector<Rank>& ranks) {
    oracle::NumberedItems numbers;
    for (const Rank rank : ranks)
        numbers.push_back(static_cast<oracle::ItemNumber>(rank));
    return numbers;
}

TEST(Occurrences, AsManyCountAsTheRuleAndItsReverseHave) {
    std::size_t compared = 0;
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 60 : 500); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        const HistoryIndex index = indexed(drawn.table);
        if (index.itemCount() > 8)
            continue;
        oracle::Settings settings;
        settings.minCount = 1;
        settings.windowSize = drawn.settings.windowSize;
        settings.allSplits = true;
        std::map<std::string, std::size_t> counts;
        for (const oracle::Outcome::Rule& rule : bruteForce(settings, drawn.table).rules)
            counts[rule.text] = rule.count;
        const std::vector<std::string> names = oracle::numbered(drawn.table).names;
        ASSERT_EQ(index.itemCount(), names.size());
        oracle::Draws draws(seed);
        for (int rule = 0; rule < 20; ++rule) {
            const auto [a, s] = drawRule(index.itemCount(), draws);
            if (a.empty() || s.empty())
                continue;
            const Occurrences found = findOccurrences(index, a, s, settings.windowSize);
            ASSERT_EQ(counts[oracle::ruleText(numbersOf(a), numbersOf(s), names)], found.count())
                << "seed " << seed;
            ASSERT_EQ(counts[oracle::ruleText(numbersOf(s), numbersOf(a), names)],
                      found.reverseCount())
                << "seed " << seed;
            compared += found.count() > 0 ? 1 : 0;
        }
    }
    EXPECT_GE(compared, 50U);
}

}  // namespace
}  // namespace quarvis::mining
