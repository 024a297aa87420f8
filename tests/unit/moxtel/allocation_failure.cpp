#include "allocation_failure.hpp"

#include <cstddef>
#include <cstdlib>
#include <new>

#include <moxtel/memory.hpp>

// The linker directs the calls of `malloc` and `free` in the objects of the program to `__wrap_...`
// and gives the real functions the names `__real_...`. Shared libraries call the real ones.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

void* __real_malloc(std::size_t size);
void __real_free(void* ptr);

void* __wrap_malloc(std::size_t size) {
    void* ptr = Heap::fails() ? nullptr : __real_malloc(size);
    if (ptr != nullptr)
        ++Heap::live;
    return ptr;
}

void __wrap_free(void* ptr) {
    if (ptr == nullptr)
        return;
    --Heap::live;
    if (Heap::watched && moxtel::mem::policyOf(ptr) != nullptr)
        ++Heap::freedWhileRegistered;
    __real_free(ptr);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size != 0 ? size : 1);
}

void* operator new(std::size_t size) {
    void* ptr = ::operator new(size, std::nothrow);
    if (ptr == nullptr)
        throw std::bad_alloc();
    return ptr;
}

void* operator new[](std::size_t size) {
    return ::operator new(size);
}

void operator delete(void* ptr) noexcept {
    std::free(ptr);
}

void operator delete(void* ptr, std::size_t) noexcept {
    std::free(ptr);
}

void operator delete[](void* ptr) noexcept {
    std::free(ptr);
}

void operator delete[](void* ptr, std::size_t) noexcept {
    std::free(ptr);
}

void operator delete(void* ptr, const std::nothrow_t&) noexcept {
    std::free(ptr);
}
