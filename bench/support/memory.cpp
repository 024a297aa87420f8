#include "memory.hpp"

#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

std::size_t statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string name; status >> name; status.ignore(1000, '\n'))
        if (std::size_t kibibytes = 0; name == field && status >> kibibytes)
            return kibibytes * 1024;
    throw std::runtime_error("/proc/self/status does not tell " + field);
}

}  // namespace

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void mapHeap(std::size_t size) {
    constexpr std::size_t page = 4096;
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    auto* const block = static_cast<volatile char*>(std::malloc(size));
    if (block == nullptr)
        throw std::bad_alloc();
    for (std::size_t i = 0; i < size; i += page)
        block[i] = 0;
    std::free(const_cast<char*>(block));
}

MemoryPeak::MemoryPeak() {
    malloc_trim(0);
    std::ofstream reset("/proc/self/clear_refs");
    if (!(reset << '5' << std::flush))
        throw std::runtime_error("the peak of the memory cannot be reset");
    m_start = statusBytes("VmRSS:");
}

std::size_t MemoryPeak::rise() const {
    return statusBytes("VmHWM:") - m_start;
}

}  // namespace bench
