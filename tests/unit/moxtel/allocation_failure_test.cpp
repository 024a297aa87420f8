#include "allocation_failure.hpp"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>
#include <moxtel/pointer.hpp>

namespace moxtel {
namespace {

/// A class whose default constructor allocates.
struct Heavy {
    std::string text = longText();

    bool operator==(const Heavy&) const = default;
};

// Registration.

TEST(AllocationFailure, AllocateRegistersOrGivesTheMemoryBack) {
    for (const mem::Allocator* allocator : {mem::NEW, mem::NEW_ARRAY, mem::MALLOC}) {
        withEveryAllocationFailing([allocator](const Attempt& attempt) {
            void* ptr = nullptr;
            attempt([&] { ptr = mem::allocate(24, allocator); });
            EXPECT_EQ(mem::allocatorOf(ptr), ptr == nullptr ? nullptr : allocator);
            mem::free(ptr);
        });
    }
}

TEST(AllocationFailure, AllocateLeavesNoStaleRegistrationBehind) {
    static char sameMemory[16];
    static constexpr mem::Allocator SAME_MEMORY = {[](std::size_t) -> void* { return sameMemory; },
                                                   mem::nop};
    withEveryAllocationFailing([](const Attempt& attempt) {
        mem::allocate(8, &SAME_MEMORY, mem::NO_POLICY);
        const bool allocated = attempt([] { mem::allocate(8, &SAME_MEMORY); });
        EXPECT_EQ(mem::policyOf(sameMemory), allocated ? mem::REFCOUNT_POLICY : nullptr);
        mem::free(sameMemory);
    });
}

TEST(AllocationFailure, ProtectAndAcquireRegisterOrDoNothing) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        int object = 5;
        int neighbour = 6;
        mem::protect(&neighbour);
        const bool isProtected = attempt([&] { mem::protect(&object); });
        EXPECT_EQ(mem::allocatorOf(&object), isProtected ? mem::STACK : nullptr);
        EXPECT_EQ(mem::allocatorOf(&neighbour), mem::STACK);
        mem::free(&object);
        mem::free(&neighbour);
    });
    withEveryAllocationFailing([](const Attempt& attempt) {
        void* ptr = ::operator new(8);
        if (attempt([ptr] { mem::acquire(ptr); }))
            return mem::free(ptr);
        EXPECT_EQ(mem::policyOf(ptr), nullptr);
        ::operator delete(ptr);
    });
}

/// A reference count beside a text of its own: initialising a record may fail.
namespace owning {

struct Record {
    std::string text;
    int owners = 1;
};

Record*& in(void* record) {
    return *static_cast<Record**>(record);
}

constexpr mem::Policy POLICY = {
    [] { return sizeof(void*); },
    [](void* record) { in(record) = new Record{longText()}; },
    [](void* record) { delete in(record); },
    [](void* record) { ++in(record)->owners; },
    [](void* record) { return --in(record)->owners == 0; },
};

}  // namespace owning

TEST(AllocationFailure, RecordThatCannotBeInitialisedIsNotFreed) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        void* ptr = nullptr;
        attempt([&] { ptr = mem::allocate(8, nullptr, &owning::POLICY); });
        EXPECT_EQ(mem::policyOf(ptr), ptr == nullptr ? nullptr : &owning::POLICY);
        mem::free(ptr);
    });
}

TEST(AllocationFailure, PointerAdoptsTheObjectOrDestroysIt) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        mem::Pointer<Heavy> kept;
        attempt([&] { kept = mem::Pointer<Heavy>(new Heavy, &owning::POLICY); });
        if (kept) {
            EXPECT_EQ(kept->text, longText());
        }
    });
}

TEST(AllocationFailure, PointerAssignmentKeepsTheOldObjectOrTakesTheNew) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        mem::Pointer<Heavy> handle(new Heavy);
        const mem::Pointer<Heavy> other(handle);
        handle->text = longText("old");
        const bool assigned = attempt([&] { handle = mem::Pointer<Heavy>(new Heavy); });
        EXPECT_EQ(handle->text, assigned ? longText() : longText("old"));
        EXPECT_EQ(other->text, longText("old"));
    });
}

// Arrays.

TEST(AllocationFailure, ArrayIsMadeWholeOrNotAtAll) {
    for (const mem::Allocator* allocator : {mem::NEW, mem::NEW_ARRAY, mem::MALLOC}) {
        withEveryAllocationFailing([allocator](const Attempt& attempt) {
            mem::Array<Heavy> array;
            const bool made = attempt([&] { array = mem::Array<Heavy>(3, allocator); });
            EXPECT_EQ(array.size(), made ? 3U : 0U);
        });
    }
}

TEST(AllocationFailure, ArrayWithANewBufferOrAsItWas) {
    using Array = mem::Array<std::string>;
    struct Row {
        const char* name;
        void (*operation)(Array&);
        std::vector<std::string> answer;
    };
    const std::string a = longText("a");
    const std::string b = longText("b");
    const std::vector<std::string> before = {a, b, a};
    const Row rows[] = {
        {"clone", [](Array& array) { array = array.clone(); }, {a, b, a}},
        {"subarray", [](Array& array) { array = array.subarray(1, 2); }, {b, a}},
        {"subarrayThis", [](Array& array) { array.subarrayThis(0, 2); }, {a, b}},
        {"resize up", [](Array& array) { array.resize(4); }, {a, b, a, ""}},
        {"resize down", [](Array& array) { array.resize(1); }, {a}},
        {"compact", [](Array& array) { array.compact(array[0]); }, {b}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        withEveryAllocationFailing([&](const Attempt& attempt) {
            Array array(3, mem::MALLOC, &owning::POLICY);
            array.copyFrom(before.data(), before.size());
            const bool done = attempt([&] { row.operation(array); });
            EXPECT_EQ(std::vector<std::string>(array.begin(), array.end()),
                      done ? row.answer : before);
        });
    }
}

TEST(AllocationFailure, CopyIntoAnArrayLeavesEachElementOldOrNew) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        mem::Array<std::string> array(3);
        const mem::Array<Heavy> source(3);
        const bool copied = attempt([&] {
            for (std::size_t i = 0; i < source.size(); ++i)
                array.copyFrom(&source[i].text, 1, i);
        });
        for (const std::string& text : array)
            EXPECT_TRUE(text == longText() || (!copied && text.empty())) << text;
    });
}

// Exceptions.

TEST(AllocationFailure, ExceptionWithAMessageIsMadeOrThrows) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        std::string message;
        const bool made = attempt(
            [&] { message = exceptf<IOException>("%s at row %u", longText().c_str(), 5U).why(); });
        EXPECT_EQ(message, made ? longText() + " at row 5" : "");
    });
}

}  // namespace
}  // namespace moxtel
