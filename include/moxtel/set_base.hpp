#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include <moxtel/iterator.hpp>
#include <moxtel/key_operations.hpp>
#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A set of values that are told apart by their keys. It owns its values. A value that is reached
/// through the set may be changed, but for its key. Sets are not copied.
///
/// Values need a copy or move constructor, and a default constructor unless `KeyOps` has a
/// `makeValue(key)`, which then gives a new value in place of `createValue`; `add` also needs copy
/// assignment.
template <class T, class KeyOps = KeyOperations<T>>
class Set {
  public:
    /// What `KeyOps::extract` gives, as a value.
    using Key = std::remove_cvref_t<decltype(KeyOps::extract(std::declval<const T&>()))>;

    /// A hook that sees each value the set makes for a key.
    class EntryActions {
      public:
        /// Called with the value before it is in the set, to complete it in a way that leaves its
        /// key alone; must not change the set. What it throws passes through the operation that
        /// wanted the value, and the set stays as it was.
        virtual void created(T& value) = 0;
        virtual ~EntryActions() = default;
    };

    Set() = default;
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

    /// The value that this set makes for a key: by `KeyOps`, then completed by the hook if there is
    /// one. It is not put into the set.
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
    /// The value with this key. When absent it is made and put in if `create`; otherwise, and in
    /// the const form, throws `NotFoundException` with the message "Key not found\n".
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

    /// Puts a copy of `value` in, by way of a value made for its key. False, and nothing changed,
    /// when its key is in the set already. Costs two lookups.
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

    /// As `lookupByKey`; puts an absent key in.
    T& operator[](const Key& key) { return lookupByKey(key, true); }

    /// As `lookupByKey`; throws for an absent key.
    const T& operator[](const Key& key) const { return lookupByKey(key); }

    /// Installs the hook; a null pointer takes it away.
    void setEntryActions(const mem::Pointer<EntryActions>& actions) { m_actions = actions; }

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
