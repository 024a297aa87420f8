#include <moxtel/memory.hpp>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <utility>

namespace moxtel::mem {

namespace {

/// The registration of one address. The policy's record follows the entry in the same allocation.
struct Entry {
    const Allocator* allocator;
    const Policy* policy;

    ~Entry() {
        if (policy != nullptr)
            policy->freeRecord(record());
    }
    void* record() { return this + 1; }
};

struct EntryDeleter {
    void operator()(Entry* entry) const {
        entry->~Entry();
        delete[] reinterpret_cast<char*>(entry);
    }
};

using EntryPointer = std::unique_ptr<Entry, EntryDeleter>;
using Entries = std::map<const void*, EntryPointer>;

/// All registered addresses, and the place where the lookup before ended.
struct Registry {
    Entries entries;
    Entries::iterator recent = entries.end();
};

Registry& registry() {
    static Registry all;
    return all;
}

/// The place of the first registered address that is not before `ptr`. No search is needed for the
/// address of the lookup before, for the next address, and for one behind all others, which a new
/// object mostly has.
Entries::iterator placeOf(const void* ptr) {
    auto& [entries, recent] = registry();
    const std::less<const void*> before;
    if (recent != entries.end() && before(recent->first, ptr))
        ++recent;
    if (recent != entries.end() && recent->first == ptr)
        return recent;
    if (entries.empty() || before(std::prev(entries.end())->first, ptr))
        return recent = entries.end();
    return recent = entries.lower_bound(ptr);
}

/// The place of `ptr`; the end where it is not registered.
Entries::iterator entryAt(const void* ptr) {
    const auto place = placeOf(ptr);
    Entries& entries = registry().entries;
    return place != entries.end() && place->first == ptr ? place : entries.end();
}

Entry* entryOf(const void* ptr) {
    const auto found = entryAt(ptr);
    return found == registry().entries.end() ? nullptr : found->second.get();
}

/// Registers `ptr`; an entry that it has already stays.
void insert(const void* ptr, EntryPointer entry) {
    const auto place = placeOf(ptr);
    Registry& all = registry();
    all.recent = all.entries.emplace_hint(place, ptr, std::move(entry));
}

/// Forgets `ptr`, if it is registered.
void forget(const void* ptr) {
    const auto found = entryAt(ptr);
    Registry& all = registry();
    if (found == all.entries.end())
        return;
    found->second.reset();
    all.recent = all.entries.erase(found);
}

EntryPointer createRecord(const Allocator* allocator, const Policy* policy) {
    if (policy == nullptr)
        policy = &defaultPolicy();
    if (allocator == nullptr)
        allocator = &defaultAllocator();
    std::unique_ptr<char[]> storage(new char[sizeof(Entry) + policy->recordSize()]);
    // The entry frees its record, so the record is made before the entry.
    policy->initRecord(storage.get() + sizeof(Entry));
    return EntryPointer(new (storage.release()) Entry{allocator, policy});
}

std::size_t countSize() {
    return sizeof(std::uint32_t);
}

std::uint32_t& countIn(void* record) {
    return *static_cast<std::uint32_t*>(record);
}

void countInit(void* record) {
    new (record) std::uint32_t(1);
}

void countAcquire(void* record) {
    ++countIn(record);
}

bool countRelease(void* record) {
    return --countIn(record) == 0;
}

void* newAllocate(std::size_t size) {
    return ::operator new(size);
}

void newFree(void* ptr) {
    ::operator delete(ptr);
}

void* newArrayAllocate(std::size_t size) {
    return ::operator new[](size);
}

void newArrayFree(void* ptr) {
    ::operator delete[](ptr);
}

void* stackAllocate(std::size_t) {
    throw std::bad_alloc();
}

constexpr Policy NO_POLICY_OBJECT = {rsize0, nop, nop, nop, pfalse};
constexpr Policy REFCOUNT_POLICY_OBJECT = {countSize, countInit, nop, countAcquire, countRelease};
constexpr Allocator NEW_OBJECT = {newAllocate, newFree};
constexpr Allocator NEW_ARRAY_OBJECT = {newArrayAllocate, newArrayFree};
constexpr Allocator MALLOC_OBJECT = {std::malloc, std::free};
constexpr Allocator STACK_OBJECT = {stackAllocate, nop};

const Policy* currentPolicy = &REFCOUNT_POLICY_OBJECT;
const Allocator* currentAllocator = &NEW_OBJECT;

}  // namespace

constinit const Policy* const NO_POLICY = &NO_POLICY_OBJECT;
constinit const Policy* const REFCOUNT_POLICY = &REFCOUNT_POLICY_OBJECT;
constinit const Allocator* const NEW = &NEW_OBJECT;
constinit const Allocator* const NEW_ARRAY = &NEW_ARRAY_OBJECT;
constinit const Allocator* const MALLOC = &MALLOC_OBJECT;
constinit const Allocator* const STACK = &STACK_OBJECT;

void* allocate(std::size_t size, const Allocator* allocator, const Policy* policy) {
    if (allocator == nullptr)
        allocator = &defaultAllocator();
    void* ptr = allocator->allocate(size);
    if (ptr == nullptr)
        return nullptr;
    try {
        EntryPointer entry = createRecord(allocator, policy);
        forget(ptr);
        insert(ptr, std::move(entry));
    } catch (...) {
        forget(ptr);
        allocator->free(ptr);
        throw;
    }
    return ptr;
}

bool protect(const void* ptr, const Policy* policy) {
    if (ptr == nullptr || entryOf(ptr) != nullptr)
        return false;
    insert(ptr, createRecord(STACK, policy));
    return true;
}

bool acquire(const void* ptr, const Policy* policy) {
    if (ptr == nullptr)
        return false;
    if (Entry* entry = entryOf(ptr)) {
        entry->policy->acquire(entry->record());
        return false;
    }
    insert(ptr, createRecord(nullptr, policy));
    return true;
}

bool release(const void* ptr) {
    Entry* entry = ptr == nullptr ? nullptr : entryOf(ptr);
    return entry != nullptr && entry->policy->release(entry->record());
}

void free(void* ptr) {
    const Entry* entry = entryOf(ptr);
    if (entry == nullptr)
        return;
    const Allocator* allocator = entry->allocator;
    forget(ptr);
    allocator->free(ptr);
}

const Policy* policyOf(const void* ptr) {
    const Entry* entry = entryOf(ptr);
    return entry == nullptr ? nullptr : entry->policy;
}

const Allocator* allocatorOf(const void* ptr) {
    const Entry* entry = entryOf(ptr);
    return entry == nullptr ? nullptr : entry->allocator;
}

const Policy& defaultPolicy() {
    return *currentPolicy;
}

const Allocator& defaultAllocator() {
    return *currentAllocator;
}

const Policy& defaultPolicy(const Policy& policy) {
    return *std::exchange(currentPolicy, &policy);
}

const Allocator& defaultAllocator(const Allocator& allocator) {
    return *std::exchange(currentAllocator, &allocator);
}

void makeRegistry() noexcept {
    registry();
}

void nop(void*) {}

std::size_t rsize0() {
    return 0;
}

bool pfalse(void*) {
    return false;
}

}  // namespace moxtel::mem
