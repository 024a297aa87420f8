#include "machine_load.hpp"

#include <chrono>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace bench {

namespace {

/// Ticks of all cores together since the system started.
struct Ticks {
    std::uint64_t all = 0;
    std::uint64_t idle = 0;
};

Ticks ticks() {
    std::ifstream file("/proc/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream fields(line);
    fields.ignore(static_cast<std::streamsize>(line.size()), ' ');
    Ticks ticks;
    // user, nice, system, idle, iowait, irq, softirq, steal. The later ones are included in the
    // first two.
    std::uint64_t each = 0;
    for (int field = 0; field < 8 && fields >> each; ++field) {
        ticks.all += each;
        if (field == 3 || field == 4)
            ticks.idle += each;
    }
    return ticks;
}

}  // namespace

double busyCores() {
    const Ticks before = ticks();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const Ticks after = ticks();
    const auto all = static_cast<double>(after.all - before.all);
    const auto busy = all - static_cast<double>(after.idle - before.idle);
    return all == 0 ? 0 : busy / all * std::thread::hardware_concurrency();
}

}  // namespace bench
