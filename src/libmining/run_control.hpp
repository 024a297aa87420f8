#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>

#include <quarvis/mining/observer.hpp>

#include "meter.hpp"

namespace quarvis::mining {

/// Thrown when a step costs more than its limit. The caller then takes smaller steps.
class TooLong : public std::exception {};

/// A step of a run, which all its threads share: what it has cost, what it may cost, and whether it
/// is to end. A unit of cost is about a nanosecond.
class Step {
  public:
    static constexpr std::uint64_t NO_LIMIT = static_cast<std::uint64_t>(-1);

    explicit Step(const Observer& observer, Meter& meter, std::uint64_t limit = NO_LIMIT)
        : m_observer(observer), m_meter(meter), m_limit(limit) {}

    /// Accounts for work. Throws `Cancelled`, `OverBudget` or `TooLong` when the step is to end.
    void spend(std::uint64_t units) {
        if (m_observer.isCancelled())
            throw Cancelled();
        m_meter.checkTime();
        if (m_spent.fetch_add(units, std::memory_order_relaxed) + units > m_limit)
            throw TooLong();
        if (m_failed.load(std::memory_order_relaxed))
            throw Cancelled();
    }

    /// Ends all threads of the step because one of them failed.
    void fail() { m_failed.store(true, std::memory_order_relaxed); }

    Meter& meter() const { return m_meter; }

    std::uint64_t spent() const { return m_spent.load(std::memory_order_relaxed); }

  private:
    const Observer& m_observer;
    Meter& m_meter;
    std::uint64_t m_limit;
    std::atomic<std::uint64_t> m_spent{0};
    std::atomic<bool> m_failed{false};
};

/// A loop over sets asks its step whether to end after this many sets.
constexpr std::size_t ASKED_EVERY = std::size_t{1} << 16;

/// Asks the step in a loop over sets, which calls this for each set.
inline void ask(Step& step, std::size_t set) {
    if (set % ASKED_EVERY == ASKED_EVERY - 1)
        step.spend(0);
}

/// The work of one thread, added to that of the step about every millisecond.
class Work {
  public:
    explicit Work(Step& step) : m_step(step) {}

    void add(std::uint64_t units) {
        m_units += units;
        if (m_units >= SETTLED_AT)
            settle();
    }

    Step& step() const { return m_step; }

    /// The meter of the run.
    Meter& meter() const { return m_step.meter(); }

    void settle() {
        const std::uint64_t units = m_units;
        m_units = 0;
        m_step.spend(units);
    }

  private:
    static constexpr std::uint64_t SETTLED_AT = 1'000'000;

    Step& m_step;
    std::uint64_t m_units = 0;
};

}  // namespace quarvis::mining
