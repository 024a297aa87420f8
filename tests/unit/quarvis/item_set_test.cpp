#include <quarvis/item_set.hpp>

#include <cstddef>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using quarvis::test::subsetsOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Items = std::vector<Item>;

static_assert(std::is_same_v<Item, std::string>);
static_assert(std::is_same_v<ItemSet::Iterator, std::set<Item>::iterator>);
static_assert(std::is_same_v<ItemSet::ConstIterator, std::set<Item>::const_iterator>);
static_assert(!std::is_polymorphic_v<ItemSet>);

static_assert(noexcept(std::declval<ItemSet&>().add(std::declval<Item>())));
static_assert(noexcept(std::declval<ItemSet&>().add(std::declval<const ItemSet&>())));
static_assert(noexcept(std::declval<const ItemSet&>().contains(std::declval<const ItemSet&>())));
static_assert(noexcept(std::declval<const ItemSet&>().size()));
static_assert(noexcept(std::declval<ItemSet&>().begin()));
static_assert(noexcept(std::declval<ItemSet&>().end()));
static_assert(noexcept(std::declval<const ItemSet&>().begin()));
static_assert(noexcept(std::declval<const ItemSet&>().end()));
static_assert(noexcept(std::declval<const ItemSet&>().cmp(std::declval<const ItemSet&>())));

TEST(ItemSet, IsEmptyByDefault) {
    const ItemSet none;
    EXPECT_EQ(none.size(), 0U);
    EXPECT_THAT(itemsOf(none), IsEmpty());
}

TEST(ItemSet, AnItemConvertsToTheSetOfIt) {
    const ItemSet single = Item("ab");
    EXPECT_THAT(itemsOf(single), ElementsAre("ab"));
    EXPECT_THAT(itemsOf(ItemSet(Item())), ElementsAre(""));
}

TEST(ItemSet, AddKeepsEachItemOnceInByteOrder) {
    ItemSet items;
    for (const char* item : {"b", "\x80", "ab", "B", "", "a", "b", "", "\xFF", "\x7F"})
        items.add(item);
    EXPECT_THAT(itemsOf(items), ElementsAre("", "B", "a", "ab", "b", "\x7F", "\x80", "\xFF"));
    EXPECT_EQ(items.size(), 8U);
}

TEST(ItemSet, ItemsAreBytesUpToTheirLengthNotToANul) {
    ItemSet items;
    items.add(Item("a\0b", 3));
    items.add(Item("a\0c", 3));
    items.add(Item("a"));
    EXPECT_THAT(itemsOf(items), ElementsAre("a", Item("a\0b", 3), Item("a\0c", 3)));
}

TEST(ItemSet, AddOfASetAddsEachOfItsItems) {
    ItemSet items = setOf({"ab", "cd"});
    items.add(setOf({"cd", "ef", ""}));
    EXPECT_THAT(itemsOf(items), ElementsAre("", "ab", "cd", "ef"));
    items.add(ItemSet());
    EXPECT_EQ(items.size(), 4U);
}

TEST(ItemSet, AddOfTheSetToItselfChangesNothing) {
    ItemSet items = setOf({"ab", "cd"});
    items.add(items);
    EXPECT_THAT(itemsOf(items), ElementsAre("ab", "cd"));
}

TEST(ItemSet, ClearRemovesEveryItem) {
    ItemSet items = setOf({"ab", "cd"});
    items.clear();
    EXPECT_THAT(itemsOf(items), IsEmpty());
    items.add("ef");
    EXPECT_THAT(itemsOf(items), ElementsAre("ef"));
}

TEST(ItemSet, LeastIsTheFirstItem) {
    EXPECT_EQ(setOf({"cd", "ab"}).least(), "ab");
    EXPECT_EQ(setOf({"ab", ""}).least(), "");
}

TEST(ItemSet, ContainsAnItemThatIsPresent) {
    const ItemSet items = setOf({"ab", ""});
    EXPECT_TRUE(items.contains("ab"));
    EXPECT_TRUE(items.contains(""));
    EXPECT_FALSE(items.contains("a"));
    EXPECT_FALSE(items.contains("abc"));
    EXPECT_FALSE(ItemSet().contains(""));
}

TEST(ItemSet, TwoItemsContainOneOfThemAndTheEmptySetButNoOther) {
    const ItemSet items = setOf({"ab", "cd"});
    EXPECT_TRUE(items.contains(setOf({"ab"})));
    EXPECT_TRUE(items.contains(ItemSet()));
    EXPECT_FALSE(items.contains(setOf({"xy"})));
}

TEST(ItemSet, TheEmptySetContainsTheEmptySetAlone) {
    EXPECT_TRUE(ItemSet().contains(ItemSet()));
    EXPECT_FALSE(ItemSet().contains(setOf({""})));
}

TEST(ItemSet, MergeOfASetAndItsExtensionIsTheExtension) {
    EXPECT_THAT(itemsOf(setOf({"ab"}).merge(setOf({"ab", "cd"}))), ElementsAre("ab", "cd"));
}

TEST(ItemSet, MergeLeavesBothOperandsAsTheyAre) {
    const ItemSet left = setOf({"ab"});
    const ItemSet right = setOf({"cd"});
    EXPECT_THAT(itemsOf(left.merge(right)), ElementsAre("ab", "cd"));
    EXPECT_THAT(itemsOf(left), ElementsAre("ab"));
    EXPECT_THAT(itemsOf(right), ElementsAre("cd"));
}

TEST(ItemSet, SubsetAndUnionAreThoseOfEveryPairOfSmallSets) {
    const Items universe = {"", "a", "ab", "b"};
    const std::vector<ItemSet> sets = subsetsOf(universe);
    for (std::size_t a = 0; a < sets.size(); ++a)
        for (std::size_t b = 0; b < sets.size(); ++b) {
            SCOPED_TRACE(sets[a].toString() + " and " + sets[b].toString());
            EXPECT_EQ(sets[a].contains(sets[b]), (b & ~a) == 0);
            EXPECT_EQ(itemsOf(sets[a].merge(sets[b])), itemsOf(sets[a | b]));
        }
}

TEST(ItemSet, CopiesAreIndependent) {
    ItemSet original = setOf({"ab"});
    const ItemSet copy(original);
    ItemSet assigned = setOf({"xy"});
    assigned = original;
    original.add("cd");
    EXPECT_THAT(itemsOf(copy), ElementsAre("ab"));
    EXPECT_THAT(itemsOf(assigned), ElementsAre("ab"));
}

TEST(ItemSetText, IsTheItemsInOrderBetweenBraces) {
    const std::vector<std::pair<ItemSet, std::string>> forms = {
        {ItemSet(), "{}"},
        {setOf({"ab"}), "{ab}"},
        {setOf({"b", "a"}), "{a,b}"},
        {setOf({"c", "b", "a"}), "{a,b,c}"},
        {setOf({""}), "{}"},
        {setOf({"", "ab"}), "{,ab}"},
        {setOf({" ab ", "c,d", "\"e\"", "{f}", "g\th\n"}), "{ ab ,\"e\",c,d,g\th\n,{f}}"},
        {setOf({Item("a\0b", 3)}), std::string("{a\0b}", 5)},
    };
    for (const auto& [items, text] : forms) {
        EXPECT_EQ(items.toString(), text);
        EXPECT_EQ(static_cast<std::string>(items), text);
        std::ostringstream written;
        items.writeInto(written);
        EXPECT_EQ(written.str(), text);
        std::ostringstream streamed;
        streamed << items;
        EXPECT_EQ(streamed.str(), text);
    }
}

TEST(ItemSetText, WritingReturnsTheStream) {
    std::ostringstream os;
    EXPECT_EQ(&setOf({"ab"}).writeInto(os), &os);
    EXPECT_EQ(&(os << setOf({"cd"})), &os);
    EXPECT_EQ(os.str(), "{ab}{cd}");
}

}  // namespace
