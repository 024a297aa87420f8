#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

/// \file
/// Hashes and compares names eight bytes at a time. The last eight bytes of a name may overlap
/// those before. A name of fewer than eight bytes is a single number, which identifies it among the
/// names of its length.
namespace quarvis::mining {

inline std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// The number of a name of fewer than eight bytes.
inline std::uint64_t shortWord(std::string_view name) {
    const auto byteAt = [name](std::size_t i) {
        return std::uint64_t{static_cast<unsigned char>(name[i])};
    };
    const std::size_t size = name.size();
    if (size >= sizeof(std::uint32_t)) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, name.data(), sizeof first);
        std::memcpy(&last, name.data() + size - sizeof last, sizeof last);
        return std::uint64_t{last} << 32 | first;
    }
    return size == 0 ? 0 : byteAt(size - 1) << 16 | byteAt(size / 2) << 8 | byteAt(0);
}

/// A hash of a name. Multiplying by an odd number carries every bit up, and shifting brings the
/// high bits down. Hashes differ between machines of different byte orders, so they must not affect
/// a result.
inline std::uint32_t nameHash(std::string_view name) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    const auto mixed = [](std::uint64_t hash, std::uint64_t with) {
        hash = (hash ^ with) * 0x9e3779b97f4a7c15U;
        return hash ^ hash >> 32;
    };
    std::uint64_t hash = name.size();
    if (name.size() < word) {
        // The length is spread over all bits first, because `shortWord` repeats bytes.
        hash = mixed(mixed(0, hash), shortWord(name));
    } else {
        const char* const last = name.data() + name.size() - word;
        for (const char* bytes = name.data(); bytes < last; bytes += word)
            hash = mixed(hash, wordAt(bytes));
        hash = mixed(hash, wordAt(last));
    }
    return static_cast<std::uint32_t>(mixed(hash, 0));
}

/// Whether two names are the same.
inline bool sameName(std::string_view a, std::string_view b) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    if (a.size() != b.size())
        return false;
    if (a.size() < word)
        return shortWord(a) == shortWord(b);
    const std::size_t last = a.size() - word;
    for (std::size_t i = 0; i < last; i += word)
        if (wordAt(a.data() + i) != wordAt(b.data() + i))
            return false;
    return wordAt(a.data() + last) == wordAt(b.data() + last);
}

}  // namespace quarvis::mining
