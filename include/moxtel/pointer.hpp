#pragma once

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

#include <moxtel/array.hpp>
#include <moxtel/exception.hpp>
#include <moxtel/memory.hpp>

#pragma GCC visibility push(default)

namespace moxtel::mem {

/// Whether a `Pointer` may hold objects of the class: they come from the global `operator new` and
/// need no more than its alignment. The handle cannot know what a derived class has.
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

/// Whether a handle of a `From` converts to a handle of a `To`: to the same class, or to a base
/// class whose virtual destructor destroys the whole object.
template <class From, class To>
constexpr bool isHeldAs() {
    // The class of a handle may be incomplete where it holds handles of its own class.
    if constexpr (std::is_same_v<std::remove_cv_t<From>, std::remove_cv_t<To>>)
        return std::is_convertible_v<From*, To*>;
    else
        return std::is_convertible_v<From*, To*> && std::has_virtual_destructor_v<To>;
}

/// Shared ownership of one object through the registry of managed memory; one word. The handle
/// adopts a pointer fresh from `new` with the default allocator. An address that is registered
/// already (by `protect`, `allocate` or another handle) gains an owner. The last owner destroys the
/// object, through its virtual destructor where it has one, and gives the memory back.
///
/// A copy costs a lookup in the registry; a move costs none and never throws. A handle that was
/// moved from is null. Handles of all objects belong to one thread (see `memory.hpp`).
///
/// The address must be the one that the memory was allocated at, so a base class that is not the
/// first cannot be held. Objects that are not `isManageable` are refused at compile time.
template <class T>
class Pointer {
  public:
    /// Null.
    Pointer() = default;

    /// Null, of the literal `nullptr`.
    template <std::same_as<std::nullptr_t> Null>
    Pointer(Null) noexcept {}

    /// Takes a share of `*p`; null is held as null. `policy` (null: the default) counts the owners
    /// of a fresh object and must outlive it. When the registration of a fresh object throws, the
    /// object has been destroyed and its memory given back.
    explicit Pointer(const T* p, const Policy* policy = nullptr) : m_ptr(const_cast<T*>(p)) {
        static_assert(isManageable<T>(), "the memory goes back to the default allocator");
        try {
            mem::acquire(m_ptr, policy);
        } catch (...) {
            if (m_ptr != nullptr && policyOf(m_ptr) == nullptr) {
                m_destroy();
                defaultAllocator().free(m_memory());
            }
            throw;
        }
    }

    /// Takes a share of what `other` holds.
    Pointer(const Pointer& other) : m_ptr(other.m_ptr) { mem::acquire(m_ptr); }

    /// Takes over the share of `other`.
    Pointer(Pointer&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}

    /// @{
    /// The same for a handle of a derived class, or of an object that is not const. Throws
    /// `UnsupportedOperationException` where the base class is not at the address of the object.
    template <class U>
    requires(isHeldAs<U, T>()) Pointer(const Pointer<U>& other) : m_ptr(s_converted(other.m_ptr)) {
        mem::acquire(m_ptr);
    }
    template <class U>
    requires(isHeldAs<U, T>()) Pointer(Pointer<U>&& other) : m_ptr(s_converted(other.m_ptr)) {
        other.m_ptr = nullptr;
    }
    /// @}

    ~Pointer() { m_release(); }

    /// Takes a share of what `other` holds, once, and then gives up the share held before. Does
    /// nothing when both hold the same object.
    Pointer& operator=(const Pointer& other) {
        if (m_ptr != other.m_ptr) {
            // The other handle may live in the object that is released here.
            Pointer taken(other);
            std::swap(m_ptr, taken.m_ptr);
        }
        return *this;
    }

    /// Takes over the share of `other`, and then gives up the share held before.
    Pointer& operator=(Pointer&& other) noexcept {
        Pointer taken(std::move(other));
        std::swap(m_ptr, taken.m_ptr);
        return *this;
    }

    /// @{
    /// The object's address, or null. It stays valid as long as an owner is left.
    T* get() noexcept { return m_ptr; }
    const T* get() const noexcept { return m_ptr; }
    /// @}

    /// @{
    /// The object, const where the handle is; not to be asked of a null handle.
    T* operator->() { return m_ptr; }
    const T* operator->() const { return m_ptr; }
    T& operator*() { return *m_ptr; }
    const T& operator*() const { return *m_ptr; }
    /// @}

    /// Whether the handle holds an object.
    explicit operator bool() const noexcept { return m_ptr != nullptr; }

    /// @{
    /// Whether two handles hold the same object, and whether a handle is null. Handles have no
    /// order, since addresses change from run to run.
    template <class U>
    bool operator==(const Pointer<U>& other) const noexcept {
        return get() == other.get();
    }
    bool operator==(std::nullptr_t) const noexcept { return m_ptr == nullptr; }
    /// @}

  private:
    template <class U>
    friend class Pointer;

    template <class U>
    static T* s_converted(U* object) {
        T* const converted = object;
        if (static_cast<const volatile void*>(converted) !=
            static_cast<const volatile void*>(object))
            throw UnsupportedOperationException("The base class is not at the object's address.");
        return converted;
    }

    void m_release() {
        if (m_ptr != nullptr && mem::release(m_ptr)) {
            m_destroy();
            mem::free(m_memory());
        }
    }

    /// Destroys the object as a `T` where the destructor is not virtual.
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
