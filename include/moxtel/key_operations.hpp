#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// How values of type `T` have keys. By default a value is its own key. Specialise the template for
/// values that carry a key.
template <class T>
struct KeyOperations {
    /// The key of a value, valid as long as the value.
    static const T& extract(const T& value) { return value; }

    /// Whether two keys are equal. Equal keys must have equal hash codes.
    static bool equals(const T& a, const T& b) { return a == b; }

    /// Turns a value-initialised `value` into the value for `key`.
    static void createValue(const T& key, T& value) { value = key; }
};

/// The pairs of a map. The key is `first`; a new value is value-initialised (0 for numbers). Keys
/// need a copy constructor, which may throw, and `==`.
template <class K, class V>
struct KeyOperations<std::pair<const K, V>> {
    /// @{
    /// The key of a pair, and how keys are compared.
    static const K& extract(const std::pair<const K, V>& value) { return value.first; }
    static bool equals(const K& a, const K& b) { return a == b; }
    /// @}

    /// A pair of a copy of `key` and a new value.
    static std::pair<const K, V> makeValue(const K& key) { return {key, V()}; }

    /// Turns `value` into such a pair. Where copying the key throws, `value` stays as it was. Keys
    /// whose move constructor may throw are refused at compile time; maps use `makeValue`.
    static void createValue(const K& key, std::pair<const K, V>& value) {
        static_assert(std::is_nothrow_move_constructible_v<K>,
                      "a pair must not be left without a key");
        std::pair<K, V> made(key, V());
        // The key is const, so it is not assigned but made anew in its place.
        K* first = const_cast<K*>(&value.first);
        value.second = std::move(made.second);
        std::destroy_at(first);
        std::construct_at(first, std::move(made.first));
    }
};

}  // namespace moxtel::util

#pragma GCC visibility pop
