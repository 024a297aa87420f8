#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include <moxtel/memory.hpp>

#pragma GCC visibility push(default)

namespace moxtel::mem {

/// A shared buffer of elements whose number is fixed when it is made; one word. Copies of the
/// handle share the elements (`clone` copies them). The last owner destroys the elements in
/// ascending order and gives the buffer back. A handle is a range of its elements, in contiguous
/// memory. No operation checks an index unless it says so. The copying operations cut their offsets
/// and counts to what lies in bounds.
///
/// Making, copying and releasing a handle looks it up in the registry of managed memory. Moving a
/// handle or reaching an element does not. A handle that was moved from has no buffer. Handles
/// belong to one thread (see `memory.hpp`).
template <class T>
class Array {
  public:
    /// No buffer; size 0.
    Array() = default;

    /// `n` value-initialised elements in memory of `allocator`, shared under `policy`. Null stands
    /// for the default of either; both must outlive the buffer. Throws `std::bad_alloc` when there
    /// is no memory. Where an element's constructor throws, the elements made before it are
    /// destroyed in reverse order and the exception is passed on.
    explicit Array(std::size_t n, const Allocator* allocator = nullptr,
                   const Policy* policy = nullptr)
        : m_buf(s_allocate(n, allocator, policy)) {
        m_construct([](T* place, std::size_t) { ::new (place) T(); });
    }

    /// Shares the elements of `other`.
    Array(const Array& other) : m_buf(other.m_buf) { mem::acquire(m_buf); }

    /// Takes over the share of `other`.
    Array(Array&& other) noexcept : m_buf(std::exchange(other.m_buf, nullptr)) {}
    ~Array() { s_releaseArray(m_buf); }

    /// Takes a share of the elements of `other`, once, and then gives up the share held before.
    /// Does nothing when both hold the same buffer.
    Array& operator=(const Array& other) {
        if (m_buf != other.m_buf) {
            Array taken(other);
            swap(taken);
        }
        return *this;
    }

    /// Takes over the share of `other`, and then gives up the share held before.
    Array& operator=(Array&& other) noexcept {
        Array taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// The number of elements; 0 without a buffer.
    std::size_t size() const noexcept { return m_buf == nullptr ? 0 : m_buf->len; }

    /// @{
    /// The element at index `i`, the same one for all handles on the buffer.
    T& operator[](std::size_t i) { return m_data()[i]; }
    const T& operator[](std::size_t i) const { return m_data()[i]; }
    /// @}

    /// @{
    /// The first element's address; null without a buffer.
    T* pointer() noexcept { return m_data(); }
    const T* pointer() const noexcept { return m_data(); }
    T* begin() noexcept { return m_data(); }
    const T* begin() const noexcept { return m_data(); }
    /// @}

    /// @{
    /// The address after the last element; null without a buffer.
    T* end() noexcept { return m_data() + size(); }
    const T* end() const noexcept { return m_data() + size(); }
    /// @}

    /// The number of elements from index `i` to the end; 0 past it.
    std::size_t elementsLeft(std::size_t i) const noexcept { return i < size() ? size() - i : 0; }

    /// @{
    /// Exchanges the buffers of two handles, without a lookup, or two elements.
    void swap(Array& other) noexcept { std::swap(m_buf, other.m_buf); }
    void swap(std::size_t i, std::size_t j) { std::swap((*this)[i], (*this)[j]); }
    /// @}

    /// @{
    /// Changes every element in its place, for all handles on the buffer.
    void fill(const T& value) { std::fill(begin(), end(), value); }
    void reverseThis() { std::reverse(begin(), end()); }
    /// @}

    /// @{
    /// A new buffer with copies of the elements, or of `count` of them from `start`, in linear
    /// time. It has the allocator and the policy of this one, and is made as by the constructor.
    Array clone() const { return subarray(0, size()); }
    Array subarray(std::size_t start, std::size_t count) const {
        return m_copy(start, makeInBounds(start, count, size()), 0);
    }
    /// @}

    /// @{
    /// Gives this handle a new buffer with copies of the elements that are kept; other handles keep
    /// the old buffer. `resize` keeps the first elements and value-initialises the new ones. An
    /// exception leaves the handle as it was.
    void subarrayThis(std::size_t start, std::size_t count) { *this = subarray(start, count); }
    void resize(std::size_t n) {
        const std::size_t kept = std::min(n, size());
        *this = m_copy(0, kept, n - kept);
    }
    /// @}

    /// Gives this handle a new buffer without the elements that equal `hole`; the others keep their
    /// order. Returns the number of elements left out. All elements are copied, and those that stay
    /// are copied twice.
    std::size_t compact(const T& hole) {
        Array kept = clone();
        const auto last = std::remove(kept.begin(), kept.end(), hole);
        const auto left = static_cast<std::size_t>(last - kept.begin());
        const std::size_t removed = size() - left;
        *this = kept.subarray(0, left);
        return removed;
    }

    /// @{
    /// Assigns `count` elements of `source` to the elements here from index `at` on, which is 0
    /// when it is not given. Returns the number of elements copied; the time is linear in it. The
    /// source may be this buffer, and may be null where nothing is copied.
    std::size_t copyFrom(const T* source, std::size_t count) { return copyFrom(source, count, 0); }
    std::size_t copyFrom(const T* source, std::size_t count, std::size_t at) {
        count = makeInBounds(at, count, size());
        return count == 0 ? 0 : s_copy(source, count, m_data() + at);
    }
    std::size_t copyFrom(const Array& source) { return copyFrom(source, 0, source.size(), 0); }
    std::size_t copyFrom(const Array& source, std::size_t start, std::size_t count,
                         std::size_t at) {
        count = makeInBounds(start, count, source.size());
        return count == 0 ? 0 : copyFrom(source.pointer() + start, count, at);
    }
    /// @}

    /// @{
    /// Assigns `count` elements here, from index `start` on, to `target`. Returns the number of
    /// elements copied. The target needs room for them; it may be null where nothing is copied.
    std::size_t copyTo(T* target, std::size_t count) const { return copyTo(target, 0, count); }
    std::size_t copyTo(T* target, std::size_t start, std::size_t count) const {
        count = makeInBounds(start, count, size());
        return count == 0 ? 0 : s_copy(m_data() + start, count, target);
    }
    std::size_t copyTo(Array& target) const { return target.copyFrom(*this); }
    std::size_t copyTo(Array& target, std::size_t start, std::size_t count, std::size_t at) const {
        return target.copyFrom(*this, start, count, at);
    }
    /// @}

  private:
    struct Buffer {
        std::size_t len;
        T* data() { return reinterpret_cast<T*>(this + 1); }
    };
    static_assert(alignof(T) <= alignof(Buffer), "the elements follow the length directly");

    T* m_data() { return m_buf == nullptr ? nullptr : m_buf->data(); }
    const T* m_data() const { return m_buf == nullptr ? nullptr : m_buf->data(); }

    static Buffer* s_allocate(std::size_t n, const Allocator* allocator, const Policy* policy) {
        if (n > (std::numeric_limits<std::size_t>::max() - sizeof(Buffer)) / sizeof(T))
            throw std::bad_array_new_length();
        void* memory = mem::allocate(n * sizeof(T) + sizeof(Buffer), allocator, policy);
        if (memory == nullptr)
            throw std::bad_alloc();
        return ::new (memory) Buffer{n};
    }

    /// Makes the elements by `make(place, index)`. An exception destroys the elements made so far
    /// and frees the buffer.
    template <class Make>
    void m_construct(Make make) {
        std::size_t made = 0;
        try {
            for (; made < m_buf->len; ++made)
                make(m_buf->data() + made, made);
        } catch (...) {
            while (made > 0)
                std::destroy_at(m_buf->data() + --made);
            mem::free(std::exchange(m_buf, nullptr));
            throw;
        }
    }

    Array m_copy(std::size_t start, std::size_t count, std::size_t added) const {
        Array copy;
        copy.m_buf = s_allocate(count + added, allocatorOf(m_buf), policyOf(m_buf));
        const T* source = count == 0 ? nullptr : m_data() + start;
        copy.m_construct([source, count](T* place, std::size_t i) {
            if (i < count)
                ::new (place) T(source[i]);
            else
                ::new (place) T();
        });
        return copy;
    }

    static std::size_t s_copy(const T* source, std::size_t count, T* target) {
        if (source == target)
            return count;
        if (std::less<const T*>()(source, target))
            std::copy_backward(source, source + count, target + count);
        else
            std::copy_n(source, count, target);
        return count;
    }

    static void s_releaseArray(Buffer* buffer) {
        if (buffer != nullptr && mem::release(buffer)) {
            doArrayDestruction(buffer->data(), buffer->len);
            mem::free(buffer);
        }
    }

    Buffer* m_buf = nullptr;
};

}  // namespace moxtel::mem

#pragma GCC visibility pop
