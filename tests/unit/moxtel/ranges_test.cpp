/// Containers as ranges: range-for, the concepts of the standard library, and its algorithms.

#include <moxtel/set.hpp>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/alphabet.hpp>
#include <moxtel/array.hpp>

namespace moxtel {
namespace {

using mem::Iterator;
using util::LinkedHashMap;
using util::LinkedHashSet;
using util::Map;
using util::Set;

using Texts = std::vector<std::string>;
using TextSet = LinkedHashSet<std::string>;
using NumberMap = LinkedHashMap<std::string, int>;

static_assert(std::ranges::contiguous_range<mem::Array<int>>);
static_assert(std::ranges::contiguous_range<const string::Alphabet>);
static_assert(std::forward_iterator<decltype(std::declval<TextSet&>().begin())>);
static_assert(std::forward_iterator<decltype(std::declval<const TextSet&>().begin())>);
static_assert(std::ranges::forward_range<NumberMap>);
static_assert(std::ranges::forward_range<const NumberMap>);
static_assert(std::ranges::sized_range<TextSet>);
static_assert(std::ranges::input_range<Set<std::string>>);
static_assert(std::ranges::input_range<const Map<std::string, int>>);
static_assert(std::ranges::input_range<Iterator<const int>>);

void fill(Set<std::string>& set) {
    for (const char* text : {"c", "a", "b"})
        set.add(text);
}

void fill(Map<std::string, int>& map) {
    map["c"] = 3;
    map["a"] = 1;
}

TEST(SetRange, HasTheValuesInTheOrderOfInsertion) {
    TextSet set;
    EXPECT_TRUE(set.begin() == set.end());
    fill(set);
    Texts walked;
    for (const std::string& text : std::as_const(set))
        walked.push_back(text);
    EXPECT_EQ(walked, Texts({"c", "a", "b"}));
}

TEST(SetRange, IsWalkedMoreThanOnceByCopiesOfAnIterator) {
    TextSet set;
    fill(set);
    const auto first = set.begin();
    auto second = first;
    EXPECT_EQ(*second++, "c");
    EXPECT_EQ(*second, "a");
    EXPECT_EQ(second->size(), 1U);
    EXPECT_EQ(*first, "c");
    EXPECT_EQ(std::distance(first, set.end()), 3);
    EXPECT_EQ(*std::next(first, 2), "b");
    const decltype(std::as_const(set).begin()) constant = first;
    EXPECT_EQ(*constant, "c");
    EXPECT_TRUE(constant == std::as_const(set).begin());
}

TEST(SetRange, ComesToWhatIsPutInOnTheWay) {
    TextSet set;
    set.add("a");
    Texts walked;
    for (const std::string& text : set) {
        walked.push_back(text);
        if (walked.size() < 4)
            set.add(text + "a");
    }
    EXPECT_EQ(walked, Texts({"a", "aa", "aaa", "aaaa"}));
}

TEST(SetRange, OtherValuesMayBeErasedOnTheWay) {
    TextSet set;
    fill(set);
    for (auto i = set.begin(); i != set.end();) {
        const std::string value = *i++;
        set.eraseByKey(value);
    }
    EXPECT_EQ(set.size(), 0U);
}

TEST(SetRange, ServesTheAlgorithms) {
    TextSet set;
    fill(set);
    EXPECT_EQ(*std::ranges::max_element(set), "c");
    EXPECT_EQ(std::count(set.begin(), set.end(), "a"), 1);
    EXPECT_TRUE(std::ranges::equal(set, Texts({"c", "a", "b"})));
}

TEST(SetRange, OfAnyClassIsAnInputRange) {
    TextSet set;
    fill(set);
    Texts walked;
    for (const std::string& text : std::as_const<Set<std::string>>(set))
        walked.push_back(text);
    EXPECT_EQ(walked, Texts({"c", "a", "b"}));
    Set<std::string>& base = set;
    auto i = base.begin();
    EXPECT_EQ(i->size(), 1U);
    i++;
    EXPECT_EQ(*i, "a");
    EXPECT_FALSE(i == std::default_sentinel);
    EXPECT_EQ(std::ranges::distance(i, base.end()), 2);
}

/// The pairs of a map in the order of its range, such as "c3 a1 ".
template <class Numbers>
std::string textOf(const Numbers& map) {
    std::string text;
    for (const auto& [key, value] : map)
        text += key + std::to_string(value) + ' ';
    return text;
}

TEST(MapRange, HasThePairsWhoseValuesMayBeChanged) {
    NumberMap map;
    fill(map);
    for (auto& [key, value] : map)
        value *= 10;
    EXPECT_EQ(textOf(map), "c30 a10 ");
}

TEST(MapRange, OfAnyClassIsAnInputRange) {
    NumberMap map;
    fill(map);
    Map<std::string, int>& base = map;
    for (auto& [key, value] : base)
        ++value;
    EXPECT_EQ(textOf(base), "c4 a2 ");
}

TEST(IteratorRange, GoesOnFromTheCurrentElement) {
    NumberMap map;
    fill(map);
    map["b"] = 2;
    Texts keys;
    for (const std::string& key : map.keyIterator())
        keys.push_back(key);
    EXPECT_EQ(keys, Texts({"c", "a", "b"}));
    auto values = map.valueIterator();
    values.next();
    for (int& value : values)
        value = 0;
    EXPECT_FALSE(values.hasNext());
    EXPECT_EQ(map["c"], 3);
    EXPECT_EQ(map["a"] + map["b"], 0);
}

TEST(IteratorRange, OfAConstElementSharesThePositionOfTheOther) {
    TextSet set;
    fill(set);
    auto walk = set.iterator();
    Iterator<const std::string> constant = walk;
    constant.next();
    EXPECT_EQ(*walk, "a");
    EXPECT_EQ(*constant, "a");
    static_assert(std::is_same_v<decltype(*constant), const std::string&>);
    static_assert(!std::is_convertible_v<Iterator<const int>, Iterator<int>>);
}

TEST(PartStrategies, AreOfUseForPairsOfTheCallers) {
    NumberMap map;
    fill(map);
    auto pairs = map.iterator();
    pairs.next();
    const Iterator<const std::string> keys(new NumberMap::KeyIteratorStrategy(pairs));
    EXPECT_EQ(*keys, "a");
    Iterator<int> values(new NumberMap::ValueIteratorStrategy(pairs));
    *values = 5;
    EXPECT_EQ(map["a"], 5);
    const Iterator<const int> constants(
        new NumberMap::ConstValueIteratorStrategy(std::as_const(map).iterator()));
    EXPECT_EQ(*constants, 3);
    values.next();
    EXPECT_FALSE(keys.hasNext());
}

TEST(AlphabetRange, HasTheCharactersInOrder) {
    const string::Alphabet alphabet("cabba", false);
    EXPECT_EQ(std::string(alphabet.begin(), alphabet.end()), "abc");
    EXPECT_EQ(alphabet.size(), 3U);
}

}  // namespace
}  // namespace moxtel
