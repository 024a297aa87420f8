#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#pragma GCC visibility push(default)

/// \file
/// Hash codes of keys. A code depends on the bytes of its key alone, so it is the same in every run
/// on machines of one byte order. Any thread may call these functions.
namespace moxtel::util {

/// A hash code of `Bits` bits, an unsigned integer. Only 32 bits are defined.
template <unsigned Bits>
struct HashCode;

/// A code of 32 bits.
template <>
struct HashCode<32> {
    std::uint32_t value;  ///< Any number of 32 bits.

    /// Gives `value`, so that a code serves as a number.
    constexpr operator std::uint32_t() const { return value; }
};

/// The FNV-1 code of `length` bytes (Fowler, Noll and Vo), except that each byte is taken as a
/// signed number. A byte of 0x80 or above thus also flips the upper 24 bits, and the code differs
/// from the usual FNV-1. Takes time linear in the length. `data` may be null when the length is 0.
template <unsigned Bits>
HashCode<Bits> fnv1(const void* data, std::size_t length) {
    static_assert(Bits == 32, "only codes of 32 bits are defined");
    const auto* bytes = static_cast<const signed char*>(data);
    std::uint32_t h = 0x811c9dc5;
    for (std::size_t i = 0; i < length; ++i) {
        h *= 0x01000193;
        h ^= static_cast<std::uint32_t>(std::int32_t{bytes[i]});
    }
    return {h};
}

/// The hash function of keys of type `K`. For integers and enumerations it takes their bytes as
/// they lie in memory. Specialise the template for other keys; equal keys need the same code.
template <class K, unsigned Bits = 32>
struct DefaultHash {
    static_assert(std::is_integral_v<K> || std::is_enum_v<K>, "no hash function for these keys");

    /// The code of `key`.
    HashCode<Bits> operator()(K key) const { return fnv1<Bits>(&key, sizeof key); }
};

/// The hash function of texts. It takes their characters, NULs too, without a terminator.
template <unsigned Bits>
struct DefaultHash<std::string, Bits> {
    /// The code of `key`, in time linear in its length.
    HashCode<Bits> operator()(const std::string& key) const {
        return fnv1<Bits>(key.data(), key.size());
    }
};

}  // namespace moxtel::util

#pragma GCC visibility pop
