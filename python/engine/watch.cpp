#include "watch.hpp"

#include <algorithm>
#include <utility>

#include <nanobind/stl/string.h>

namespace binding {

using quarvis::mining::Budget;

namespace {

/// Ctrl-C must end a run within a tenth of a second, so signals are polled more often than that.
constexpr std::chrono::milliseconds POLLED_EVERY{20};
constexpr std::chrono::milliseconds TOLD_EVERY{100};

}  // namespace

Watch::Watch(nanobind::object progress, const Budget& budget)
    : m_progress(std::move(progress)), m_budget(budget), m_began(Clock::now()) {}

void Watch::begin(bool keepsTime) {
    m_keepsTime = keepsTime;
    m_caller = std::this_thread::get_id();
    m_told = m_polled = Clock::now();
    m_stopped = false;
    m_hasError = false;
}

void Watch::beginSearch(std::size_t maxSize) {
    m_step = "item sets";
    m_maxSize = maxSize;
}

void Watch::levelFound(std::size_t size, std::size_t sets) {
    const bool isLast = size == m_maxSize || (size > 1 && sets == 0);
    if (isLast)
        m_step = "rules";
}

Budget Watch::budget() const {
    Budget left = m_budget;
    if (left.time.count() != 0)  // 0 means no limit, so the time left must not become 0
        left.time = std::max<std::chrono::nanoseconds>(left.time - (Clock::now() - m_began),
                                                       std::chrono::nanoseconds(1));
    return left;
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
    if (m_keepsTime && isOver()) {
        m_stopped = true;
        return;
    }
    const nanobind::gil_scoped_acquire acquired;
    if (PyErr_CheckSignals() != 0) {
        // The Python error stays set in this thread until the run has ended.
        m_hasError = true;
        m_stopped = true;
    }
}

bool Watch::isOver() const {
    return m_budget.time.count() != 0 && Clock::now() - m_began > m_budget.time;
}

void Watch::throwError() {
    if (m_hasError)
        throw nanobind::python_error();
}

}  // namespace binding
