#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace quarvis::mining {

/// A hash of a name that takes in eight bytes at a time. A multiplication by an odd number carries
/// every bit up, and a shift brings the high ones down. The same on every run of a machine; its
/// values must not reach a result.
inline std::uint32_t nameHash(std::string_view name) {
    constexpr std::size_t WORD = sizeof(std::uint64_t);
    const auto mixed = [](std::uint64_t hash, std::uint64_t word) {
        hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
        return hash ^ hash >> 32;
    };
    const auto wordAt = [](const char* bytes) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    };
    const char* bytes = name.data();
    std::size_t left = name.size();
    std::uint64_t hash = name.size();
    if (left >= WORD) {
        // The last word may overlap the one before it.
        const std::uint64_t last = wordAt(bytes + left - WORD);
        for (; left > WORD; left -= WORD, bytes += WORD)
            hash = mixed(hash, wordAt(bytes));
        hash = mixed(hash, last);
    } else {
        std::uint64_t word = 0;
        while (left > 0)
            word = word << 8 | static_cast<unsigned char>(bytes[--left]);
        hash = mixed(hash, word);
    }
    return static_cast<std::uint32_t>(mixed(hash, 0));
}

}  // namespace quarvis::mining
