#include <moxtel/memory.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "counted.hpp"
#include "recording_allocator.hpp"

namespace moxtel::mem {
namespace {

/// A policy that records its calls. Its records hold a number, and an address is to be destroyed
/// with the first release.
struct RecordingPolicy {
    static inline std::string calls;

    static std::size_t recordSize() { return sizeof(int); }
    static void initRecord(void* record) {
        new (record) int(42);
        calls += "init ";
    }
    static void freeRecord(void* record) { calls += "free" + number(record); }
    static void acquire(void* record) { calls += "acquire" + number(record); }
    static bool release(void* record) {
        calls += "release" + number(record);
        return true;
    }
    static std::string number(void* record) {
        return std::to_string(*static_cast<int*>(record)) + " ";
    }

    static constexpr Policy INSTANCE = {recordSize, initRecord, freeRecord, acquire, release};
};

std::size_t failingRecordSize() {
    throw std::bad_alloc();
}
constexpr Policy FAILING_POLICY = {failingRecordSize, nop, nop, nop, pfalse};

/// Hands out the same memory again and again, so that registrations of it get stale.
char sameMemory[64];
constexpr Allocator SAME_MEMORY = {[](std::size_t) -> void* { return sameMemory; }, nop};
constexpr Allocator EXHAUSTED = {[](std::size_t) -> void* { return nullptr; }, nop};

TEST(Acquire, FreshAddressIsAdoptedWithACountOf1) {
    void* ptr = ::operator new(8);
    EXPECT_TRUE(acquire(ptr));
    EXPECT_FALSE(acquire(ptr));
    EXPECT_FALSE(release(ptr));
    EXPECT_TRUE(release(ptr));
    EXPECT_EQ(policyOf(ptr), REFCOUNT_POLICY);
    EXPECT_EQ(allocatorOf(ptr), NEW);
    free(ptr);
    EXPECT_EQ(policyOf(ptr), nullptr);
    EXPECT_EQ(allocatorOf(ptr), nullptr);
}

TEST(Acquire, PolicyIsIgnoredForARegisteredAddress) {
    void* ptr = ::operator new(8);
    acquire(ptr);
    EXPECT_FALSE(acquire(ptr, NO_POLICY));
    EXPECT_EQ(policyOf(ptr), REFCOUNT_POLICY);
    free(ptr);
}

TEST(Acquire, NullIsNeverRegistered) {
    EXPECT_FALSE(acquire(nullptr));
    EXPECT_FALSE(release(nullptr));
    EXPECT_FALSE(protect(nullptr));
    free(nullptr);
    EXPECT_EQ(policyOf(nullptr), nullptr);
    EXPECT_EQ(allocatorOf(nullptr), nullptr);
}

TEST(Release, UnregisteredAddressIsNotToBeDestroyed) {
    const int object = 0;
    EXPECT_FALSE(release(&object));
}

TEST(Protect, RegistersMemoryThatIsNeverGivenBack) {
    int object = 0;
    EXPECT_TRUE(protect(&object));
    EXPECT_FALSE(protect(&object));
    EXPECT_EQ(allocatorOf(&object), STACK);
    EXPECT_EQ(policyOf(&object), REFCOUNT_POLICY);
    EXPECT_FALSE(acquire(&object));
    EXPECT_FALSE(release(&object));
    EXPECT_TRUE(release(&object));
    free(&object);
    EXPECT_EQ(policyOf(&object), nullptr);
}

TEST(Protect, LeavesARegisteredAddressAsItIs) {
    void* ptr = allocate(8, MALLOC);
    EXPECT_FALSE(protect(ptr, NO_POLICY));
    EXPECT_EQ(allocatorOf(ptr), MALLOC);
    EXPECT_EQ(policyOf(ptr), REFCOUNT_POLICY);
    free(ptr);
}

TEST(Free, AddressNeverRegisteredIsIgnored) {
    int object = 5;
    free(&object);
    EXPECT_EQ(object, 5);
    EXPECT_EQ(policyOf(&object), nullptr);
}

TEST(Free, RunsNoDestructor) {
    Counted::reset();
    void* ptr = allocate(sizeof(Counted));
    const Counted* counted = new (ptr) Counted(1);
    EXPECT_EQ(counted->value, 1);
    free(ptr);
    EXPECT_EQ(Counted::alive, 1);
}

TEST(Free, GivesTheMemoryBackToItsAllocator) {
    RecordingAllocator::reset();
    void* ptr = allocate(24, &RecordingAllocator::INSTANCE);
    EXPECT_EQ(RecordingAllocator::sizes, std::vector<std::size_t>({24}));
    EXPECT_EQ(allocatorOf(ptr), &RecordingAllocator::INSTANCE);
    EXPECT_EQ(RecordingAllocator::outstanding, 1);
    free(ptr);
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
    free(ptr);
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
}

TEST(Allocate, EveryAllocatorGivesRegisteredMemory) {
    for (const Allocator* allocator : {NEW, NEW_ARRAY, MALLOC}) {
        void* ptr = allocate(16, allocator);
        ASSERT_NE(ptr, nullptr);
        static_cast<char*>(ptr)[15] = 'x';
        EXPECT_EQ(allocatorOf(ptr), allocator);
        EXPECT_TRUE(release(ptr));
        free(ptr);
    }
}

TEST(Allocate, ExhaustedAllocatorGivesNullAndRegistersNothing) {
    EXPECT_EQ(allocate(16, &EXHAUSTED), nullptr);
    EXPECT_EQ(policyOf(nullptr), nullptr);
}

TEST(Allocate, StackAllocatorThrows) {
    EXPECT_THROW(allocate(16, STACK), std::bad_alloc);
}

TEST(Allocate, StaleRegistrationIsReplaced) {
    RecordingPolicy::calls.clear();
    EXPECT_EQ(allocate(16, &SAME_MEMORY, &RecordingPolicy::INSTANCE), sameMemory);
    EXPECT_EQ(allocate(16, &SAME_MEMORY, NO_POLICY), sameMemory);
    EXPECT_EQ(RecordingPolicy::calls, "init free42 ");
    EXPECT_EQ(policyOf(sameMemory), NO_POLICY);
    free(sameMemory);
    EXPECT_EQ(policyOf(sameMemory), nullptr);
}

TEST(Allocate, FailureToRegisterGivesTheMemoryBack) {
    RecordingAllocator::reset();
    EXPECT_THROW(allocate(16, &RecordingAllocator::INSTANCE, &FAILING_POLICY), std::bad_alloc);
    EXPECT_EQ(RecordingAllocator::sizes.size(), 1U);
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
}

TEST(Allocate, FailureToRegisterForgetsAStaleRegistration) {
    allocate(16, &SAME_MEMORY, NO_POLICY);
    EXPECT_THROW(allocate(16, &SAME_MEMORY, &FAILING_POLICY), std::bad_alloc);
    EXPECT_EQ(policyOf(sameMemory), nullptr);
}

TEST(Allocate, FailureToAdoptRegistersNothing) {
    const int object = 0;
    EXPECT_THROW(acquire(&object, &FAILING_POLICY), std::bad_alloc);
    EXPECT_THROW(protect(&object, &FAILING_POLICY), std::bad_alloc);
    EXPECT_EQ(policyOf(&object), nullptr);
}

TEST(PolicyOfOnesOwn, RecordThatCouldNotBeInitialisedIsNotFreed) {
    static constexpr Policy UNINITIALISED = {RecordingPolicy::recordSize,
                                             [](void*) { throw std::bad_alloc(); },
                                             RecordingPolicy::freeRecord, nop, pfalse};
    RecordingPolicy::calls.clear();
    RecordingAllocator::reset();
    const int object = 0;
    EXPECT_THROW(allocate(16, &RecordingAllocator::INSTANCE, &UNINITIALISED), std::bad_alloc);
    EXPECT_THROW(acquire(&object, &UNINITIALISED), std::bad_alloc);
    EXPECT_THROW(protect(&object, &UNINITIALISED), std::bad_alloc);
    EXPECT_EQ(RecordingPolicy::calls, "");
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
    EXPECT_EQ(policyOf(&object), nullptr);
}

TEST(PolicyOfOnesOwn, IsAskedForEveryStepOfALifetime) {
    RecordingPolicy::calls.clear();
    void* ptr = allocate(8, nullptr, &RecordingPolicy::INSTANCE);
    EXPECT_FALSE(acquire(ptr));
    EXPECT_TRUE(release(ptr));
    free(ptr);
    EXPECT_EQ(RecordingPolicy::calls, "init acquire42 release42 free42 ");
}

TEST(NoPolicy, NeverDestroys) {
    void* ptr = allocate(8, nullptr, NO_POLICY);
    EXPECT_FALSE(acquire(ptr));
    for (int n = 0; n < 3; ++n)
        EXPECT_FALSE(release(ptr));
    free(ptr);
}

TEST(RefcountPolicy, RecordIsA32BitCountOfOwners) {
    EXPECT_EQ(REFCOUNT_POLICY->recordSize(), 4U);
    std::uint32_t count = 99;
    REFCOUNT_POLICY->initRecord(&count);
    EXPECT_EQ(count, 1U);
    REFCOUNT_POLICY->acquire(&count);
    EXPECT_EQ(count, 2U);
    EXPECT_FALSE(REFCOUNT_POLICY->release(&count));
    EXPECT_TRUE(REFCOUNT_POLICY->release(&count));
    EXPECT_EQ(count, 0U);
    REFCOUNT_POLICY->freeRecord(&count);
    EXPECT_EQ(count, 0U);
}

TEST(Defaults, AreTheReferenceCountAndScalarNew) {
    EXPECT_EQ(&defaultPolicy(), REFCOUNT_POLICY);
    EXPECT_EQ(&defaultAllocator(), NEW);
}

TEST(Defaults, InstallingGivesThePreviousOne) {
    EXPECT_EQ(&defaultPolicy(*NO_POLICY), REFCOUNT_POLICY);
    EXPECT_EQ(&defaultAllocator(*MALLOC), NEW);
    void* ptr = allocate(8);
    EXPECT_EQ(policyOf(ptr), NO_POLICY);
    EXPECT_EQ(allocatorOf(ptr), MALLOC);
    EXPECT_EQ(&defaultPolicy(*REFCOUNT_POLICY), NO_POLICY);
    EXPECT_EQ(&defaultAllocator(*NEW), MALLOC);
    free(ptr);
}

TEST(TrivialMembers, DoNothing) {
    int record = 5;
    nop(&record);
    EXPECT_FALSE(pfalse(&record));
    EXPECT_EQ(rsize0(), 0U);
    EXPECT_EQ(record, 5);
    EXPECT_EQ(NO_POLICY->recordSize, &rsize0);
    EXPECT_EQ(NO_POLICY->initRecord, &nop);
    EXPECT_EQ(NO_POLICY->freeRecord, &nop);
    EXPECT_EQ(NO_POLICY->acquire, &nop);
    EXPECT_EQ(NO_POLICY->release, &pfalse);
    EXPECT_EQ(REFCOUNT_POLICY->freeRecord, &nop);
    EXPECT_EQ(STACK->free, &nop);
}

TEST(Npos, IsTheLargestSize) {
    EXPECT_EQ(NPOS, std::numeric_limits<std::size_t>::max());
}

TEST(MakeInBounds, CutsARunToTheBuffer) {
    struct Row {
        std::size_t offset, count, size, answer;
    };
    const Row rows[] = {
        {8, 5, 10, 2},    {10, 1, 10, 0},   {0, 20, 10, 10},
        {0, 10, 10, 10},  {3, 4, 10, 4},    {3, 7, 10, 7},
        {3, 8, 10, 7},    {11, 1, 10, 0},   {0, 0, 0, 0},
        {0, 1, 0, 0},     {9, 1, 10, 1},    {5, 0, 10, 0},
        {5, NPOS, 10, 5}, {NPOS, 5, 10, 0}, {1, NPOS, NPOS, NPOS - 1},
    };
    for (const Row& row : rows)
        EXPECT_EQ(makeInBounds(row.offset, row.count, row.size), row.answer)
            << row.offset << ", " << row.count << ", " << row.size;
}

TEST(DoArrayDestruction, DestroysInAscendingOrder) {
    Counted::reset();
    alignas(Counted) unsigned char memory[3 * sizeof(Counted)];
    auto* first = reinterpret_cast<Counted*>(memory);
    for (int i = 0; i < 3; ++i)
        new (first + i) Counted(i);
    doArrayDestruction(first, 3);
    EXPECT_EQ(Counted::destroyed, std::vector<int>({0, 1, 2}));
    EXPECT_EQ(Counted::alive, 0);
}

}  // namespace
}  // namespace moxtel::mem
