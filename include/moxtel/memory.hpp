#pragma once

#include <cstddef>
#include <memory>

#pragma GCC visibility push(default)

/// Managed memory: a process-wide registry that maps an address to the allocator that frees it and
/// the policy that decides when. `Pointer` and `Array` share ownership through it and are one word
/// each; every copy, release and free is a lookup in an ordered map. Memory that the registry does
/// not know is never freed by it. Registering an address takes memory of its own: it may throw
/// `std::bad_alloc`, and what the policy throws. Nothing here is synchronised.
namespace moxtel::mem {

enum : std::size_t {
    NPOS = static_cast<std::size_t>(-1)  ///< No position.
};

/// What decides the lifetime of an address. Each registered address has a record of
/// `recordSize()` bytes, aligned for a pointer, that only its policy reads and writes. The first
/// two may throw, and nothing is registered then.
struct Policy {
    std::size_t (*recordSize)();       ///< In bytes.
    void (*initRecord)(void* record);  ///< The first owner.
    void (*freeRecord)(void* record);  ///< The address is forgotten.
    void (*acquire)(void* record);     ///< One more owner.
    bool (*release)(void* record);  ///< One owner fewer; true when the memory is to be destroyed.
};

/// Where memory comes from and goes back to.
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
/// Null, and nothing registered, when the allocator gives null. A stale registration of the address
/// is replaced. When registering throws, the memory has gone back to its allocator and its address
/// is not registered.
void* allocate(std::size_t size, const Allocator* allocator = nullptr,
               const Policy* policy = nullptr);

/// Registers memory that the caller keeps (on the stack, static, foreign): it is never given back,
/// and the registration counts as one owner. False for null and for a registered address.
bool protect(const void* ptr, const Policy* policy = nullptr);

/// One more owner of `ptr`. An unregistered address is adopted: registered under `policy` with the
/// default allocator, and true returned. Otherwise false; `policy` is then ignored.
bool acquire(const void* ptr, const Policy* policy = nullptr);

/// One owner fewer: true when the memory is to be destroyed, which is left to the caller. False for
/// null and for an unregistered address.
bool release(const void* ptr);

/// Forgets `ptr` and gives it back to its allocator. Runs no destructor of what lies there; ignores
/// an unregistered address.
void free(void* ptr);

/// @{
/// What `ptr` is registered with, or null.
const Policy* policyOf(const void* ptr);
const Allocator* allocatorOf(const void* ptr);
/// @}

/// @{
/// The defaults in use; at first `REFCOUNT_POLICY` and `NEW`.
const Policy& defaultPolicy();
const Allocator& defaultAllocator();
/// @}

/// @{
/// Installs a default, which must outlive its use, and returns the previous one.
const Policy& defaultPolicy(const Policy& policy);
const Allocator& defaultAllocator(const Allocator& allocator);
/// @}

/// @{
/// Members for policies without state: nothing done, no bytes, never the last owner.
void nop(void* record);
std::size_t rsize0();
bool pfalse(void* record);
/// @}

/// How many of `count` elements from `offset` lie inside a buffer of `size` elements.
constexpr std::size_t makeInBounds(std::size_t offset, std::size_t count, std::size_t size) {
    if (offset >= size)
        return 0;
    const std::size_t rest = size - offset;
    return count < rest ? count : rest;
}

/// Destroys `count` elements in ascending order.
template <class T>
void doArrayDestruction(T* first, std::size_t count) {
    std::destroy_n(first, count);
}

/// Makes the registry when it is called for the first time.
void makeRegistry() noexcept;

/// Makes the registry before any static object is made of a source that includes this header, and
/// so destroys it after them: a static handle may be set and left to the end of the program.
struct RegistryMaker {
    /// See `makeRegistry`.
    RegistryMaker() noexcept { makeRegistry(); }
};

/// That of the source at hand.
[[maybe_unused]] static const RegistryMaker REGISTRY_MAKER;

}  // namespace moxtel::mem

#pragma GCC visibility pop
