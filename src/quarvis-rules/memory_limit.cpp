#include "memory_limit.hpp"

#include <fstream>
#include <string>

#include <sys/resource.h>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool ADDRESS_SANITIZER = true;
#elif defined(__has_feature)
constexpr bool ADDRESS_SANITIZER = __has_feature(address_sanitizer);
#else
constexpr bool ADDRESS_SANITIZER = false;
#endif

}  // namespace

std::optional<std::uint64_t> availableMemory(std::istream& meminfo) {
    for (std::string name; meminfo >> name; meminfo.ignore(256, '\n')) {
        std::uint64_t kibibytes = 0;
        if (name == "MemAvailable:" && meminfo >> kibibytes)
            return kibibytes * 1024;
    }
    return std::nullopt;
}

void limitMemory() {
    if (ADDRESS_SANITIZER)
        return;
    std::ifstream meminfo("/proc/meminfo");
    const std::optional<std::uint64_t> available = availableMemory(meminfo);
    rlimit limit{};
    if (!available || getrlimit(RLIMIT_DATA, &limit) != 0)
        return;
    if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur > *available) {
        limit.rlim_cur = *available;
        setrlimit(RLIMIT_DATA, &limit);
    }
}
