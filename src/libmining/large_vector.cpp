#include "large_vector.hpp"

#include <sys/mman.h>

namespace quarvis::mining {

namespace {

constexpr std::align_val_t ALIGNMENT{LARGE_PAGE};

/// Rounds up to large pages. A last page that would be less than half full is left to small pages.
std::size_t rounded(std::size_t bytes) {
    return bytes % LARGE_PAGE < LARGE_PAGE / 2 ? bytes : (bytes / LARGE_PAGE + 1) * LARGE_PAGE;
}

}  // namespace

void* takeLarge(std::size_t bytes) {
    void* const room = ::operator new(rounded(bytes), ALIGNMENT);
    // If the system has no large pages, small ones do as well.
    (void)madvise(room, rounded(bytes), MADV_HUGEPAGE);
    return room;
}

void giveLarge(void* room) noexcept {
    ::operator delete(room, ALIGNMENT);
}

}  // namespace quarvis::mining
