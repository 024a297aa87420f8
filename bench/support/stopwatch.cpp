#include "stopwatch.hpp"

#include <ctime>

namespace bench {

namespace {

double read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Seconds now() {
    return {read(CLOCK_MONOTONIC), read(CLOCK_PROCESS_CPUTIME_ID)};
}

}  // namespace

Seconds& Seconds::operator+=(const Seconds& more) {
    wall += more.wall;
    cpu += more.cpu;
    return *this;
}

Stopwatch::Stopwatch() : m_start(now()) {}

Seconds Stopwatch::elapsed() const {
    const Seconds end = now();
    return {end.wall - m_start.wall, end.cpu - m_start.cpu};
}

Seconds Stopwatch::lap() {
    const Seconds end = now();
    const Seconds passed{end.wall - m_start.wall, end.cpu - m_start.cpu};
    m_start = end;
    return passed;
}

}  // namespace bench
