#include "arena.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/draws.hpp"

namespace quarvis::mining {
namespace {

TEST(Arena, ArraysStayWhereTheyAreAndDoNotOverlap) {
    Arena<int> arena;
    std::vector<std::pair<int*, std::size_t>> arrays;
    int number = 0;
    for (const std::size_t size : {0U, 1U, 100U, 8000U, 92U, 1U, 20'000U, 3U, 8192U, 8193U, 0U}) {
        arrays.emplace_back(arena.take(size), size);
        std::fill_n(arrays.back().first, size, number++);
    }
    number = 0;
    for (const auto& [array, size] : arrays) {
        EXPECT_EQ(static_cast<std::ptrdiff_t>(size), std::count(array, array + size, number))
            << "array " << number;
        ++number;
    }
}

TEST(Arena, TakesAgainWhatWasReleased) {
    Arena<int> arena;
    arena.take(10);
    const Arena<int>::Mark mark = arena.mark();
    int* const first = arena.take(20);
    arena.take(50'000);
    arena.release(mark);
    EXPECT_EQ(first, arena.take(20));
}

TEST(Arena, KeepsWhatWasTakenBeforeTheMark) {
    Arena<int> arena;
    int* const kept = arena.take(8192);
    std::fill_n(kept, 8192, 7);
    const Arena<int>::Mark mark = arena.mark();
    std::fill_n(arena.take(100), 100, 8);
    arena.release(mark);
    std::fill_n(arena.take(100), 100, 9);
    EXPECT_EQ(8192, std::count(kept, kept + 8192, 7));
}

TEST(Arena, TakesTheEndOfAnArrayThatWasGivenBack) {
    Arena<int> arena;
    int* const array = arena.take(30);
    arena.giveBack(10);
    EXPECT_EQ(array + 20, arena.take(5));
    arena.giveBack(5);
    arena.giveBack(20);
    EXPECT_EQ(array, arena.take(1));
}

/// A stack of marks and arrays. Each array is filled with a number of its own.
TEST(Arena, KeepsAllArraysOfNestedMarks) {
    struct Array {
        std::uint32_t* begin;
        std::size_t size;
        std::uint32_t number;
    };
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        oracle::Draws draws(seed);
        Arena<std::uint32_t> arena;
        std::vector<std::pair<Arena<std::uint32_t>::Mark, std::size_t>> marks;
        std::vector<Array> arrays;
        for (std::uint32_t step = 0; step < 300; ++step) {
            const std::uint64_t act = draws.upTo(5);
            if (act == 0) {
                marks.emplace_back(arena.mark(), arrays.size());
            } else if (act == 1 && !marks.empty()) {
                arena.release(marks.back().first);
                arrays.resize(marks.back().second);
                marks.pop_back();
            } else {
                const std::size_t size =
                    draws.upTo(draws.oneOf({std::uint64_t{10}, std::uint64_t{10'000}}));
                arrays.push_back({arena.take(size), size, step});
                std::fill_n(arrays.back().begin, size, step);
            }
        }
        for (const Array& array : arrays)
            ASSERT_EQ(static_cast<std::ptrdiff_t>(array.size),
                      std::count(array.begin, array.begin + array.size, array.number))
                << "seed " << seed;
    }
}

}  // namespace
}  // namespace quarvis::mining
