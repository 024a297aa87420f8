#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include <nanobind/nanobind.h>

#include <quarvis/mining/observer.hpp>

namespace binding {

/// Which bound of a run's budget was reached.
enum class Bound : std::uint8_t { NONE, SECONDS, SETS, BYTES };

/// Thrown out of a run that reached a bound of its budget.
class OutOfBudget : public std::runtime_error {
  public:
    OutOfBudget() : std::runtime_error("the run reached a bound of its budget") {}
};

/// Watches a run on behalf of Python: asks for pending signals, so that Ctrl-C ends the run, tells
/// a callable of the progress, ten times a second at most, and stops at the bounds of a budget.
///
/// The budget counts from its making on, over all steps. Made and destroyed with the interpreter's
/// lock held. The engine calls it without the lock; it takes the lock for the moments in which it
/// needs Python, in the calling thread alone.
class Watch : public quarvis::mining::Observer {
  public:
    /// The bounds of a run; 0 is no bound.
    struct Budget {
        double seconds = 0;
        std::uint64_t sets = 0;   ///< Item sets of all sizes together.
        std::uint64_t bytes = 0;  ///< Growth of the resident memory of the process.
    };

    /// `progress` is called as `progress(step, done, all)` with the step's name, or is None.
    Watch(nanobind::object progress, Budget budget);

    void levelFound(std::size_t size, std::size_t sets) override;
    void progressed(std::uint64_t done, std::uint64_t all) override;
    bool isCancelled() const override;

    /// Names the step that progress is told of from now on.
    void beginStep(std::string name) { m_step = std::move(name); }

    /// Calls `work` without the interpreter's lock and passes on what it throws. A Python error
    /// that ended the work, such as KeyboardInterrupt, is thrown as `nanobind::python_error`.
    template <class Work>
    auto run(Work work) {
        begin();
        try {
            const nanobind::gil_scoped_release released;
            return work();
        } catch (const quarvis::mining::Cancelled&) {
            throwReason();
            throw;
        }
    }

    /// @{
    /// How far the run came: the greatest size of which all item sets are known, the sets up to
    /// there, and the bound that was reached.
    std::size_t size() const { return m_size; }
    std::uint64_t sets() const { return m_sets; }
    Bound bound() const { return m_bound; }
    /// @}

  private:
    using Clock = std::chrono::steady_clock;

    void begin();
    void throwReason();
    void poll() const;
    Bound reachedBound() const;
    void reach(Bound bound) const;

    nanobind::object m_progress;
    Budget m_budget;
    std::string m_step;
    std::size_t m_size = 0;
    std::uint64_t m_sets = 0;

    // The engine asks through a constant observer.
    std::thread::id m_caller;
    Clock::time_point m_began;
    std::uint64_t m_bytesBefore = 0;
    Clock::time_point m_told;
    mutable Clock::time_point m_polled;
    mutable std::atomic<bool> m_stopped{false};
    mutable bool m_hasError = false;
    mutable Bound m_bound = Bound::NONE;
};

}  // namespace binding
