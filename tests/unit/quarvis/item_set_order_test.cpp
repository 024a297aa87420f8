#include <quarvis/item_set.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using quarvis::test::subsetsOf;

/// The empty item, items that are prefixes of each other, and one that would sort differently with
/// signed characters.
const std::vector<Item> UNIVERSE = {"", "a", "ab", "b", "\x80"};

bool byteLess(const Item& a, const Item& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    });
}

/// The order by its definition: the first position that differs decides, and a missing item comes
/// after any item.
bool isLess(const ItemSet& a, const ItemSet& b) {
    const std::vector<Item> left = itemsOf(a);
    const std::vector<Item> right = itemsOf(b);
    for (std::size_t i = 0; i < left.size() || i < right.size(); ++i) {
        if (i == right.size())
            return true;
        if (i == left.size())
            return false;
        if (left[i] != right[i])
            return byteLess(left[i], right[i]);
    }
    return false;
}

TEST(ItemSetOrder, ASetIsLessThanItsOwnPrefix) {
    EXPECT_TRUE(setOf({"ab", "cd"}) < setOf({"ab"}));
    EXPECT_FALSE(setOf({"ab"}) < setOf({"ab", "cd"}));
}

TEST(ItemSetOrder, TheSmallerItemDecides) {
    EXPECT_TRUE(setOf({"ab"}) < setOf({"b"}));
    EXPECT_FALSE(setOf({"b"}) < setOf({"ab"}));
    EXPECT_TRUE(setOf({"ab", "zz"}) < setOf({"b"}));
    EXPECT_TRUE(setOf({"ab"}) < setOf({"b", "c"}));
}

TEST(ItemSetOrder, TheEmptySetIsAfterEveryOther) {
    for (const ItemSet& items : subsetsOf(UNIVERSE)) {
        EXPECT_EQ(items < ItemSet(), items.size() != 0) << items;
        EXPECT_FALSE(ItemSet() < items) << items;
    }
}

TEST(ItemSetOrder, IsThatOfItsDefinitionForEveryPair) {
    const std::vector<ItemSet> sets = subsetsOf(UNIVERSE);
    for (const ItemSet& a : sets)
        for (const ItemSet& b : sets)
            EXPECT_EQ(a < b, isLess(a, b)) << a << " and " << b;
}

TEST(ItemSetOrder, IsStrictAndTotal) {
    const std::vector<ItemSet> sets = subsetsOf(UNIVERSE);
    for (std::size_t a = 0; a < sets.size(); ++a)
        for (std::size_t b = 0; b < sets.size(); ++b) {
            const int holding = (sets[a] < sets[b] ? 1 : 0) + (sets[b] < sets[a] ? 1 : 0);
            EXPECT_EQ(holding, a == b ? 0 : 1) << sets[a] << " and " << sets[b];
        }
}

TEST(ItemSetOrder, IsTransitive) {
    const std::vector<ItemSet> sets = subsetsOf(UNIVERSE);
    std::size_t chains = 0;
    for (const ItemSet& a : sets)
        for (const ItemSet& b : sets)
            for (const ItemSet& c : sets)
                if (a < b && b < c) {
                    ++chains;
                    EXPECT_TRUE(a < c) << a << ", " << b << " and " << c;
                }
    // In a total order of n sets, each of the n over 3 triples is a chain in one of its orders.
    EXPECT_EQ(chains, 32U * 31 * 30 / 6);
}

TEST(ItemSetOrder, IsThatOfMaps) {
    std::map<ItemSet, int> places;
    for (const ItemSet& items : subsetsOf({"a", "b", "c"}))
        places[items] = 0;
    std::string order;
    for (const auto& [items, place] : places)
        order += items.toString();
    EXPECT_EQ(order, "{a,b,c}{a,b}{a,c}{a}{b,c}{b}{c}{}");
}

TEST(ItemSetCmp, AnExtensionGivesMinusOneAndAPrefixGivesZero) {
    EXPECT_EQ(setOf({"ab", "cd"}).cmp(setOf({"ab"})), -1);
    EXPECT_EQ(setOf({"ab"}).cmp(setOf({"ab", "cd"})), 0);
    EXPECT_EQ(setOf({"ab"}).cmp(ItemSet()), -1);
    EXPECT_EQ(ItemSet().cmp(setOf({"ab"})), 0);
    EXPECT_EQ(ItemSet().cmp(ItemSet()), 0);
    EXPECT_EQ(setOf({"ab", "cd", "ef", "gh"}).cmp(setOf({"ab"})), -1);
}

/// Only the sign of what strings give is the same on each call.
TEST(ItemSetCmp, TheFirstDifferenceHasTheSignThatTheStringsGive) {
    const auto signOf = [](int order) { return (order > 0) - (order < 0); };
    const std::vector<std::string> items = {"a", "abcd", "abz", "b", "q", "\x80"};
    for (const std::string& a : items)
        for (const std::string& b : items) {
            const int expected = signOf(a.compare(b));
            EXPECT_EQ(signOf(setOf({a}).cmp(setOf({b}))), expected) << a << " and " << b;
            EXPECT_EQ(signOf(setOf({"", a, "\xFF"}).cmp(setOf({"", b}))), a == b ? -1 : expected)
                << a << " and " << b;
        }
}

/// The standard library gives the difference of the lengths then.
TEST(ItemSetCmp, AnItemThatBeginsWithAnotherGivesWhatTheStringsGive) {
    EXPECT_EQ(setOf({"ab"}).cmp(setOf({"abcde"})), -3);
    EXPECT_EQ(setOf({"abcde"}).cmp(setOf({"ab"})), 3);
    EXPECT_EQ(setOf({"", "abcde", "\xFF"}).cmp(setOf({"", "ab"})), 3);
}

TEST(ItemSetCmp, IsZeroForEveryPrefixAndForNothingElse) {
    const std::vector<ItemSet> sets = subsetsOf(UNIVERSE);
    for (const ItemSet& a : sets)
        for (const ItemSet& b : sets) {
            const std::vector<Item> left = itemsOf(a);
            const std::vector<Item> right = itemsOf(b);
            const bool prefix =
                left.size() <= right.size() && std::equal(left.begin(), left.end(), right.begin());
            EXPECT_EQ(a.cmp(b) == 0, prefix) << a << " and " << b;
        }
}

}  // namespace
