#pragma once

#include <cstddef>
#include <memory>

#pragma GCC visibility push(default)

/// Managed memory: a process-wide registry that maps an address to the allocator that frees it and
/// to the policy that decides when. `Pointer` and `Array` share ownership through the registry and
/// are one word each. Every copy, release and free is a lookup in an ordered map; the address of
/// the lookup before, the next one and one behind all others are found at once. The registry never
/// frees memory that it does not know. Registering an address needs memory: it may throw
/// `std::bad_alloc`, and what the policy throws.
///
/// Nothing is synchronised. All handles of a process belong to one thread, since they share the
/// registry; so do the calls below.
namespace moxtel::mem {

enum : std::size_t {
    NPOS = static_cast<std::size_t>(-1)  ///< No position.
};

/// What decides the lifetime of an address. Each registered address has a record of `recordSize()`
/// bytes, aligned for a pointer, that only its policy reads and writes. `recordSize` and
/// `initRecord` may throw; nothing is registered then. No function may be null, and none may use
/// the registry. A policy must outlive the addresses that are registered with it.
struct Policy {
    std::size_t (*recordSize)();       ///< In bytes.
    void (*initRecord)(void* record);  ///< The first owner.
    void (*freeRecord)(void* record);  ///< The address is forgotten.
    void (*acquire)(void* record);     ///< One more owner.
    bool (*release)(void* record);     ///< One owner less; true when the memory is to be destroyed.
};

/// Where memory comes from and goes back to. Neither function may be null. An allocator must
/// outlive the addresses that are registered with it.
struct Allocator {
    void* (*allocate)(std::size_t size);  ///< Null or an exception when exhausted.
    void (*free)(void* ptr);              ///< Must not throw.
};

extern const Policy* const NO_POLICY;        ///< Owners are not counted; never destroyed.
extern const Policy* const REFCOUNT_POLICY;  ///< A 32-bit count of owners, 1 at the start.

extern const Allocator* const NEW;        ///< Scalar `operator new`.
extern const Allocator* const NEW_ARRAY;  ///< Array `operator new[]`.
extern const Allocator* const MALLOC;     ///< `malloc`; null when exhausted.
extern const Allocator* const
    STACK;  ///< Allocates nothing (throws `std::bad_alloc`), frees nothing.

/// `size` bytes from `allocator`, registered under `policy`; null stands for the default of either.
/// The caller is the first owner. Returns null and registers nothing when the allocator gives null.
/// Replaces a stale registration of the address. When registering throws, the memory has gone back
/// to its allocator and its address is not registered.
void* allocate(std::size_t size, const Allocator* allocator = nullptr,
               const Policy* policy = nullptr);

/// Registers memory that the caller keeps: on the stack, static or foreign. It is never given back.
/// The registration counts as one owner; `free` ends it, before the memory goes. Returns false for
/// null and for a registered address.
bool protect(const void* ptr, const Policy* policy = nullptr);

/// Adds an owner of `ptr`. An unregistered address is adopted: it is registered under `policy`
/// (null: the default) with the default allocator, and true is returned. Returns false for null and
/// for a registered address, whose policy stays.
bool acquire(const void* ptr, const Policy* policy = nullptr);

/// Takes an owner away. Returns true when the memory is to be destroyed, which is left to the
/// caller. Returns false for null and for an unregistered address.
bool release(const void* ptr);

/// Forgets `ptr` and gives it back to its allocator. Runs no destructor. Ignores null and an
/// unregistered address.
void free(void* ptr);

/// @{
/// What `ptr` is registered with; null for an unregistered address.
const Policy* policyOf(const void* ptr);
const Allocator* allocatorOf(const void* ptr);
/// @}

/// @{
/// The defaults in use; initially `REFCOUNT_POLICY` and `NEW`.
const Policy& defaultPolicy();
const Allocator& defaultAllocator();
/// @}

/// @{
/// Installs a default, which must outlive its use, and returns the previous one.
const Policy& defaultPolicy(const Policy& policy);
const Allocator& defaultAllocator(const Allocator& allocator);
/// @}

/// @{
/// Members for policies without state: one does nothing, one gives 0 bytes, one gives false.
void nop(void* record);
std::size_t rsize0();
bool pfalse(void* record);
/// @}

/// The number of elements, of `count` from `offset` on, that lie inside a buffer of `size`
/// elements.
constexpr std::size_t makeInBounds(std::size_t offset, std::size_t count, std::size_t size) {
    if (offset >= size)
        return 0;
    const std::size_t rest = size - offset;
    return count < rest ? count : rest;
}

/// Destroys `count` elements from `first` on in ascending order.
template <class T>
void doArrayDestruction(T* first, std::size_t count) {
    std::destroy_n(first, count);
}

/// Makes the registry, unless it exists.
void makeRegistry() noexcept;

/// Makes the registry before the static objects of a source that includes this header. The registry
/// is then destroyed after them, so a static handle may hold an object to the end of the program.
struct RegistryMaker {
    /// Calls `makeRegistry`.
    RegistryMaker() noexcept { makeRegistry(); }
};

/// The maker of each source.
[[maybe_unused]] static const RegistryMaker REGISTRY_MAKER;

}  // namespace moxtel::mem

#pragma GCC visibility pop
