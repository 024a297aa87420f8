#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#pragma GCC visibility push(default)

/// \file
/// Hash codes of keys. They depend on the bytes of the key alone, so they are the same in every run
/// on machines of one byte order.
namespace moxtel::util {

/// A hash code of `Bits` bits, an unsigned integer. Only 32 bits are defined.
template <unsigned Bits>
struct HashCode;

/// A code of 32 bits.
template <>
struct HashCode<32> {
    std::uint32_t value;  ///< Any number of 32 bits.

    /// As `value`, so that a code serves as a number.
    constexpr operator std::uint32_t() const { return value; }
};

/// The FNV-1 code of `length` bytes, except that each byte is taken as a signed number: one of 0x80
/// or above also flips the upper 24 bits, and gives another code than the usual FNV-1. Takes time
/// linear in the length.
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

/// The hash function of keys of type `K`: for integers and enumerations over their bytes as they
/// lie in memory. Specialise it for other keys; keys that are equal need the same code.
template <class K, unsigned Bits = 32>
struct DefaultHash {
    static_assert(std::is_integral_v<K> || std::is_enum_v<K>, "no hash function for these keys");

    /// The code of `key`.
    HashCode<Bits> operator()(K key) const { return fnv1<Bits>(&key, sizeof key); }
};

/// Texts: over their characters, NULs among them included, without a terminator.
template <unsigned Bits>
struct DefaultHash<std::string, Bits> {
    /// The code of `key`, in time linear in its length.
    HashCode<Bits> operator()(const std::string& key) const {
        return fnv1<Bits>(key.data(), key.size());
    }
};

}  // namespace moxtel::util

#pragma GCC visibility pop
