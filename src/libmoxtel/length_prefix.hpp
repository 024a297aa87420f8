#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include <moxtel/exception.hpp>

namespace moxtel::io {

/// `len` as a `Prefix`; throws `IOException` with `tooLarge` when it does not fit.
template <class Prefix>
Prefix lengthPrefix(std::size_t len, const char* tooLarge) {
    if (len > std::numeric_limits<Prefix>::max())
        throw IOException(tooLarge);
    return static_cast<Prefix>(len);
}

/// The prefix of a string of `len` bytes whose length is written in so many bits. All but the last
/// throw `IOException` when the length does not fit.
inline unsigned char lengthPrefix8(std::size_t len) {
    return lengthPrefix<unsigned char>(len, "String too large to fit in a PStr8");
}

inline unsigned short lengthPrefix16(std::size_t len) {
    return lengthPrefix<unsigned short>(len, "String too large to fit in a PStr16");
}

/// The message names the 16-bit form here, too.
inline unsigned int lengthPrefix32(std::size_t len) {
    return lengthPrefix<unsigned int>(len, "String too large to fit in a PStr16");
}

/// The low 16 bits of the length.
inline std::uint64_t lengthPrefix64(std::size_t len) {
    return static_cast<unsigned short>(len);
}

}  // namespace moxtel::io
