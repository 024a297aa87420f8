#include "watch.hpp"

#include <cstdio>
#include <utility>

#include <nanobind/stl/string.h>
#include <unistd.h>

namespace binding {

namespace {

/// Ctrl-C is to end a run within a tenth of a second, so signals are asked for more often.
constexpr std::chrono::milliseconds POLLED_EVERY{20};
constexpr std::chrono::milliseconds TOLD_EVERY{100};

/// The resident memory of this process in bytes; 0 where the system does not tell.
std::uint64_t residentBytes() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr)
        return 0;
    unsigned long size = 0;
    unsigned long resident = 0;
    const int read = std::fscanf(file, "%lu %lu", &size, &resident);
    std::fclose(file);
    return read == 2 ? std::uint64_t{resident} * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE))
                     : 0;
}

}  // namespace

Watch::Watch(nanobind::object progress, Budget budget)
    : m_progress(std::move(progress)),
      m_budget(budget),
      m_began(Clock::now()),
      m_bytesBefore(budget.bytes == 0 ? 0 : residentBytes()) {}

void Watch::begin() {
    m_caller = std::this_thread::get_id();
    m_told = m_polled = Clock::now();
    m_stopped = false;
    m_hasError = false;
    m_bound = Bound::NONE;
}

void Watch::levelFound(std::size_t size, std::size_t sets) {
    m_size = size;
    m_sets += sets;
    if (m_budget.sets != 0 && m_sets > m_budget.sets)
        reach(Bound::SETS);
}

void Watch::progressed(std::uint64_t done, std::uint64_t all) {
    if (!m_progress.is_valid() || m_progress.is_none())
        return;
    const Clock::time_point now = Clock::now();
    if (now - m_told < TOLD_EVERY)
        return;
    m_told = now;
    const nanobind::gil_scoped_acquire acquired;
    m_progress(m_step, done, all);
}

bool Watch::isCancelled() const {
    if (std::this_thread::get_id() == m_caller && !m_stopped.load(std::memory_order_relaxed))
        poll();
    return m_stopped.load(std::memory_order_relaxed);
}

void Watch::poll() const {
    const Clock::time_point now = Clock::now();
    if (now - m_polled < POLLED_EVERY)
        return;
    m_polled = now;
    if (const Bound bound = reachedBound(); bound != Bound::NONE) {
        reach(bound);
        return;
    }
    const nanobind::gil_scoped_acquire acquired;
    if (PyErr_CheckSignals() != 0) {
        // The error stays set in this thread until the run has ended.
        m_hasError = true;
        m_stopped = true;
    }
}

Bound Watch::reachedBound() const {
    if (m_budget.seconds > 0 &&
        std::chrono::duration<double>(Clock::now() - m_began).count() > m_budget.seconds)
        return Bound::SECONDS;
    if (m_budget.bytes != 0 && residentBytes() > m_bytesBefore + m_budget.bytes)
        return Bound::BYTES;
    return Bound::NONE;
}

void Watch::reach(Bound bound) const {
    m_bound = bound;
    m_stopped = true;
}

void Watch::throwReason() {
    if (m_hasError)
        throw nanobind::python_error();
    if (m_bound != Bound::NONE)
        throw OutOfBudget();
}

}  // namespace binding
