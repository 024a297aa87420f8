#include <quarvis/item_set_histogram.hpp>

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::ItemSet;
using quarvis::rule::ItemSetHistogram;
using quarvis::test::setOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Map = std::map<ItemSet, std::size_t>;

static_assert(std::is_same_v<ItemSetHistogram::Iterator, Map::iterator>);
static_assert(std::is_same_v<ItemSetHistogram::ConstIterator, Map::const_iterator>);
static_assert(!std::is_polymorphic_v<ItemSetHistogram>);
static_assert(sizeof(std::size_t) == 8);

static_assert(noexcept(std::declval<const ItemSetHistogram&>().size()));
static_assert(noexcept(std::declval<ItemSetHistogram&>().begin()));
static_assert(noexcept(std::declval<ItemSetHistogram&>().end()));
static_assert(noexcept(std::declval<const ItemSetHistogram&>().begin()));
static_assert(noexcept(std::declval<const ItemSetHistogram&>().end()));

/// The entries in iteration order, each set as its text.
std::vector<std::pair<std::string, std::size_t>> entriesOf(const ItemSetHistogram& histogram) {
    std::vector<std::pair<std::string, std::size_t>> entries;
    for (const auto& [items, count] : histogram)
        entries.emplace_back(items.toString(), count);
    return entries;
}

TEST(ItemSetHistogram, IsEmptyByDefault) {
    const ItemSetHistogram histogram;
    EXPECT_EQ(histogram.size(), 0U);
    EXPECT_THAT(entriesOf(histogram), IsEmpty());
}

TEST(ItemSetHistogram, AddKeepsTheCountThatIsThereAndAssignmentReplacesIt) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab"}), 3);
    histogram.add(setOf({"ab"}), 7);
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab}", 3U)));
    histogram[setOf({"ab"})] = 7;
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab}", 7U)));
}

TEST(ItemSetHistogram, ANewSetHasTheCountZero) {
    ItemSetHistogram histogram;
    EXPECT_EQ(histogram[setOf({"ab"})], 0U);
    ++histogram[setOf({"ab"})];
    histogram.add(setOf({"ab"}), 9);
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab}", 1U)));
}

TEST(ItemSetHistogram, IteratesFromASetToItsPrefixes) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab"}), 1);
    histogram.add(setOf({"ab", "cd"}), 2);
    histogram.add(setOf({"b"}), 3);
    EXPECT_THAT(entriesOf(histogram),
                ElementsAre(Pair("{ab,cd}", 2U), Pair("{ab}", 1U), Pair("{b}", 3U)));
    histogram.add(ItemSet(), 4);
    for (auto& [items, count] : histogram)
        count *= 10;
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab,cd}", 20U), Pair("{ab}", 10U),
                                                  Pair("{b}", 30U), Pair("{}", 40U)));
}

TEST(ItemSetHistogram, AtGivesTheCount) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab"}), 3);
    histogram.at(setOf({"ab"})) = 18446744073709551615U;
    const ItemSetHistogram& constant = histogram;
    EXPECT_EQ(constant.at(setOf({"ab"})), 18446744073709551615U);
}

TEST(ItemSetHistogram, AtThrowsOutOfRangeForAnAbsentSet) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab", "cd"}), 3);
    const ItemSetHistogram& constant = histogram;
    const auto messageOf = [](auto& of, const ItemSet& items) -> std::string {
        try {
            of.at(items);
        } catch (const std::out_of_range& error) {
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_EQ(messageOf(histogram, setOf({"ab"})), "map::at");
    EXPECT_EQ(messageOf(constant, ItemSet()), "map::at");
    EXPECT_EQ(histogram.size(), 1U);
}

TEST(ItemSetHistogram, FindGivesTheEntryOrTheEnd) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab"}), 3);
    const ItemSetHistogram& constant = histogram;
    ASSERT_NE(histogram.find(setOf({"ab"})), histogram.end());
    histogram.find(setOf({"ab"}))->second = 5;
    ASSERT_NE(constant.find(setOf({"ab"})), constant.end());
    EXPECT_EQ(constant.find(setOf({"ab"}))->second, 5U);
    EXPECT_EQ(histogram.find(setOf({"ab", "cd"})), histogram.end());
    EXPECT_EQ(constant.find(ItemSet()), constant.end());
    EXPECT_EQ(histogram.size(), 1U);
}

TEST(ItemSetHistogram, EraseRemovesTheEntry) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"ab"}), 1);
    histogram.add(setOf({"ab", "cd"}), 2);
    histogram.add(setOf({"b"}), 3);
    histogram.erase(setOf({"ab"}));
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab,cd}", 2U), Pair("{b}", 3U)));
    histogram.erase(histogram.find(setOf({"b"})));
    EXPECT_THAT(entriesOf(histogram), ElementsAre(Pair("{ab,cd}", 2U)));
}

TEST(ItemSetHistogram, AssignmentReplacesTheWholeContentByACopy) {
    ItemSetHistogram source;
    source.add(setOf({"ab"}), 1);
    ItemSetHistogram target;
    target.add(setOf({"cd"}), 2);
    target = source;
    source[setOf({"ab"})] = 9;
    source.add(setOf({"ef"}), 3);
    EXPECT_THAT(entriesOf(target), ElementsAre(Pair("{ab}", 1U)));
    const ItemSetHistogram copy(target);
    target.erase(target.begin());
    EXPECT_THAT(entriesOf(copy), ElementsAre(Pair("{ab}", 1U)));
}

}  // namespace
