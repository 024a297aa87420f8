#include <moxtel/array.hpp>

#include <algorithm>
#include <cstddef>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "counted.hpp"
#include "recording_allocator.hpp"

namespace moxtel::mem {
namespace {

using Numbers = std::vector<int>;

Array<int> arrayOf(const Numbers& numbers) {
    Array<int> array(numbers.size());
    std::copy(numbers.begin(), numbers.end(), array.begin());
    return array;
}

Numbers numbersOf(const Array<int>& array) {
    return Numbers(array.begin(), array.end());
}

class ArrayTest : public testing::Test {
  protected:
    void SetUp() override {
        Counted::reset();
        RecordingAllocator::reset();
    }
    void TearDown() override {
        EXPECT_EQ(Counted::alive, 0);
        EXPECT_EQ(RecordingAllocator::outstanding, 0);
    }
};

TEST_F(ArrayTest, IsOneWord) {
    EXPECT_EQ(sizeof(Array<Counted>), sizeof(void*));
}

TEST_F(ArrayTest, DefaultHasNoBuffer) {
    Array<int> array;
    EXPECT_EQ(array.size(), 0U);
    EXPECT_EQ(array.pointer(), nullptr);
    EXPECT_EQ(array.begin(), array.end());
    const Array<int> copy(array);
    EXPECT_EQ(copy.pointer(), nullptr);
}

TEST_F(ArrayTest, ElementsAreValueInitialised) {
    const Array<int> array(5, &RecordingAllocator::INSTANCE);
    EXPECT_EQ(numbersOf(array), Numbers(5, 0));
}

TEST_F(ArrayTest, BufferIsTheLengthAndTheElements) {
    const Array<int> array(3, &RecordingAllocator::INSTANCE);
    EXPECT_EQ(RecordingAllocator::sizes,
              std::vector<std::size_t>({sizeof(std::size_t) + 3 * sizeof(int)}));
    const auto* length = reinterpret_cast<const std::size_t*>(array.pointer()) - 1;
    EXPECT_EQ(*length, 3U);
    EXPECT_EQ(allocatorOf(length), &RecordingAllocator::INSTANCE);
    EXPECT_EQ(policyOf(length), REFCOUNT_POLICY);
}

TEST_F(ArrayTest, OfNoElementsOwnsABufferOfItsLengthAlone) {
    const Array<int> array(0, &RecordingAllocator::INSTANCE);
    EXPECT_EQ(RecordingAllocator::sizes, std::vector<std::size_t>({sizeof(std::size_t)}));
    EXPECT_EQ(array.size(), 0U);
    EXPECT_NE(array.pointer(), nullptr);
}

TEST_F(ArrayTest, CopiesShareTheElements) {
    Array<int> array = arrayOf({1, 2, 3});
    Array<int> copy(array);
    copy[1] = 9;
    EXPECT_EQ(numbersOf(array), Numbers({1, 9, 3}));
    EXPECT_EQ(array.pointer(), copy.pointer());
}

TEST_F(ArrayTest, LastHandleDestroysTheElementsInAscendingOrder) {
    {
        Array<Counted> array(3, &RecordingAllocator::INSTANCE);
        for (int i = 0; i < 3; ++i)
            array[static_cast<std::size_t>(i)].value = i;
        const Array<Counted> copy(array);
        array = Array<Counted>();
        EXPECT_EQ(Counted::alive, 3);
        EXPECT_EQ(RecordingAllocator::outstanding, 1);
    }
    EXPECT_EQ(Counted::destroyed, Numbers({0, 1, 2}));
}

TEST_F(ArrayTest, AssignmentReleasesTheOldBufferAndSharesTheNew) {
    Array<Counted> a(2);
    Array<Counted> b(3);
    a = b;
    EXPECT_EQ(Counted::alive, 3);
    EXPECT_EQ(a.pointer(), b.pointer());
    const Array<Counted>& self = a;
    a = self;
    EXPECT_EQ(a.size(), 3U);
    EXPECT_EQ(Counted::alive, 3);
}

TEST_F(ArrayTest, AssignmentAcquiresOnceBeforeItReleases) {
    static std::string calls;
    static constexpr Policy RECORDING = {rsize0, nop, nop, [](void*) { calls += "acquire "; },
                                         [](void*) {
                                             calls += "release ";
                                             return true;
                                         }};
    Array<int> target(1, NEW, &RECORDING);
    const Array<int> source(2, MALLOC);
    target = source;
    EXPECT_EQ(calls, "release ");
    calls.clear();
    {
        const Array<int> other(3, NEW, &RECORDING);
        target = other;
        EXPECT_EQ(calls, "acquire ");
        target = other;
        EXPECT_EQ(calls, "acquire ");
        // The buffer goes with its first release under this policy.
        target = source;
        EXPECT_EQ(calls, "acquire release ");
    }
    EXPECT_EQ(target.size(), 2U);
}

struct HasItsOwnNew {
    static void* operator new(std::size_t) { throw std::bad_alloc(); }
    static void operator delete(void*) {}
    int value = 5;
};

TEST_F(ArrayTest, ElementsAreMadeInTheBufferWhateverTheirOperatorNew) {
    Array<HasItsOwnNew> array(2);
    EXPECT_EQ(array[1].value, 5);
    array.resize(3);
    EXPECT_EQ(array[2].value, 5);
}

TEST_F(ArrayTest, PolicyDecidesWhetherTheBufferIsDestroyed) {
    const void* buffer = nullptr;
    {
        const Array<int> array(1, nullptr, NO_POLICY);
        buffer = reinterpret_cast<const std::size_t*>(array.pointer()) - 1;
    }
    EXPECT_EQ(policyOf(buffer), NO_POLICY);
    mem::free(const_cast<void*>(buffer));
}

struct Unmakeable : Counted {
    static inline int made = 0;
    Unmakeable() : Counted(++made) {}
};

TEST_F(ArrayTest, FailedConstructionDestroysWhatWasMadeInReverse) {
    Unmakeable::made = 0;
    Counted::untilFailure = 3;
    EXPECT_THROW(Array<Unmakeable>(5, &RecordingAllocator::INSTANCE), std::runtime_error);
    EXPECT_EQ(Counted::destroyed, Numbers({3, 2, 1}));
    EXPECT_EQ(RecordingAllocator::outstanding, 0);
}

TEST_F(ArrayTest, ExhaustedMemoryThrows) {
    constexpr static Allocator EXHAUSTED = {[](std::size_t) -> void* { return nullptr; }, nop};
    EXPECT_THROW(Array<int>(3, &EXHAUSTED), std::bad_alloc);
    EXPECT_THROW(Array<int>(NPOS, MALLOC), std::bad_alloc);
    EXPECT_THROW(Array<int>(NPOS / sizeof(int) - 1, MALLOC), std::bad_alloc);
}

TEST_F(ArrayTest, ElementsAreReachedByIndexAndByAddress) {
    Array<int> array = arrayOf({1, 2, 3});
    const Array<int>& constArray = array;
    EXPECT_EQ(&array[0], array.pointer());
    EXPECT_EQ(&constArray[2], constArray.pointer() + 2);
    EXPECT_EQ(array.end() - array.begin(), 3);
    EXPECT_EQ(std::accumulate(constArray.begin(), constArray.end(), 0), 6);
    static_assert(std::is_same_v<decltype(constArray[0]), const int&>);
}

TEST_F(ArrayTest, ElementsLeftCountsToTheEnd) {
    const Array<int> array(4);
    EXPECT_EQ(array.elementsLeft(0), 4U);
    EXPECT_EQ(array.elementsLeft(3), 1U);
    EXPECT_EQ(array.elementsLeft(4), 0U);
    EXPECT_EQ(array.elementsLeft(NPOS), 0U);
    EXPECT_EQ(Array<int>().elementsLeft(0), 0U);
}

TEST_F(ArrayTest, SwapExchangesBuffersOrElements) {
    Array<int> a = arrayOf({1, 2});
    Array<int> b = arrayOf({3});
    a.swap(b);
    EXPECT_EQ(numbersOf(a), Numbers({3}));
    EXPECT_EQ(numbersOf(b), Numbers({1, 2}));
    b.swap(0, 1);
    EXPECT_EQ(numbersOf(b), Numbers({2, 1}));
    b.swap(1, 1);
    EXPECT_EQ(numbersOf(b), Numbers({2, 1}));
}

TEST_F(ArrayTest, FillAndReverseChangeTheSharedElements) {
    Array<int> array = arrayOf({1, 2, 3});
    const Array<int> copy(array);
    array.reverseThis();
    EXPECT_EQ(numbersOf(copy), Numbers({3, 2, 1}));
    array.fill(7);
    EXPECT_EQ(numbersOf(copy), Numbers({7, 7, 7}));
    Array<int> none;
    none.fill(1);
    none.reverseThis();
    EXPECT_EQ(none.size(), 0U);
}

TEST_F(ArrayTest, CloneHasElementsOfItsOwn) {
    Array<int> array(2, &RecordingAllocator::INSTANCE, NO_POLICY);
    Array<int> clone = array.clone();
    clone[0] = 1;
    EXPECT_EQ(array[0], 0);
    for (Array<int>* each : {&array, &clone}) {
        void* buffer = reinterpret_cast<std::size_t*>(each->pointer()) - 1;
        EXPECT_EQ(allocatorOf(buffer), &RecordingAllocator::INSTANCE);
        EXPECT_EQ(policyOf(buffer), NO_POLICY);
        mem::free(buffer);
    }
}

TEST_F(ArrayTest, NewBufferKeepsAllocatorAndPolicy) {
    void (*const operations[])(Array<int>&) = {
        [](Array<int>& array) { array.resize(5); },
        [](Array<int>& array) { array.subarrayThis(1, 1); },
        [](Array<int>& array) { array.compact(0); },
    };
    static const Policy OWN_COUNT = *REFCOUNT_POLICY;
    for (const auto operation : operations) {
        Array<int> array(3, &RecordingAllocator::INSTANCE, &OWN_COUNT);
        operation(array);
        const void* buffer = reinterpret_cast<std::size_t*>(array.pointer()) - 1;
        EXPECT_EQ(allocatorOf(buffer), &RecordingAllocator::INSTANCE);
        EXPECT_EQ(policyOf(buffer), &OWN_COUNT);
        EXPECT_EQ(RecordingAllocator::outstanding, 1);
    }
}

TEST_F(ArrayTest, DefaultsAreThoseInUseWhenItIsMade) {
    const Allocator& previous = defaultAllocator(RecordingAllocator::INSTANCE);
    Array<int> array(3);
    defaultAllocator(previous);
    array.resize(4);
    EXPECT_EQ(RecordingAllocator::outstanding, 1);
}

TEST_F(ArrayTest, FailedCloneLeavesNothingBehind) {
    const Array<Counted> array(3, &RecordingAllocator::INSTANCE);
    Counted::untilFailure = 2;
    EXPECT_THROW(array.clone(), std::runtime_error);
    EXPECT_EQ(Counted::alive, 3);
    EXPECT_EQ(RecordingAllocator::outstanding, 1);
}

TEST_F(ArrayTest, SubarrayIsCutToTheBuffer) {
    const Array<int> array = arrayOf({1, 2, 3, 4});
    struct Row {
        std::size_t start, count;
        Numbers answer;
    };
    const Row rows[] = {
        {0, 4, {1, 2, 3, 4}}, {1, 2, {2, 3}}, {2, NPOS, {3, 4}}, {4, 1, {}},
        {3, 0, {}},           {9, 2, {}},     {NPOS, NPOS, {}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(numbersOf(array.subarray(row.start, row.count)), row.answer)
            << row.start << ", " << row.count;
    EXPECT_EQ(Array<int>().subarray(3, 2).size(), 0U);
}

TEST_F(ArrayTest, SubarrayThisLeavesOtherHandlesAlone) {
    Array<int> array = arrayOf({1, 2, 3, 4});
    const Array<int> copy(array);
    array.subarrayThis(1, 2);
    EXPECT_EQ(numbersOf(array), Numbers({2, 3}));
    EXPECT_EQ(numbersOf(copy), Numbers({1, 2, 3, 4}));
}

TEST_F(ArrayTest, ResizeKeepsTheFirstElements) {
    Array<int> array(3, &RecordingAllocator::INSTANCE);
    array.fill(5);
    const Array<int> copy(array);
    array.resize(5);
    EXPECT_EQ(numbersOf(array), Numbers({5, 5, 5, 0, 0}));
    array.resize(1);
    EXPECT_EQ(numbersOf(array), Numbers({5}));
    array.resize(0);
    EXPECT_EQ(array.size(), 0U);
    EXPECT_EQ(copy.size(), 3U);
    Array<int> none;
    none.resize(2);
    EXPECT_EQ(numbersOf(none), Numbers({0, 0}));
}

TEST_F(ArrayTest, CompactTakesTheHolesOut) {
    Array<int> array = arrayOf({0, 1, 0, 0, 2, 3, 0});
    const Array<int> copy(array);
    EXPECT_EQ(array.compact(copy[0]), 4U);
    EXPECT_EQ(numbersOf(array), Numbers({1, 2, 3}));
    EXPECT_EQ(numbersOf(copy), Numbers({0, 1, 0, 0, 2, 3, 0}));
    EXPECT_EQ(array.compact(9), 0U);
    Array<int> none;
    EXPECT_EQ(none.compact(0), 0U);
}

TEST_F(ArrayTest, CopyFromIsCutToBothBuffers) {
    const int source[] = {7, 8, 9};
    Array<int> array(4);
    EXPECT_EQ(array.copyFrom(source, 3), 3U);
    EXPECT_EQ(numbersOf(array), Numbers({7, 8, 9, 0}));
    EXPECT_EQ(array.copyFrom(source, 3, 2), 2U);
    EXPECT_EQ(numbersOf(array), Numbers({7, 8, 7, 8}));
    EXPECT_EQ(array.copyFrom(source, 3, 4), 0U);
    EXPECT_EQ(array.copyFrom(source, 3, NPOS), 0U);
    const Array<int> other = arrayOf({1, 2});
    EXPECT_EQ(array.copyFrom(other), 2U);
    EXPECT_EQ(numbersOf(array), Numbers({1, 2, 7, 8}));
    EXPECT_EQ(array.copyFrom(other, 1, NPOS, 3), 1U);
    EXPECT_EQ(numbersOf(array), Numbers({1, 2, 7, 2}));
    EXPECT_EQ(array.copyFrom(other, 2, 1, 0), 0U);
    EXPECT_EQ(array.copyFrom(Array<int>()), 0U);
    Array<int> none;
    EXPECT_EQ(none.copyFrom(other, 0, 2, 1), 0U);
    EXPECT_EQ(none.copyFrom(source, 3, 1), 0U);
}

TEST_F(ArrayTest, CopyToIsCutToBothBuffers) {
    const Array<int> array = arrayOf({1, 2, 3});
    int target[4] = {};
    EXPECT_EQ(array.copyTo(target, 2), 2U);
    EXPECT_EQ(Numbers(target, target + 4), Numbers({1, 2, 0, 0}));
    EXPECT_EQ(array.copyTo(target, 1, 9), 2U);
    EXPECT_EQ(Numbers(target, target + 4), Numbers({2, 3, 0, 0}));
    EXPECT_EQ(array.copyTo(target, 3, 1), 0U);
    EXPECT_EQ(array.copyTo(target, NPOS, 1), 0U);
    EXPECT_EQ(Array<int>().copyTo(target, 1, 1), 0U);
    Array<int> other(2);
    EXPECT_EQ(array.copyTo(other), 2U);
    EXPECT_EQ(numbersOf(other), Numbers({1, 2}));
    EXPECT_EQ(array.copyTo(other, 2, 5, 1), 1U);
    EXPECT_EQ(numbersOf(other), Numbers({1, 3}));
}

TEST_F(ArrayTest, CopyWithinOneBufferIsAsIfTheSourceWereCopiedFirst) {
    // Not of numbers, which are moved as plain memory whatever the direction.
    Array<std::string> array(5);
    for (std::size_t i = 0; i < array.size(); ++i)
        array[i] = std::string(1, static_cast<char>('a' + i));
    const auto text = [&array] {
        return std::accumulate(array.begin(), array.end(), std::string());
    };
    EXPECT_EQ(array.copyFrom(array, 0, 4, 1), 4U);
    EXPECT_EQ(text(), "aabcd");
    EXPECT_EQ(array.copyFrom(array, 1, 4, 0), 4U);
    EXPECT_EQ(text(), "abcdd");
    EXPECT_EQ(array.copyFrom(array), 5U);
    EXPECT_EQ(text(), "abcdd");
}

}  // namespace
}  // namespace moxtel::mem
