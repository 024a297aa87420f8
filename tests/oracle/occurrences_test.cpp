#include "oracle/occurrences.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/brute_force.hpp"
#include "oracle/numbered.hpp"
#include "oracle/outcome.hpp"
#include "oracle/random_table.hpp"
#include "oracle/settings.hpp"

namespace oracle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> texts(const std::vector<Occurrence>& occurrences) {
    std::vector<std::string> result;
    for (const Occurrence& occurrence : occurrences) {
        std::ostringstream text;
        text << occurrence;
        result.push_back(text.str());
    }
    return result;
}

Occurrences occurrences(const char* antecedent, const char* subsequent, const Table& table,
                        Time window = 0) {
    return occurrencesOf({itemsOf(antecedent), itemsOf(subsequent)}, table, window);
}

struct Row {
    const char* history;
    const char* antecedent;
    const char* subsequent;
    Time window;
    const char* outcome;
};

void expectOutcomes(const std::vector<Row>& rows) {
    for (const Row& row : rows)
        EXPECT_THAT(
            texts(occurrences(row.antecedent, row.subsequent, tableOf({row.history}), row.window)
                      .histories),
            ElementsAre(std::string("0 ") + row.outcome))
            << row.antecedent << " => " << row.subsequent << " in " << row.history << ", window "
            << row.window;
}

TEST(Occurrences, CountedTellTheFirstTimeAndTheLastOfEachItemBefore) {
    expectOutcomes({
        {"1:a 2:b", "a", "b", 0, "at 2 after 1"},
        {"1:a 5:b", "a", "b", 4, "at 5 after 1"},
        // The first time at which it counts, and the last before that.
        {"1:a 2:a 3:b 4:a 5:b", "a", "b", 0, "at 3 after 2"},
        {"1:a 2:b 20:a 21:b", "a", "b", 5, "at 2 after 1"},
        {"1:b 10:a 11:b", "a", "b", 5, "at 11 after 10"},
        // The times are in the order of the items, not in their own.
        {"1:c 2:a 4:b,d 6:e", "a,b,c", "e", 0, "at 6 after 2,4,1"},
        {"1:a,c 2:a 3:c 4:b", "a,c", "b", 0, "at 4 after 2,3"},
        // Part of the antecedent may be in the transaction, if it occurred before as well.
        {"1:a,b 2:b,c", "a,b", "c", 0, "at 2 after 1,1"},
        {"1:a 2:b,c", "a", "b,c", 0, "at 2 after 1"},
        // The ends of time.
        {"0:a 18446744073709551615:b", "a", "b", 18446744073709551615U,
         "at 18446744073709551615 after 0"},
    });
}

TEST(Occurrences, SubsequentApart) {
    expectOutcomes({
        {"1:a 2:b 3:c", "a", "b,c", 0, "SUBSEQUENT_APART"},
        {"1:b 2:a 3:c", "a", "b,c", 1, "SUBSEQUENT_APART"},
        {"1:b,a 2:c,a", "a", "b,c", 0, "SUBSEQUENT_APART"},
    });
}

TEST(Occurrences, OtherOrder) {
    expectOutcomes({
        {"1:b 2:a", "a", "b", 0, "OTHER_ORDER"},
        {"1:b 2:a", "a", "b", 5, "OTHER_ORDER"},
        // Only a part of the antecedent has occurred by then.
        {"1:a 2:c 3:b", "a,b", "c", 0, "OTHER_ORDER"},
        {"1:b 2:b,c 3:a", "a,b", "c", 0, "OTHER_ORDER"},
        // The transaction at 3 does not have all of the subsequent.
        {"1:b,c 2:a 3:b", "a", "b,c", 0, "OTHER_ORDER"},
    });
}

TEST(Occurrences, SameTime) {
    expectOutcomes({
        {"1:a,b", "a", "b", 0, "SAME_TIME"},
        {"1:a,b", "a", "b", 5, "SAME_TIME"},
        {"1:a 2:b,c", "a,b", "c", 0, "SAME_TIME"},
        // Later times of the antecedent do not matter, and neither does an earlier one of the
        // subsequent.
        {"1:b 2:a,b 3:a", "a", "b", 0, "SAME_TIME"},
        // Item a is too old, but that is tested later.
        {"1:a 9:b,c", "a,b", "c", 2, "SAME_TIME"},
    });
}

TEST(Occurrences, TooLate) {
    expectOutcomes({
        {"1:a 5:b", "a", "b", 3, "TOO_LATE"},
        // One item of two is too old.
        {"1:a 4:c 5:b", "a,c", "b", 3, "TOO_LATE"},
        // It occurs again at 5, which is not before 5.
        {"1:a 5:a,b", "a", "b", 3, "TOO_LATE"},
        // The subsequent is not new either, but that is tested later.
        {"1:a 5:b 6:b", "a", "b", 3, "TOO_LATE"},
        {"0:a 18446744073709551615:b", "a", "b", 18446744073709551614U, "TOO_LATE"},
    });
}

TEST(Occurrences, NotNew) {
    expectOutcomes({
        {"1:b 2:a 3:b", "a", "b", 0, "NOT_NEW"},
        {"1:b 2:a 3:b", "a", "b", 2, "NOT_NEW"},
        {"1:b 2:a 3:b,c", "a", "b,c", 0, "NOT_NEW"},
        // The antecedent is there too, but that is tested later.
        {"1:a,b 2:a,b", "a", "b", 0, "NOT_NEW"},
    });
}

TEST(Occurrences, AntecedentPresent) {
    expectOutcomes({
        {"1:a 2:a,b", "a", "b", 0, "ANTECEDENT_PRESENT"},
        {"1:a,b 2:a,b,c", "a,b", "c", 1, "ANTECEDENT_PRESENT"},
        // The subsequent was there before, but not within the window.
        {"1:b 6:a 7:a,b", "a", "b", 3, "ANTECEDENT_PRESENT"},
    });
}

TEST(Occurrences, TheTransactionThatGetsFurthestGivesTheReason) {
    expectOutcomes({
        // OTHER_ORDER at 1, SAME_TIME at 2, NOT_NEW at 3.
        {"1:b 2:a,b 3:b", "a", "b", 0, "NOT_NEW"},
        // TOO_LATE at 9, though at 1 it was SAME_TIME.
        {"1:a,b 9:b", "a", "b", 3, "TOO_LATE"},
        // ANTECEDENT_PRESENT at 2, NOT_NEW at 3.
        {"1:a 2:a,b 3:b", "a", "b", 0, "ANTECEDENT_PRESENT"},
        // NOT_NEW at 3, TOO_LATE at 9.
        {"1:b 2:a 3:b 9:b", "a", "b", 3, "NOT_NEW"},
    });
}

TEST(Occurrences, AreOfTheHistoriesThatHaveAllItems) {
    const Occurrences found = occurrences(
        "a", "b", tableOf({"1:a", "1:a 2:b", "1:b 2:c", "1:b 2:a", "3:a,b", "1:", "4:a 7:b"}));
    EXPECT_THAT(texts(found.histories),
                ElementsAre("1 at 2 after 1", "3 OTHER_ORDER", "4 SAME_TIME", "6 at 7 after 4"));
    EXPECT_EQ(2U, found.count);
    EXPECT_EQ(1U, found.reverseCount);
}

TEST(Occurrences, OfItemsThatAreNowhereAreNone) {
    const Occurrences found = occurrences("a", "x", tableOf({"1:a 2:b"}));
    EXPECT_THAT(found.histories, IsEmpty());
    EXPECT_EQ(0U, found.count);
    EXPECT_EQ(0U, found.reverseCount);
}

TEST(Occurrences, OfWhatIsNoRuleAreRefused) {
    const Table table = tableOf({"1:a 2:b"});
    EXPECT_THROW(occurrences("", "a", table), std::invalid_argument);
    EXPECT_THROW(occurrences("a", "", table), std::invalid_argument);
    EXPECT_THROW(occurrences("a,b", "b,c", table), std::invalid_argument);
}

/// The items of side `digit`: the digits of `number` to base 3 say of each item whether it is on no
/// side, the first or the second.
NumberedItems sideOf(std::size_t number, std::size_t items, std::size_t digit) {
    NumberedItems side;
    for (std::size_t item = 0; item < items; ++item, number /= 3)
        if (number % 3 == digit)
            side.push_back(static_cast<ItemNumber>(item));
    return side;
}

Items named(const NumberedItems& items, const std::vector<std::string>& names) {
    Items result;
    for (const ItemNumber item : items)
        result.insert(names[item]);
    return result;
}

constexpr std::size_t MOST_ITEMS = 4;

/// The counts of all rules and item sets of up to four items, by their texts.
struct Counts {
    Counts(const Table& table, Time window) {
        Settings settings;
        settings.minCount = 1;
        settings.maxOrder = MOST_ITEMS - 1;
        settings.windowSize = window;
        settings.allSplits = true;
        const Outcome outcome = bruteForce(settings, table);
        for (const Outcome::Rule& rule : outcome.rules)
            rules[rule.text] = rule.count;
        for (const Outcome::ItemSet& items : outcome.itemSets)
            itemSets[items.text] = items.count;
    }

    std::map<std::string, std::size_t> rules;
    std::map<std::string, std::size_t> itemSets;
};

/// Compares the occurrences of all rules of up to four items. Returns the number of rules.
std::size_t compare(const Table& table, Time window) {
    Counts counts(table, window);
    const std::vector<std::string> names = numbered(table).names;
    std::size_t numbers = 1;
    for (std::size_t item = 0; item < names.size(); ++item)
        numbers *= 3;
    std::size_t rules = 0;
    for (std::size_t number = 0; number < numbers; ++number) {
        const NumberedItems a = sideOf(number, names.size(), 1);
        const NumberedItems s = sideOf(number, names.size(), 2);
        if (a.empty() || s.empty() || a.size() + s.size() > MOST_ITEMS)
            continue;
        NumberedItems both;
        std::merge(a.begin(), a.end(), s.begin(), s.end(), std::back_inserter(both));
        const Occurrences found = occurrencesOf({named(a, names), named(s, names)}, table, window);
        EXPECT_EQ(counts.rules[ruleText(a, s, names)], found.count);
        EXPECT_EQ(counts.rules[ruleText(s, a, names)], found.reverseCount);
        EXPECT_EQ(counts.itemSets[braced(both, names)], found.histories.size());
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << ruleText(a, s, names) << ", window " << window << '\n' << table;
            break;
        }
        ++rules;
    }
    return rules;
}

std::vector<TableShape> shapes() {
    // Texts of odd names do not tell item sets apart, and there are too many rules of fourteen
    // items.
    std::vector<TableShape> all = tableShapes();
    std::erase_if(all, [](const TableShape& shape) {
        return shape.name == "OddNames" || shape.name == "Wide";
    });
    return all;
}

class OccurrencesBesideBruteForce : public testing::TestWithParam<TableShape> {};

TEST_P(OccurrencesBesideBruteForce, CountTheSame) {
    std::size_t rules = 0;
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const Table table = randomTable(GetParam(), seed);
        for (const Time window : {Time{0}, Time{1}, Time{3}, GetParam().lastTime / 2})
            rules += compare(table, window);
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
    EXPECT_GT(rules, 100U);
}

INSTANTIATE_TEST_SUITE_P(Shapes, OccurrencesBesideBruteForce, testing::ValuesIn(shapes()),
                         [](const auto& shape) { return shape.param.name; });

}  // namespace
}  // namespace oracle
