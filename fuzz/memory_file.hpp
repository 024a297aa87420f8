#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

namespace fuzz {

/// A file in memory that has a path. A target can open it thousands of times per second.
class MemoryFile {
  public:
    explicit MemoryFile(const std::string& content = "") : m_descriptor(memfd_create("fuzz", 0)) {
        if (m_descriptor < 0)
            throw std::system_error(errno, std::generic_category(), "memfd_create");
        if (pwrite(m_descriptor, content.data(), content.size(), 0) !=
            static_cast<ssize_t>(content.size()))
            throw std::system_error(errno, std::generic_category(), "pwrite");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_descriptor); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

    std::string content() const {
        std::string text;
        char block[4096];
        ssize_t size = 0;
        while ((size = pread(m_descriptor, block, sizeof block, static_cast<off_t>(text.size()))) >
               0)
            text.append(block, static_cast<std::size_t>(size));
        return text;
    }

  private:
    int m_descriptor;
};

}  // namespace fuzz
