#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// How values of type `T` have keys. As it stands here a value is its own key; specialise it for
/// values that carry a key.
template <class T>
struct KeyOperations {
    /// The key of a value, valid as long as the value.
    static const T& extract(const T& value) { return value; }

    /// Whether two keys are the same; their hash codes must be so then.
    static bool equals(const T& a, const T& b) { return a == b; }

    /// Turns a value-initialised `value` into the value for `key`.
    static void createValue(const T& key, T& value) { value = key; }
};

/// The pairs of a map: the key is `first`, and a new value is value-initialised (0 for numbers).
/// Keys whose default constructor may throw are refused at compile time.
template <class K, class V>
struct KeyOperations<std::pair<const K, V>> {
    /// @{
    /// The key of a pair, and how keys are compared.
    static const K& extract(const std::pair<const K, V>& value) { return value.first; }
    static bool equals(const K& a, const K& b) { return a == b; }
    /// @}

    /// Makes `value` the pair of a copy of `key` and a new value. Where copying the key throws, the
    /// pair has a value-initialised one.
    static void createValue(const K& key, std::pair<const K, V>& value) {
        // The key is const: it cannot be assigned, only made anew in its place.
        static_assert(std::is_nothrow_default_constructible_v<K>,
                      "where copying a key fails, an empty one takes its place");
        K* first = const_cast<K*>(&value.first);
        std::destroy_at(first);
        try {
            std::construct_at(first, key);
        } catch (...) {
            std::construct_at(first);
            throw;
        }
        value.second = V();
    }
};

}  // namespace moxtel::util

#pragma GCC visibility pop
