#include <moxtel/linked_hash_map.hpp>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace moxtel::util {
namespace {

using Numbers = LinkedHashMap<std::string, int>;

Numbers& fill(Numbers& map) {
    map["c"] = 3;
    map["a"] = 1;
    map["b"] = 2;
    return map;
}

std::string textOf(const Numbers& map) {
    std::string text;
    for (auto i = map.iterator(); i; ++i)
        text += i->first + std::to_string(i->second) + " ";
    return text;
}

TEST(LinkedHashMap, IsWalkedInTheOrderOfInsertion) {
    Numbers map;
    EXPECT_EQ(textOf(fill(map)), "c3 a1 b2 ");
    map["c"] = 4;
    EXPECT_EQ(textOf(map), "c4 a1 b2 ");
}

TEST(LinkedHashMap, KeyErasedAndAddedAgainGoesToTheEnd) {
    Numbers map;
    fill(map).erase("a");
    EXPECT_EQ(map.size(), 2U);
    map["a"] = 5;
    EXPECT_EQ(textOf(map), "c3 b2 a5 ");
    map.erase("d");
    EXPECT_EQ(map.size(), 3U);
}

TEST(LinkedHashMap, IndexOperatorInsertsAnAbsentKeyWithValue0) {
    Numbers map;
    int& value = map["x"];
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(map.containsKey("x"));
    value = 7;
    EXPECT_EQ(map["x"], 7);
    EXPECT_EQ(map.size(), 1U);
}

TEST(LinkedHashMap, ConstIndexOperatorThrowsForAnAbsentKey) {
    Numbers map;
    const Numbers& constMap = fill(map);
    EXPECT_EQ(constMap["a"], 1);
    try {
        constMap["x"];
        ADD_FAILURE() << "nothing thrown";
    } catch (const NotFoundException& e) {
        EXPECT_STREQ(e.what(), "Key not found\n");
    }
    EXPECT_FALSE(map.containsKey("x"));
}

TEST(LinkedHashMap, LookupCreatesOnlyOnWish) {
    Numbers map;
    EXPECT_THROW(map.lookup("x", false), NotFoundException);
    EXPECT_THROW(map.pairFor("x", false), NotFoundException);
    EXPECT_THROW(std::as_const(map).lookup("x"), NotFoundException);
    EXPECT_THROW(std::as_const(map).pairFor("x"), NotFoundException);
    EXPECT_EQ(map.size(), 0U);
    EXPECT_EQ(map.lookup("x", true), 0);
    EXPECT_EQ(map.pairFor("y", true).first, "y");
    EXPECT_EQ(std::as_const(map).pairFor("y").second, 0);
    EXPECT_EQ(std::as_const(map).lookup("x"), 0);
    EXPECT_EQ(map.size(), 2U);
}

TEST(LinkedHashMap, KeyAndValueIteratorsFollowTheWalk) {
    Numbers map;
    fill(map);
    std::string keys;
    for (auto i = map.keyIterator(); i.hasNext(); i.next())
        keys += i.current();
    EXPECT_EQ(keys, "cab");
    for (auto i = map.valueIterator(); i.hasNext(); i.next())
        i.current() *= 10;
    std::vector<int> values;
    for (auto i = std::as_const(map).valueIterator(); i.hasNext(); i.next())
        values.push_back(i.current());
    EXPECT_EQ(values, std::vector<int>({30, 10, 20}));
}

TEST(LinkedHashMap, ConstKeyAndValueIteratorsShowTheCurrentElement) {
    Numbers map;
    fill(map);
    const auto key = map.keyIterator();
    EXPECT_EQ(key.current(), "c");
    const auto value = map.valueIterator();
    EXPECT_EQ(value.current(), 3);
    static_assert(std::is_same_v<decltype(*value), const int&>);
}

TEST(LinkedHashMap, EmptyMapHasNoCurrentElement) {
    Numbers map;
    EXPECT_FALSE(map.iterator().hasNext());
    EXPECT_FALSE(map.keyIterator().hasNext());
    EXPECT_FALSE(map.valueIterator().hasNext());
}

TEST(LinkedHashMap, ClearedMapIsEmptyAndCanBeDestroyed) {
    Numbers map(1);
    fill(map).clear();
    EXPECT_EQ(map.size(), 0U);
    EXPECT_FALSE(map.iterator().hasNext());
}

TEST(LinkedHashMap, IsUsedThroughItsBase) {
    Map<std::string, int>* map = new Numbers;
    (*map)["a"] = 1;
    EXPECT_EQ(map->size(), 1U);
    delete map;
}

/// A key that cannot be copied on wish, and that is never without a number.
struct FragileKey {
    static inline bool breaks = false;

    int number;
    explicit FragileKey(int n) : number(n) {}
    FragileKey(const FragileKey& other) : number(other.number) {
        if (breaks)
            throw std::runtime_error("not copied");
    }
    FragileKey& operator=(const FragileKey&) = delete;
    bool operator==(const FragileKey& other) const { return number == other.number; }
};

}  // namespace

template <>
struct DefaultHash<FragileKey, 32> {
    HashCode<32> operator()(const FragileKey& key) const { return DefaultHash<int>()(key.number); }
};

namespace {

TEST(LinkedHashMap, FailureToCopyAKeyLeavesTheMapAsItWas) {
    LinkedHashMap<FragileKey, std::string> map;
    const FragileKey key(1);
    FragileKey::breaks = true;
    EXPECT_THROW(map[key], std::runtime_error);
    FragileKey::breaks = false;
    EXPECT_EQ(map.size(), 0U);
    map[key] = "one";
    EXPECT_EQ(map[key], "one");
    FragileKey::breaks = true;
    EXPECT_THROW(map[FragileKey(2)], std::runtime_error);
    FragileKey::breaks = false;
    EXPECT_EQ(map.size(), 1U);
    EXPECT_EQ(map.lookup(key), "one");
}

TEST(KeyOperationsOfPairs, CreateThePairOfTheKeyAndAnEmptyValue) {
    using Pair = std::pair<const std::string, std::string>;
    Pair pair("old key, too long for a short string", "old value");
    KeyOperations<Pair>::createValue("new", pair);
    EXPECT_EQ(pair, Pair("new", ""));
    EXPECT_EQ(KeyOperations<Pair>::extract(pair), "new");
    EXPECT_TRUE(KeyOperations<Pair>::equals("a", "a"));
    EXPECT_FALSE(KeyOperations<Pair>::equals("a", "b"));
}

}  // namespace
}  // namespace moxtel::util
