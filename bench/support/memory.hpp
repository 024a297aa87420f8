#pragma once

#include <cstddef>

/// The memory of this process, in bytes.
namespace bench {

/// What is allocated on the heap, without the allocator's own book-keeping.
std::size_t heapInUse();

/// Has the system give the process `size` bytes of memory now, from which allocations are then
/// served: what follows does not pay for page faults, whose price is the system's.
void mapHeap(std::size_t size);

/// Measures how far the resident memory of the process rises above what it is at first.
class MemoryPeak {
  public:
    /// Gives free memory back to the system before. Throws `std::runtime_error` where the system
    /// does not let a process reset its peak.
    MemoryPeak();

    /// The greatest rise so far.
    std::size_t rise() const;

  private:
    std::size_t m_start;
};

}  // namespace bench
