#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace support {

/// The number of open file descriptors of this process.
inline std::ptrdiff_t openFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

}  // namespace support
