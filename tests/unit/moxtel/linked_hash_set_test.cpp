#include <moxtel/linked_hash_set.hpp>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "counted.hpp"

namespace moxtel::util {

/// Counted values are told apart by their number.
template <>
struct KeyOperations<Counted> {
    static int extract(const Counted& counted) { return counted.value; }
    static bool equals(int a, int b) { return a == b; }
    static void createValue(int key, Counted& counted) { counted.value = key; }
};

namespace {

using Texts = std::vector<std::string>;

Texts valuesOf(const LinkedHashSet<std::string>& set) {
    Texts values;
    for (auto i = set.iterator(); i.hasNext(); i.next())
        values.push_back(i.current());
    return values;
}

void addAll(LinkedHashSet<std::string>& set, const Texts& values) {
    for (const std::string& value : values)
        set.add(value);
}

TEST(LinkedHashSet, NewSetIsEmpty) {
    const LinkedHashSet<std::string> set;
    EXPECT_EQ(set.size(), 0U);
    EXPECT_FALSE(set.containsKey(""));
    EXPECT_FALSE(set.iterator().hasNext());
}

TEST(LinkedHashSet, IsWalkedInTheOrderOfInsertion) {
    LinkedHashSet<std::string> set;
    addAll(set, {"c", "a", "b"});
    EXPECT_EQ(valuesOf(set), Texts({"c", "a", "b"}));
}

TEST(LinkedHashSet, KeyErasedAndAddedAgainGoesToTheEnd) {
    LinkedHashSet<std::string> set;
    addAll(set, {"c", "a", "b"});
    set.eraseByKey("a");
    EXPECT_EQ(valuesOf(set), Texts({"c", "b"}));
    EXPECT_TRUE(set.add("a"));
    EXPECT_EQ(valuesOf(set), Texts({"c", "b", "a"}));
}

TEST(LinkedHashSet, ErasingTheOnlyElementLeavesNoCurrentElement) {
    LinkedHashSet<std::string> set;
    set.add("a");
    set.eraseByKey("a");
    EXPECT_EQ(set.size(), 0U);
    EXPECT_FALSE(set.containsKey("a"));
    EXPECT_FALSE(set.iterator().hasNext());
}

TEST(LinkedHashSet, ErasingAnAbsentKeyIsIgnored) {
    LinkedHashSet<std::string> set(1);
    set.eraseByKey("a");
    addAll(set, {"b", "c"});
    set.eraseByKey("a");
    EXPECT_EQ(valuesOf(set), Texts({"b", "c"}));
}

TEST(LinkedHashSet, EveryOrderOfErasureLeavesTheOthersInOrder) {
    for (const std::size_t buckets : {1U, 2U, 251U}) {
        Texts erasures = {"a", "b", "c", "d"};
        do {
            LinkedHashSet<std::string> set(buckets);
            Texts left = {"a", "b", "c", "d"};
            addAll(set, left);
            for (const std::string& key : erasures) {
                set.eraseByKey(key);
                std::erase(left, key);
                ASSERT_EQ(valuesOf(set), left);
                ASSERT_EQ(set.size(), left.size());
                ASSERT_FALSE(set.containsKey(key));
                for (const std::string& other : left)
                    ASSERT_TRUE(set.containsKey(other));
            }
            set.add("e");
            ASSERT_EQ(valuesOf(set), Texts({"e"}));
        } while (std::next_permutation(erasures.begin(), erasures.end()));
    }
}

TEST(LinkedHashSet, AddRefusesAKeyThatIsThere) {
    LinkedHashSet<std::string> set;
    EXPECT_TRUE(set.add("a"));
    EXPECT_TRUE(set.add("b"));
    EXPECT_FALSE(set.add("a"));
    EXPECT_EQ(valuesOf(set), Texts({"a", "b"}));
}

TEST(LinkedHashSet, IndexOperatorPutsAnAbsentKeyIn) {
    LinkedHashSet<std::string> set;
    EXPECT_EQ(set["a"], "a");
    EXPECT_EQ(set.size(), 1U);
    EXPECT_EQ(&set["a"], &set.lookupByKey("a", false));
    EXPECT_EQ(set.size(), 1U);
}

TEST(LinkedHashSet, LookupOfAnAbsentKeyThrowsWithoutCreation) {
    LinkedHashSet<std::string> set;
    const LinkedHashSet<std::string>& constSet = set;
    const auto messageOf = [](const auto& lookup) {
        try {
            lookup();
        } catch (const NotFoundException& e) {
            return std::string(e.what());
        }
        return std::string("nothing thrown");
    };
    EXPECT_EQ(messageOf([&] { set.lookupByKey("a", false); }), "Key not found\n");
    EXPECT_EQ(messageOf([&] { constSet.lookupByKey("a"); }), "Key not found\n");
    EXPECT_EQ(messageOf([&] { constSet["a"]; }), "Key not found\n");
    EXPECT_EQ(set.size(), 0U);
}

TEST(LinkedHashSet, LookupByIndexFollowsTheWalk) {
    LinkedHashSet<std::string> set;
    addAll(set, {"c", "a", "b"});
    const LinkedHashSet<std::string>& constSet = set;
    EXPECT_EQ(set.lookupByIndex(0), "c");
    EXPECT_EQ(set.lookupByIndex(2), "b");
    EXPECT_EQ(constSet.lookupByIndex(1), "a");
    try {
        set.lookupByIndex(3);
        ADD_FAILURE() << "nothing thrown";
    } catch (const NotFoundException& e) {
        EXPECT_STREQ(e.what(), "Index not found\n");
    }
}

TEST(LinkedHashSet, ValuesCanBeChangedThroughTheIterator) {
    LinkedHashSet<Counted> set;
    set[1];
    auto i = set.iterator();
    static_assert(std::is_same_v<decltype(i.current()), Counted&>);
    EXPECT_EQ(&i.current(), &set[1]);
    const LinkedHashSet<Counted>& constSet = set;
    static_assert(std::is_same_v<decltype(constSet.iterator().current()), const Counted&>);
    EXPECT_EQ(&constSet.iterator().current(), &constSet[1]);
}

TEST(LinkedHashSet, IteratorSeesElementsAddedBehindIt) {
    LinkedHashSet<std::string> set;
    addAll(set, {"a", "b"});
    auto i = set.iterator();
    set.add("c");
    Texts seen;
    for (; i.hasNext(); i.next())
        seen.push_back(i.current());
    EXPECT_EQ(seen, Texts({"a", "b", "c"}));
}

TEST(LinkedHashSet, OthersThanTheCurrentElementMayBeErasedDuringAWalk) {
    const Texts keys = {"a", "b", "c", "d"};
    for (const std::string& at : keys)
        for (const std::string& erased : keys) {
            if (at == erased)
                continue;
            LinkedHashSet<std::string> set;
            addAll(set, keys);
            Texts expected = keys;
            if (erased > at)
                std::erase(expected, erased);
            Texts walked;
            for (auto i = set.iterator(); i && walked.size() <= keys.size(); ++i) {
                walked.push_back(*i);
                if (*i == at)
                    set.eraseByKey(erased);
            }
            EXPECT_EQ(walked, expected) << erased << " erased at " << at;
        }
}

TEST(LinkedHashSet, EachElementMayBeErasedOnceTheWalkHasLeftIt) {
    LinkedHashSet<std::string> set;
    addAll(set, {"a", "b", "c"});
    Texts walked;
    for (auto i = set.iterator(); i && walked.size() <= 3;) {
        const std::string key = *i;
        ++i;
        set.eraseByKey(key);
        walked.push_back(key);
    }
    EXPECT_EQ(walked, (Texts{"a", "b", "c"}));
    EXPECT_EQ(set.size(), 0U);
}

TEST(LinkedHashSet, DestructionDestroysEveryValue) {
    Counted::reset();
    {
        LinkedHashSet<Counted> set(2);
        for (int key = 0; key < 9; ++key)
            set[key];
        set.eraseByKey(4);
        EXPECT_EQ(Counted::alive, 8);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(LinkedHashSet, ClearedSetIsEmptyAndCanBeDestroyed) {
    Counted::reset();
    {
        LinkedHashSet<Counted> set(2);
        for (int key = 0; key < 9; ++key)
            set[key];
        set.clear();
        EXPECT_EQ(Counted::alive, 0);
        EXPECT_EQ(set.size(), 0U);
        EXPECT_FALSE(set.iterator().hasNext());
        set.clear();
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(LinkedHashSet, ClearDestroysAChainFromItsHead) {
    Counted::reset();
    LinkedHashSet<Counted> set(1);
    for (const int key : {3, 1, 2})
        set[key];
    Counted::destroyed.clear();
    set.clear();
    EXPECT_EQ(Counted::destroyed, std::vector<int>({3, 1, 2}));
}

TEST(LinkedHashSet, FailureWhileAValueIsMadeLeavesTheSetAsItWas) {
    Counted::reset();
    {
        LinkedHashSet<Counted> set(1);
        set[1];
        for (int successes = 0; successes < 2; ++successes) {
            Counted::untilFailure = successes;
            EXPECT_THROW(set[2], std::runtime_error);
            Counted::untilFailure = -1;
            EXPECT_EQ(set.size(), 1U);
            EXPECT_FALSE(set.containsKey(2));
            EXPECT_EQ(Counted::alive, 1);
        }
    }
    EXPECT_EQ(Counted::alive, 0);
}

/// A value whose assignment fails on wish.
struct Stubborn {
    static inline bool refuses = false;

    int key = 0;
    Stubborn() = default;
    explicit Stubborn(int k) : key(k) {}
    Stubborn(const Stubborn&) = default;
    Stubborn& operator=(const Stubborn& other) {
        if (refuses)
            throw std::runtime_error("not assigned");
        key = other.key;
        return *this;
    }
};

struct StubbornKeys {
    static int extract(const Stubborn& value) { return value.key; }
    static bool equals(int a, int b) { return a == b; }
    static void createValue(int key, Stubborn& value) { value.key = key; }
};

TEST(LinkedHashSet, FailureWhileAValueIsAddedLeavesTheSetAsItWas) {
    LinkedHashSet<Stubborn, StubbornKeys> set;
    set.add(Stubborn(1));
    Stubborn::refuses = true;
    EXPECT_THROW(set.add(Stubborn(2)), std::runtime_error);
    Stubborn::refuses = false;
    EXPECT_EQ(set.size(), 1U);
    EXPECT_FALSE(set.containsKey(2));
}

/// A record of a set, with a field that its key does not determine.
struct Account {
    int number = 0;
    std::string owner;
};

struct AccountKeys {
    static int extract(const Account& account) { return account.number; }
    static bool equals(int a, int b) { return a == b; }
    static void createValue(int key, Account& account) { account.number = key; }
};

using Accounts = LinkedHashSet<Account, AccountKeys>;

TEST(LinkedHashSet, KeyOperationsDecideWhatTheKeyIs) {
    Accounts accounts;
    EXPECT_TRUE(accounts.add({7, "Ada"}));
    EXPECT_FALSE(accounts.add({7, "Bob"}));
    EXPECT_EQ(accounts[7].owner, "Ada");
    EXPECT_EQ(accounts[8].owner, "");
    EXPECT_EQ(accounts[8].number, 8);
}

class NamingActions : public Accounts::EntryActions {
  public:
    void created(Account& account) override {
        if (account.number < 0)
            throw std::domain_error("negative");
        account.owner = "owner of " + std::to_string(account.number);
    }
};

TEST(EntryActions, CompleteEachNewValue) {
    Accounts accounts;
    accounts[1];
    accounts.setEntryActions(mem::Pointer<Accounts::EntryActions>(new NamingActions));
    EXPECT_EQ(accounts[1].owner, "");
    EXPECT_EQ(accounts[2].owner, "owner of 2");
    EXPECT_EQ(accounts.createValueFromKey(3).owner, "owner of 3");
    EXPECT_FALSE(accounts.containsKey(3));
    accounts.setEntryActions({});
    EXPECT_EQ(accounts[4].owner, "");
}

TEST(EntryActions, AddedValueReplacesWhatTheyMade) {
    Accounts accounts;
    accounts.setEntryActions(mem::Pointer<Accounts::EntryActions>(new NamingActions));
    accounts.add({5, "Eve"});
    EXPECT_EQ(accounts[5].owner, "Eve");
}

TEST(EntryActions, WhatTheyThrowLeavesTheSetAsItWas) {
    Accounts accounts(1);
    accounts[1];
    accounts.setEntryActions(mem::Pointer<Accounts::EntryActions>(new NamingActions));
    EXPECT_THROW(accounts[-1], std::domain_error);
    EXPECT_EQ(accounts.size(), 1U);
    EXPECT_FALSE(accounts.containsKey(-1));
}

}  // namespace
}  // namespace moxtel::util
