#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include <moxtel/array.hpp>
#include <moxtel/memory.hpp>

#pragma GCC visibility push(default)

namespace moxtel::mem {

/// Whether a `Pointer` may hold objects of the class: they come from the global `operator new`, and
/// with no more than its alignment. What a class derived from it has, the handle cannot know.
template <class T>
constexpr bool isManageable() {
    constexpr bool allocatesItself = requires(std::size_t size) {
        T::operator new(size);
    };
    constexpr bool freesItself = requires(void* ptr) {
        T::operator delete(ptr);
    }
    || requires(void* ptr, std::size_t size) {
        T::operator delete(ptr, size);
    };
    return !allocatesItself && !freesItself && alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;
}

/// Shared ownership of one object through the registry of managed memory; one word. A pointer fresh
/// from `new` is adopted with the default allocator; an address that is registered already (by
/// `protect`, `allocate` or another handle) gains an owner. The last owner destroys the object
/// (through its virtual destructor where it has one) and gives the memory back.
///
/// The address must be the one that the memory was allocated at, so a base class other than the
/// first cannot be held this way. Objects that are not `isManageable`, with an `operator new` of
/// their own or over-aligned, are refused at compile time.
template <class T>
class Pointer {
  public:
    Pointer() = default;

    /// Takes a share of `*p`; null is held as null. When registering a fresh object throws, the
    /// object has been destroyed and its memory given back.
    explicit Pointer(const T* p, const Policy* policy = nullptr) : m_ptr(const_cast<T*>(p)) {
        static_assert(isManageable<T>(), "the memory goes back to the default allocator");
        const bool fresh = m_ptr != nullptr && policyOf(m_ptr) == nullptr;
        try {
            mem::acquire(m_ptr, policy);
        } catch (...) {
            if (fresh) {
                m_destroy();
                defaultAllocator().free(m_memory());
            }
            throw;
        }
    }

    /// One more owner of what `other` holds, at the cost of a lookup in the registry.
    Pointer(const Pointer& other) : m_ptr(other.m_ptr) { mem::acquire(m_ptr); }
    ~Pointer() { m_release(); }

    /// Takes a share of what `other` holds, once, and then gives up that of what it held before.
    /// Does nothing when both hold the same.
    Pointer& operator=(const Pointer& other) {
        if (m_ptr != other.m_ptr) {
            // The other handle may live in the object that is released here.
            Pointer taken(other);
            std::swap(m_ptr, taken.m_ptr);
        }
        return *this;
    }

    /// @{
    /// The object, const where the handle is; not to be asked of a null handle.
    T* operator->() { return m_ptr; }
    const T* operator->() const { return m_ptr; }
    T& operator*() { return *m_ptr; }
    const T& operator*() const { return *m_ptr; }
    /// @}

    /// Whether it holds an object.
    explicit operator bool() const { return m_ptr != nullptr; }

  private:
    void m_release() {
        if (mem::release(m_ptr)) {
            m_destroy();
            mem::free(m_memory());
        }
    }

    /// A class without a virtual destructor is destroyed as what the handle holds it as.
    void m_destroy() {
        if constexpr (std::has_virtual_destructor_v<T>)
            m_ptr->~T();
        else
            m_ptr->T::~T();
    }

    void* m_memory() const { return const_cast<std::remove_const_t<T>*>(m_ptr); }

    T* m_ptr = nullptr;
};

}  // namespace moxtel::mem

#pragma GCC visibility pop
