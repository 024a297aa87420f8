#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace support {

/// How many file descriptors the tests have open.
inline std::ptrdiff_t openFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

}  // namespace support
