#pragma once

#include <cstddef>

/// The memory of this process, in bytes.
namespace bench {

/// The bytes that are allocated on the heap, without the allocator's own data.
std::size_t heapInUse();

/// Makes the system give the process `size` bytes of memory, which later allocations use. These
/// then do not pay for page faults, whose price is the system's.
void mapHeap(std::size_t size);

/// Measures how far the resident memory of the process rises above its first value.
class MemoryPeak {
  public:
    /// First gives free memory back to the system. Throws `std::runtime_error` if the system does
    /// not let a process reset its peak.
    MemoryPeak();

    /// The greatest rise so far.
    std::size_t rise() const;

  private:
    std::size_t m_start;
};

}  // namespace bench
