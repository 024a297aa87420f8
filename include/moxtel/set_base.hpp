#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

#include <moxtel/iterator.hpp>
#include <moxtel/key_operations.hpp>
#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A set of values that are told apart by their keys. It owns its values. A value that is reached
/// through the set may be changed, but its key may not. Sets are not copied; a class of sets may
/// allow moving. A set belongs to one thread.
///
/// Values need a copy or move constructor. They need a default constructor, unless `KeyOps` has a
/// `makeValue(key)`, which then makes a new value in place of `createValue`. `add` also needs copy
/// assignment.
template <class T, class KeyOps = KeyOperations<T>>
class Set {
  public:
    /// What `KeyOps::extract` gives, as a value.
    using Key = std::remove_cvref_t<decltype(KeyOps::extract(std::declval<const T&>()))>;

    /// A hook that sees each value that the set makes for a key.
    class EntryActions {
      public:
        /// Called with the value before it is in the set. The hook may complete the value, but must
        /// change neither its key nor the set. An exception passes through the operation that
        /// wanted the value, and the set stays as it was.
        virtual void created(T& value) = 0;
        virtual ~EntryActions() = default;
    };

    Set() = default;
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

    /// The value that this set makes for a key: `KeyOps` makes it, and the hook, if there is one,
    /// completes it. It is not put into the set.
    virtual T createValueFromKey(const Key& key) {
        T value = s_make(key);
        if (m_actions)
            m_actions->created(value);
        return value;
    }
    virtual ~Set() = default;

    /// The number of values.
    virtual std::size_t size() const = 0;

    /// Whether the set has a value with this key; it costs what `lookupByKey` costs.
    virtual bool containsKey(const Key& key) const = 0;

    /// @{
    /// The value with this key. An absent value is made and put in if `create`. Otherwise, and in
    /// the const form, the operation throws `NotFoundException` with the message "Key not found\n".
    virtual T& lookupByKey(const Key& key, bool create) = 0;
    virtual const T& lookupByKey(const Key& key) const = 0;
    /// @}

    /// Takes a value out and destroys it; ignores an absent key.
    virtual void eraseByKey(const Key& key) = 0;

    /// Destroys all values. A set may be unusable afterwards, as its class says.
    virtual void clear() = 0;

    /// @{
    /// A walk over the values, in the order that the class promises.
    virtual mem::Iterator<T> iterator() = 0;
    virtual mem::Iterator<const T> iterator() const = 0;
    /// @}

    /// The set as an input range of its values, in the order of `iterator()`.
    mem::InputIterator<T> begin() { return iterator().begin(); }
    /// The same, of constant values.
    mem::InputIterator<const T> begin() const { return iterator().begin(); }
    /// The end of either.
    std::default_sentinel_t end() const noexcept { return {}; }

    /// Makes a value for the key of `value`, puts it in and assigns `value` to it. Returns false,
    /// and changes nothing, when the key is in the set already. Costs two lookups.
    bool add(const T& value) {
        const Key& key = KeyOps::extract(value);
        if (containsKey(key))
            return false;
        T& added = lookupByKey(key, true);
        try {
            added = value;
        } catch (...) {
            eraseByKey(key);
            throw;
        }
        return true;
    }

    /// The value with this key; an absent one is made and put in.
    T& operator[](const Key& key) { return lookupByKey(key, true); }

    /// The value with this key; throws as `lookupByKey` does when it is absent.
    const T& operator[](const Key& key) const { return lookupByKey(key); }

    /// Installs the hook; a null pointer takes it away.
    void setEntryActions(const mem::Pointer<EntryActions>& actions) { m_actions = actions; }

  protected:
    /// For classes of sets that allow moving; the hook moves along.
    Set(Set&&) noexcept = default;
    /// The same, by assignment.
    Set& operator=(Set&&) noexcept = default;

  private:
    static T s_make(const Key& key) {
        if constexpr (requires { KeyOps::makeValue(key); }) {
            return KeyOps::makeValue(key);
        } else {
            T value{};
            KeyOps::createValue(key, value);
            return value;
        }
    }

    mem::Pointer<EntryActions> m_actions;
};

}  // namespace moxtel::util

#pragma GCC visibility pop
