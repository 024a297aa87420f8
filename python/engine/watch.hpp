#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include <nanobind/nanobind.h>

#include <quarvis/mining/mine.hpp>

namespace binding {

/// Watches a run for Python: checks for pending signals, so that Ctrl-C ends the run, and reports
/// progress to a callable, at most ten times a second. Holds the budget of the run, which starts
/// when the watch is made and covers all steps.
///
/// Must be made and destroyed with the interpreter's lock held. The engine calls it without the
/// lock. The watch takes the lock only while it needs Python, and only in the calling thread.
class Watch : public quarvis::mining::Observer {
  public:
    /// `progress` is None, or is called as `progress(step, done, all)` with the name of the step.
    Watch(nanobind::object progress, const quarvis::mining::Budget& budget);

    void levelFound(std::size_t size, std::size_t sets) override;
    void progressed(std::uint64_t done, std::uint64_t all) override;
    bool isCancelled() const override;

    /// Throws `Cancelled` if the run is to end.
    void endIfAsked() const {
        if (isCancelled())
            throw quarvis::mining::Cancelled();
    }

    /// Sets the name of the step for the following progress reports.
    void beginStep(std::string name) { m_step = std::move(name); }

    /// Names the steps of a search for item sets of up to `maxSize` items (0 means any size), and
    /// of the search for their rules that follows.
    void beginSearch(std::size_t maxSize);

    /// The budget of the run, with the time that is left.
    quarvis::mining::Budget budget() const;

    /// Calls `work`, a run of the engine that keeps to `budget()`, without the interpreter's lock.
    /// Exceptions of the work propagate. A Python error that ended the work, such as
    /// KeyboardInterrupt, is thrown as `nanobind::python_error`.
    template <class Work>
    auto run(Work work) {
        begin(false);
        try {
            const nanobind::gil_scoped_release released;
            return work();
        } catch (...) {
            throwError();
            throw;
        }
    }

    /// The same for work that does not keep to a budget by itself. When the time of the run is
    /// over, throws `BudgetExceeded`, which reports `found`, the sets that were found before.
    template <class Work>
    auto runInTime(Work work, const quarvis::mining::ItemSets& found = {}) {
        begin(true);
        try {
            const nanobind::gil_scoped_release released;
            return work();
        } catch (const quarvis::mining::Cancelled&) {
            throwError();
            throw exceeded(quarvis::mining::BudgetExceeded::Limit::TIME, found);
        }
    }

  private:
    using Clock = std::chrono::steady_clock;

    void begin(bool keepsTime);
    void throwError();
    void poll() const;
    bool isOver() const;

    nanobind::object m_progress;
    quarvis::mining::Budget m_budget;
    Clock::time_point m_began;
    std::string m_step;
    std::size_t m_maxSize = 0;
    bool m_keepsTime = false;
    std::thread::id m_caller;
    Clock::time_point m_told;

    // Mutable, since the engine polls through a constant observer.
    mutable Clock::time_point m_polled;
    mutable std::atomic<bool> m_stopped{false};
    mutable bool m_hasError = false;
};

}  // namespace binding
