#include <moxtel/pointer.hpp>

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "counted.hpp"
#include "recording_allocator.hpp"

namespace moxtel::mem {
namespace {

using PointerTest = CountedTest;

TEST_F(PointerTest, IsOneWord) {
    EXPECT_EQ(sizeof(Pointer<Counted>), sizeof(void*));
}

TEST_F(PointerTest, DefaultIsNull) {
    const Pointer<Counted> none;
    EXPECT_FALSE(static_cast<bool>(none));
    EXPECT_EQ(none.operator->(), nullptr);
    const std::vector<Pointer<Counted>> copies(2, none);
    EXPECT_FALSE(static_cast<bool>(copies[1]));
    const Pointer<Counted> null(static_cast<Counted*>(nullptr));
    EXPECT_FALSE(static_cast<bool>(null));
}

TEST_F(PointerTest, FreshObjectIsAdoptedAndDestroyedByTheLastHandle) {
    auto* object = new Counted(5);
    {
        Pointer<Counted> first(object);
        EXPECT_TRUE(static_cast<bool>(first));
        EXPECT_EQ(policyOf(object), REFCOUNT_POLICY);
        EXPECT_EQ(allocatorOf(object), NEW);
        {
            const std::vector<Pointer<Counted>> copies(3, first);
            EXPECT_EQ(copies[2]->value, 5);
        }
        EXPECT_EQ(Counted::alive, 1);
        first->value = 6;
        EXPECT_EQ((*first).value, 6);
    }
    EXPECT_EQ(Counted::destroyed, std::vector<int>({6}));
    EXPECT_EQ(policyOf(object), nullptr);
}

TEST_F(PointerTest, HandleOfARegisteredAddressSharesIt) {
    auto* object = new Counted(5);
    {
        Pointer<Counted> first(object);
        { Pointer<Counted> second(object); }
        EXPECT_EQ(Counted::alive, 1);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST_F(PointerTest, ProtectedStackObjectIsNeitherDestroyedNorFreed) {
    {
        Counted object(5);
        EXPECT_TRUE(protect(&object));
        {
            Pointer<Counted> handle(&object);
            const std::vector<Pointer<Counted>> copies(3, handle);
        }
        EXPECT_EQ(Counted::alive, 1);
        EXPECT_EQ(allocatorOf(&object), STACK);
        EXPECT_TRUE(release(&object));
        mem::free(&object);
    }
    EXPECT_EQ(Counted::destroyed, std::vector<int>({5}));
}

TEST_F(PointerTest, ObjectWithoutAPolicyIsNeverDestroyed) {
    auto* object = new Counted(5);
    { Pointer<Counted> handle(object, NO_POLICY); }
    EXPECT_EQ(Counted::alive, 1);
    object->~Counted();
    mem::free(object);
}

TEST_F(PointerTest, MemoryGoesBackToItsAllocator) {
    RecordingAllocator::reset();
    void* memory = allocate(sizeof(Counted), &RecordingAllocator::INSTANCE);
    {
        Pointer<Counted> handle(new (memory) Counted(5));
        EXPECT_FALSE(release(memory));  // the share of whoever allocated it
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
}

TEST_F(PointerTest, AdoptedMemoryGoesBackToTheDefaultAllocatorOfThatTime) {
    RecordingAllocator::reset();
    void* memory = RecordingAllocator::allocate(sizeof(Counted));
    const Allocator& previous = defaultAllocator(RecordingAllocator::INSTANCE);
    {
        const Pointer<Counted> handle(new (memory) Counted(5));
        defaultAllocator(previous);
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
}

TEST_F(PointerTest, PolicyOfOnesOwnDecidesWhenTheObjectGoes) {
    static bool pinned = true;
    static constexpr Policy PINNING = {rsize0, nop, nop, nop, [](void*) { return !pinned; }};
    auto* object = new Counted(5);
    { const Pointer<Counted> handle(object, &PINNING); }
    { const Pointer<Counted> handle(object); }
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(policyOf(object), &PINNING);
    pinned = false;
    { const Pointer<Counted> handle(object); }
    EXPECT_EQ(Counted::destroyed, std::vector<int>({5}));
    EXPECT_EQ(policyOf(object), nullptr);
}

TEST_F(PointerTest, AssignmentReleasesTheOldObjectAndSharesTheNew) {
    Pointer<Counted> a(new Counted(1));
    Pointer<Counted> b(new Counted(2));
    a = b;
    EXPECT_EQ(Counted::destroyed, std::vector<int>({1}));
    EXPECT_EQ(a->value, 2);
    b = Pointer<Counted>();
    EXPECT_EQ(Counted::alive, 1);
    a = b;
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_FALSE(static_cast<bool>(a));
}

TEST_F(PointerTest, AssignmentOfTheSameAddressChangesNothing) {
    Pointer<Counted> a(new Counted(1));
    const Pointer<Counted> b(a);
    a = b;
    const Pointer<Counted>& self = a;
    a = self;
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(a->value, 1);
}

struct Chain : Counted {
    using Counted::Counted;
    Pointer<Chain> next;
};

TEST_F(PointerTest, HandleMayBeAssignedFromWithinTheObjectItReleases) {
    Pointer<Chain> head(new Chain(1));
    head->next = Pointer<Chain>(new Chain(2));
    head = head->next;
    EXPECT_EQ(Counted::destroyed, std::vector<int>({1}));
    EXPECT_EQ(head->value, 2);
}

TEST_F(PointerTest, AssignmentAcquiresOnceBeforeItReleases) {
    static std::string calls;
    static constexpr Policy RECORDING = {rsize0, nop, nop, [](void*) { calls += "acquire "; },
                                         [](void*) {
                                             calls += "release ";
                                             return false;
                                         }};
    Counted old(1);
    Counted fresh(2);
    protect(&old, &RECORDING);
    protect(&fresh, &RECORDING);
    {
        Pointer<Counted> target(&old);
        const Pointer<Counted> source(&fresh);
        calls.clear();
        target = source;
        EXPECT_EQ(calls, "acquire release ");
        EXPECT_EQ(target->value, 2);
        calls.clear();
        target = source;
        target = Pointer<Counted>();
        EXPECT_EQ(calls, "release ");
    }
    mem::free(&old);
    mem::free(&fresh);
}

struct Derived : Counted {
    explicit Derived(bool& gone) : m_gone(gone) {}
    ~Derived() override { m_gone = true; }

  private:
    bool& m_gone;
};

TEST_F(PointerTest, DestroysThroughAVirtualDestructor) {
    bool gone = false;
    { Pointer<Counted> handle(new Derived(gone)); }
    EXPECT_TRUE(gone);
}

TEST_F(PointerTest, ConstHandleGivesConstAccess) {
    const Pointer<Counted> handle(new Counted(5));
    static_assert(std::is_same_v<decltype(*handle), const Counted&>);
    static_assert(std::is_same_v<decltype(handle.operator->()), const Counted*>);
    EXPECT_EQ(handle->value + (*handle).value, 10);
}

TEST_F(PointerTest, HoldsAConstObject) {
    const Pointer<const Counted> handle(new Counted(5));
    EXPECT_EQ(handle->value, 5);
}

TEST_F(PointerTest, ObjectIsDestroyedWhenItCannotBeRegistered) {
    static constexpr Policy FAILING = {[]() -> std::size_t { throw std::bad_alloc(); }, nop, nop,
                                       nop, pfalse};
    EXPECT_THROW(Pointer<Counted>(new Counted(5), &FAILING), std::bad_alloc);
    EXPECT_EQ(Counted::destroyed, std::vector<int>({5}));
}

struct AllocatesItself {
    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void operator delete(void* ptr) { ::operator delete(ptr); }
};

struct FreesItself {
    static void operator delete(void* ptr, std::size_t) { ::operator delete(ptr); }
};

struct alignas(4 * __STDCPP_DEFAULT_NEW_ALIGNMENT__) OverAligned {
    char byte;
};

TEST_F(PointerTest, ObjectsThatTheDefaultAllocatorCannotFreeAreRefused) {
    static_assert(!isManageable<AllocatesItself>() && !isManageable<const AllocatesItself>());
    static_assert(!isManageable<FreesItself>());
    static_assert(!isManageable<OverAligned>());
    static_assert(isManageable<Counted>() && isManageable<const Derived>() && isManageable<int>());
}

}  // namespace
}  // namespace moxtel::mem
