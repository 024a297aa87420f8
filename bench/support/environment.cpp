#include "environment.hpp"

#include <sys/utsname.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "machine_load.hpp"

namespace bench {

namespace {

namespace fs = std::filesystem;

std::string firstLine(const fs::path& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

std::string processor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    return "unknown";
}

/// Those of the first core, the levels in ascending order.
std::string caches() {
    std::string text;
    for (int i = 0;; ++i) {
        const fs::path cache = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(i);
        if (!fs::exists(cache))
            break;
        text += (i == 0 ? "L" : ", L") + firstLine(cache / "level") + ' ' +
                firstLine(cache / "type") + ' ' + firstLine(cache / "size");
    }
    return text.empty() ? "unknown" : text;
}

constexpr double GREATEST_BUSY = 0.2;  // cores at work beside the program

std::string version() {
    std::string text = "unknown";
    if (FILE* git = popen("git -C '" SOURCE_ROOT "' describe --always --dirty 2>/dev/null", "r")) {
        char line[256];
        if (std::fgets(line, sizeof line, git) != nullptr)
            text = std::string(line, std::string(line).find('\n'));
        pclose(git);
    }
    return text;
}

}  // namespace

void printEnvironment() {
    utsname system{};
    uname(&system);
    std::printf("processor: %s, %u core(s)\n", processor().c_str(),
                std::thread::hardware_concurrency());
    std::printf("caches:    %s\n", caches().c_str());
    std::printf("memory:    %s\n", firstLine("/proc/meminfo").c_str());
    std::printf("system:    %s %s %s, load %s\n", system.sysname, system.release, system.machine,
                firstLine("/proc/loadavg").c_str());
#if defined(__clang__)
    std::printf("compiler:  %s\n", __VERSION__);
#else
    std::printf("compiler:  g++ %s\n", __VERSION__);
#endif
    std::printf("flags:     %s\n", BUILD_FLAGS);
    std::printf("version:   %s\n", version().c_str());
#if !defined(__OPTIMIZE__)
    std::printf("WARNING: this build is not optimised; its figures mean nothing.\n");
#endif
    if (const double busy = busyCores(); busy > GREATEST_BUSY)
        std::printf(
            "WARNING: %.1f core(s) are busy with other work; run again when they are not.\n", busy);
    std::fflush(stdout);
}

}  // namespace bench
