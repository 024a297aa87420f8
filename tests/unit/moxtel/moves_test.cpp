/// Moves of handles and containers: nothing is counted, nothing throws, and what was moved from is
/// empty.

#include <moxtel/pointer.hpp>
#include <moxtel/set.hpp>

#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/alphabet.hpp>

#include "counted.hpp"

namespace moxtel {
namespace {

using mem::Array;
using mem::Iterator;
using mem::Pointer;
using string::Alphabet;
using util::LinkedHashMap;
using util::LinkedHashSet;

template <class... Types>
constexpr bool MOVE_WITHOUT_THROWING = ((std::is_nothrow_move_constructible_v<Types> &&
                                         std::is_nothrow_move_assignable_v<Types>)&&...);

static_assert(MOVE_WITHOUT_THROWING<Pointer<int>, Array<std::string>, Iterator<int>, Alphabet,
                                    LinkedHashSet<std::string>, LinkedHashMap<std::string, int>>);

/// Counts the owners that come and go, and never destroys.
struct Recorded {
    static inline int acquired = 0;
    static inline int released = 0;
    static constexpr mem::Policy POLICY = {mem::rsize0, mem::nop, mem::nop,
                                           [](void*) { ++acquired; },
                                           [](void*) {
                                               ++released;
                                               return false;
                                           }};
};

TEST(HandleMove, TakesTheShareAndLeavesNull) {
    int number = 5;
    mem::protect(&number, &Recorded::POLICY);
    Pointer<int> first(&number);
    Recorded::acquired = Recorded::released = 0;
    Pointer<int> second(std::move(first));
    EXPECT_TRUE(first == nullptr);
    first = std::move(second);
    EXPECT_TRUE(second == nullptr);
    EXPECT_EQ(first.get(), &number);
    EXPECT_EQ(Recorded::acquired, 0);
    EXPECT_EQ(Recorded::released, 0);
    first = nullptr;
    EXPECT_EQ(Recorded::released, 1);
    mem::free(&number);
}

TEST(HandleMove, AVectorGrowsWithoutCounting) {
    int number = 5;
    mem::protect(&number, &Recorded::POLICY);
    std::vector<Pointer<int>> handles(3, Pointer<int>(&number));
    Recorded::acquired = Recorded::released = 0;
    handles.reserve(2 * handles.capacity());
    EXPECT_EQ(Recorded::acquired, 0);
    EXPECT_EQ(Recorded::released, 0);
    handles.clear();
    EXPECT_EQ(Recorded::released, 3);
    mem::free(&number);
}

TEST(HandleMove, AssignmentGivesUpWhatWasHeldBefore) {
    Counted::reset();
    Pointer<Counted> target(new Counted(1));
    Pointer<Counted> source(new Counted(2));
    target = std::move(source);
    EXPECT_EQ(Counted::destroyed, std::vector<int>({1}));
    EXPECT_EQ(target->value, 2);
    Pointer<Counted>& self = target;
    target = std::move(self);
    ASSERT_TRUE(target != nullptr);
    EXPECT_EQ(target->value, 2);
}

TEST(HandleMove, OfTwoHandlesOfOneObjectLeavesOneShare) {
    Counted::reset();
    {
        Pointer<Counted> target(new Counted(1));
        Pointer<Counted> source(target);
        target = std::move(source);
        EXPECT_EQ(Counted::alive, 1);
        EXPECT_TRUE(source == nullptr);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(ArrayMove, TakesTheBufferAndLeavesNone) {
    Counted::reset();
    {
        Array<Counted> first(2);
        const Counted* elements = first.pointer();
        Array<Counted> second(std::move(first));
        EXPECT_EQ(first.pointer(), nullptr);
        EXPECT_EQ(first.size(), 0U);
        EXPECT_EQ(second.pointer(), elements);
        Array<Counted> third(1);
        third = std::move(second);
        EXPECT_EQ(Counted::alive, 2);
        EXPECT_EQ(third.pointer(), elements);
        Array<Counted>& self = third;
        third = std::move(self);
        EXPECT_EQ(third.size(), 2U);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(IteratorMove, LeavesNoElement) {
    LinkedHashSet<std::string> set;
    set.add("a");
    auto walk = set.iterator();
    auto moved = std::move(walk);
    EXPECT_FALSE(walk.hasNext());
    EXPECT_EQ(*moved, "a");
    EXPECT_FALSE(Iterator<int>().hasNext());
}

using Texts = std::vector<std::string>;

LinkedHashSet<std::string> setOf(const Texts& texts) {
    LinkedHashSet<std::string> set(2);
    for (const std::string& text : texts)
        set.add(text);
    return set;
}

TEST(SetMove, TakesTheValuesWhereTheyAre) {
    LinkedHashSet<std::string> source = setOf({"c", "a", "b"});
    const std::string* value = &source["a"];
    LinkedHashSet<std::string> target(std::move(source));
    EXPECT_EQ(Texts(target.begin(), target.end()), Texts({"c", "a", "b"}));
    EXPECT_EQ(&target["a"], value);
    target.eraseByKey("b");
    target.add("d");
    EXPECT_EQ(Texts(target.begin(), target.end()), Texts({"c", "a", "d"}));
}

TEST(SetMove, LeavesAnEmptySetThatTakesValues) {
    LinkedHashSet<std::string> source = setOf({"c", "a"});
    const LinkedHashSet<std::string> target(std::move(source));
    EXPECT_EQ(source.size(), 0U);
    EXPECT_FALSE(source.containsKey("a"));
    EXPECT_TRUE(source.begin() == source.end());
    EXPECT_FALSE(source.iterator().hasNext());
    source.eraseByKey("a");
    source.clear();
    EXPECT_TRUE(source.add("z"));
    EXPECT_TRUE(source.add("y"));
    EXPECT_EQ(Texts(source.begin(), source.end()), Texts({"z", "y"}));
    EXPECT_EQ(target.size(), 2U);
}

TEST(SetMove, AssignmentDestroysTheOldValues) {
    LinkedHashSet<std::string> source = setOf({"c", "a"});
    LinkedHashSet<std::string> target = setOf({"old"});
    target = std::move(source);
    EXPECT_EQ(Texts(target.begin(), target.end()), Texts({"c", "a"}));
    EXPECT_FALSE(target.containsKey("old"));
    LinkedHashSet<std::string>& self = target;
    target = std::move(self);
    EXPECT_EQ(target.size(), 2U);
    target.clear();
    target = setOf({"new"});
    EXPECT_TRUE(target.containsKey("new"));
}

TEST(SetMove, TakesTheHookAlong) {
    class Exclaim : public util::Set<std::string>::EntryActions {
      public:
        void created(std::string& value) override {
            value += "";
            ++made;
        }
        int made = 0;
    };
    auto* hook = new Exclaim;
    LinkedHashSet<std::string> source;
    source.setEntryActions(Pointer<util::Set<std::string>::EntryActions>(hook));
    LinkedHashSet<std::string> target(std::move(source));
    source.add("a");
    EXPECT_EQ(hook->made, 0);
    target.add("a");
    EXPECT_EQ(hook->made, 1);
}

TEST(MapMove, TakesThePairs) {
    LinkedHashMap<std::string, int> source;
    source["b"] = 2;
    source["a"] = 1;
    LinkedHashMap<std::string, int> target(std::move(source));
    EXPECT_EQ(source.size(), 0U);
    EXPECT_EQ(target["b"], 2);
    source["c"] = 3;
    target = std::move(source);
    EXPECT_EQ(target.size(), 1U);
    EXPECT_EQ(target["c"], 3);
}

}  // namespace
}  // namespace moxtel
