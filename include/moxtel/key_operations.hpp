#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace moxtel::util {

/// How values of type `T` have keys: `extract` gives the key of a value, `equals` compares two
/// keys, and `createValue` turns a value-initialised `T` into the value for a key. As it stands
/// here a value is its own key; specialise it for values that carry a key.
template <class T>
struct KeyOperations {
    static const T& extract(const T& value) { return value; }
    static bool equals(const T& a, const T& b) { return a == b; }
    static void createValue(const T& key, T& value) { value = key; }
};

/// The pairs of a map: the key is `first`, and a new value is value-initialised (0 for numbers).
template <class K, class V>
struct KeyOperations<std::pair<const K, V>> {
    static const K& extract(const std::pair<const K, V>& value) { return value.first; }
    static bool equals(const K& a, const K& b) { return a == b; }
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
