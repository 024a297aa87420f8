#include <moxtel/pointer.hpp>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

#include "counted.hpp"

namespace moxtel::mem {
namespace {

using PointerConversion = CountedTest;

struct CountedWithText : Counted {
    using Counted::Counted;
    std::string text = "of the derived class";
};

struct Other {
    virtual ~Other() = default;
    int number = 7;
};

/// The second base class does not stand at the address of the object.
struct Both : Counted, Other {
    using Counted::Counted;
};

struct Plain {
    int number = 0;
};

struct DerivedPlain : Plain {};

/// Whether a base class that is converted to has another address than the object.
bool refused(const Pointer<Both>& handle) {
    try {
        const Pointer<Other> other(handle);
        return false;
    } catch (const UnsupportedOperationException& e) {
        EXPECT_STREQ(e.what(), "The base class is not at the object's address.");
        return true;
    }
}

TEST_F(PointerConversion, HandleOfADerivedClassBecomesOneOfItsBase) {
    const Pointer<CountedWithText> derived(new CountedWithText(5));
    Pointer<Counted> base = derived;
    EXPECT_EQ(base->value, 5);
    EXPECT_EQ(base, derived);
    Pointer<Counted> assigned;
    assigned = derived;
    EXPECT_EQ(assigned.get(), base.get());
}

TEST_F(PointerConversion, TheLastHandleOfTheBaseDestroysTheWholeObject) {
    {
        Pointer<Counted> base;
        {
            Pointer<CountedWithText> derived(new CountedWithText(5));
            base = derived;
        }
        EXPECT_EQ(Counted::alive, 1);
    }
    EXPECT_EQ(Counted::destroyed, std::vector<int>({5}));
}

TEST_F(PointerConversion, AMovedHandleOfADerivedClassGivesItsShareAway) {
    auto* object = new CountedWithText(5);
    {
        Pointer<CountedWithText> derived(object);
        const Pointer<Counted> base = std::move(derived);
        EXPECT_TRUE(derived == nullptr);
        EXPECT_EQ(base.get(), object);
    }
    EXPECT_EQ(policyOf(object), nullptr);
}

TEST_F(PointerConversion, AHandleBecomesOneOfAConstObject) {
    const Pointer<Counted> handle(new Counted(5));
    const Pointer<const Counted> constant = handle;
    EXPECT_EQ(constant, handle);
    const Pointer<const Counted> ofDerived = Pointer<CountedWithText>(new CountedWithText(6));
    EXPECT_EQ(ofDerived->value, 6);
}

TEST_F(PointerConversion, ABaseClassAtAnotherAddressIsRefusedAndNothingIsLost) {
    Pointer<Both> handle(new Both(5));
    EXPECT_TRUE(refused(handle));
    EXPECT_THROW(Pointer<Other>(std::move(handle)), UnsupportedOperationException);
    ASSERT_TRUE(handle != nullptr);
    EXPECT_EQ(handle->value, 5);
    const Pointer<Counted> first = handle;
    EXPECT_EQ(first->value, 5);
}

TEST_F(PointerConversion, ANullHandleConvertsToNull) {
    const Pointer<Both> none;
    EXPECT_FALSE(refused(none));
    const Pointer<Other> other = none;
    EXPECT_TRUE(other == nullptr);
}

TEST_F(PointerConversion, WhatWouldDestroyLessThanTheObjectDoesNotCompile) {
    static_assert(!std::is_convertible_v<Pointer<DerivedPlain>, Pointer<Plain>>);
    static_assert(!std::is_convertible_v<Pointer<Counted>, Pointer<CountedWithText>>);
    static_assert(!std::is_convertible_v<Pointer<const Counted>, Pointer<Counted>>);
    static_assert(!std::is_convertible_v<Counted*, Pointer<Counted>>);
    static_assert(std::is_convertible_v<Pointer<Plain>, Pointer<const Plain>>);
}

TEST_F(PointerConversion, HandlesAreEqualWhenTheyHoldTheSameObject) {
    const Pointer<Counted> one(new Counted(5));
    const Pointer<Counted> same(one);
    const Pointer<Counted> equalValue(new Counted(5));
    EXPECT_TRUE(one == same);
    EXPECT_TRUE(one != equalValue);
    EXPECT_TRUE(one != Pointer<CountedWithText>());
    EXPECT_TRUE(Pointer<Counted>() == Pointer<CountedWithText>());
}

TEST_F(PointerConversion, NullIsWrittenAsNullptr) {
    Pointer<Counted> handle = nullptr;
    EXPECT_TRUE(handle == nullptr);
    handle = Pointer<Counted>(new Counted(5));
    EXPECT_TRUE(nullptr != handle);
    handle = nullptr;
    EXPECT_EQ(Counted::alive, 0);
}

TEST_F(PointerConversion, GetGivesTheAddress) {
    auto* object = new Counted(5);
    Pointer<Counted> handle(object);
    EXPECT_EQ(handle.get(), object);
    static_assert(std::is_same_v<decltype(handle.get()), Counted*>);
    static_assert(std::is_same_v<decltype(std::as_const(handle).get()), const Counted*>);
    EXPECT_EQ(Pointer<Counted>().get(), nullptr);
}

}  // namespace
}  // namespace moxtel::mem
