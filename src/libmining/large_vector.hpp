#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace quarvis::mining {

/// Allocates long arrays so that the system can back them by large pages, and short ones as usual.
///
/// The first touch of a page costs more than most algorithms do with the page, and a large page
/// replaces 512 small ones. An array takes up to half a large page more than asked for. Elements
/// that a container adds without a value stay uninitialized, so that the thread that fills them
/// touches them first.
template <class T>
class LargeAllocator {
  public:
    using value_type = T;

    LargeAllocator() = default;
    template <class U>
    LargeAllocator(const LargeAllocator<U>&) noexcept {}

    T* allocate(std::size_t n);
    void deallocate(T* array, std::size_t n) noexcept;

    template <class U, class... Values>
    void construct(U* place, Values&&... values) {
        if constexpr (sizeof...(Values) == 0 && std::is_trivially_default_constructible_v<U>)
            ::new (static_cast<void*>(place)) U;
        else
            std::construct_at(place, std::forward<Values>(values)...);
    }

    bool operator==(const LargeAllocator&) const = default;
};

template <class T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

/// The size of a large page.
constexpr std::size_t LARGE_PAGE = std::size_t{1} << 21;

/// @{
/// Room of this many bytes, at least half a large page; throws `std::bad_alloc`.
void* takeLarge(std::size_t bytes);
void giveLarge(void* room) noexcept;
/// @}

template <class T>
T* LargeAllocator<T>::allocate(std::size_t n) {
    if (n > static_cast<std::size_t>(-1) / 2 / sizeof(T))
        throw std::bad_array_new_length();
    if (n * sizeof(T) < LARGE_PAGE / 2)
        return std::allocator<T>().allocate(n);
    return static_cast<T*>(takeLarge(n * sizeof(T)));
}

template <class T>
void LargeAllocator<T>::deallocate(T* array, std::size_t n) noexcept {
    if (n * sizeof(T) < LARGE_PAGE / 2)
        std::allocator<T>().deallocate(array, n);
    else
        giveLarge(array);
}

}  // namespace quarvis::mining
