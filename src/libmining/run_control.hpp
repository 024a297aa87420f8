#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>

#include <quarvis/mining/observer.hpp>

#include "meter.hpp"

namespace quarvis::mining {

/// Thrown out of a step that costs more than it should; its caller takes a smaller step.
class TooLong : public std::exception {};

/// One step of a run, as all its threads share it: what it has cost, what it may cost, and whether
/// it is to end. Costs are told in units of about a nanosecond.
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

    /// Has all threads of the step end, since one of them failed.
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

/// After so many sets a loop over sets asks its step whether to end.
constexpr std::size_t ASKED_EVERY = std::size_t{1} << 16;

/// To be called by a loop over sets for each of them.
inline void ask(Step& step, std::size_t set) {
    if (set % ASKED_EVERY == ASKED_EVERY - 1)
        step.spend(0);
}

/// The account of one thread, settled with the step every millisecond or so.
class Work {
  public:
    explicit Work(Step& step) : m_step(step) {}

    void add(std::uint64_t units) {
        m_units += units;
        if (m_units >= SETTLED_AT)
            settle();
    }

    Step& step() const { return m_step; }

    /// What was found and taken, for the budget of the run.
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
