#pragma once

#include <atomic>
#include <cstdint>
#include <exception>

#include <quarvis/mining/observer.hpp>

namespace quarvis::mining {

/// Thrown out of a step that costs more than it was given; its caller takes a smaller step.
class OutOfBudget : public std::exception {};

/// One step of a run, as all its threads share it: what it has cost, what it may cost, and whether
/// it is to end. Costs are told in units of about a nanosecond.
class Step {
  public:
    static constexpr std::uint64_t NO_LIMIT = static_cast<std::uint64_t>(-1);

    explicit Step(const Observer& observer, std::uint64_t limit = NO_LIMIT)
        : m_observer(observer), m_limit(limit) {}

    /// Accounts for work. Throws `Cancelled` or `OutOfBudget` when the step is to end.
    void spend(std::uint64_t units) {
        if (m_observer.isCancelled())
            throw Cancelled();
        if (m_spent.fetch_add(units, std::memory_order_relaxed) + units > m_limit)
            throw OutOfBudget();
        if (m_failed.load(std::memory_order_relaxed))
            throw Cancelled();
    }

    /// Has all threads of the step end, since one of them failed.
    void fail() { m_failed.store(true, std::memory_order_relaxed); }

    std::uint64_t spent() const { return m_spent.load(std::memory_order_relaxed); }

  private:
    const Observer& m_observer;
    std::uint64_t m_limit;
    std::atomic<std::uint64_t> m_spent{0};
    std::atomic<bool> m_failed{false};
};

/// The account of one thread, settled with the step every millisecond or so.
class Work {
  public:
    explicit Work(Step& step) : m_step(step) {}

    void add(std::uint64_t units) {
        m_units += units;
        if (m_units >= SETTLED_AT)
            settle();
    }

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
