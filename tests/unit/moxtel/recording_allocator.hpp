#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <moxtel/memory.hpp>

/// An allocator of dirty memory that remembers the sizes asked for and what is not given back yet.
struct RecordingAllocator {
    static inline std::vector<std::size_t> sizes;
    static inline int outstanding = 0;

    static void* allocate(std::size_t size) {
        sizes.push_back(size);
        ++outstanding;
        return std::memset(std::malloc(size), 0xAB, size);
    }
    static void free(void* ptr) {
        --outstanding;
        std::free(ptr);
    }
    static void reset() {
        sizes.clear();
        outstanding = 0;
    }

    static constexpr moxtel::mem::Allocator INSTANCE = {allocate, free};
};
