#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Receives the progress of a run, and can end the run early. Every operation does nothing by
/// default; a front end overrides those that it needs.
///
/// All calls come from the thread that called the engine, except `isCancelled`, which any thread of
/// the run may call at any time. An exception that an operation throws ends the run and reaches the
/// caller of the engine.
class Observer {
  public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    /// There are `sets` frequent item sets of `size` items. Called once for each size from 1 on, in
    /// order, as soon as the number is known. The last call is for the first size from 2 on without
    /// a set, or for the greatest size asked for.
    virtual void levelFound(std::size_t /*size*/, std::size_t /*sets*/) {}

    /// The sets of `size` items are about to be counted; there are at most `most` of them. The
    /// bound follows from the sets of one item less: a larger set needs two of them that share all
    /// but the last item, and so many sets cannot be all the parts of more larger ones. Called only
    /// where a level is counted on its own: in runs over several shards, and in searches that take
    /// longer than a third of a second.
    virtual void levelForecast(std::size_t /*size*/, std::size_t /*most*/) {}

    /// All rules are counted; `rules` of them reach the least count.
    virtual void rulesCounted(std::size_t /*rules*/) {}

    /// `done` of the `all` tasks of the current step are done. A task is a first item or a shard. A
    /// run takes several steps in turn, each with tasks of its own.
    virtual void progressed(std::uint64_t /*done*/, std::uint64_t /*all*/) {}

    /// Whether the run is to end. Called often: between steps, and within long ones every few
    /// milliseconds.
    virtual bool isCancelled() const { return false; }
};

/// Thrown out of a run that its observer cancelled. Nothing of the run remains.
class Cancelled : public std::runtime_error {
  public:
    Cancelled() : std::runtime_error("the run was cancelled") {}
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
