#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// What a run tells while it works, and the way to end it early. Every operation does nothing here;
/// a front end overrides what it needs.
///
/// All calls come from the thread that called the engine, except `isCancelled`, which any thread of
/// the run may ask at any time. An exception that an operation throws ends the run and reaches the
/// caller of the engine.
class Observer {
  public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    /// There are `sets` frequent item sets of `size` items. Called once for each size from 1 on, in
    /// order, as soon as it is known; the last call is that of the first size from 2 on without a
    /// set, or that of the greatest size asked for.
    virtual void levelFound(std::size_t /*size*/, std::size_t /*sets*/) {}

    /// The sets of `size` items are going to be counted, of which there are `most` at most: each is
    /// made of two sets of one item less that share all but the last, and no more can be made of
    /// so many. Called where a level is counted on its own: in runs over several shards, and in
    /// those that take longer than a third of a second.
    virtual void levelForecast(std::size_t /*size*/, std::size_t /*most*/) {}

    /// All rules were counted; `rules` have the least count.
    virtual void rulesCounted(std::size_t /*rules*/) {}

    /// Of the step at hand, `done` of `all` tasks are done; a task is a first item, or a shard. A
    /// run takes several steps one after the other, and each begins anew.
    virtual void progressed(std::uint64_t /*done*/, std::uint64_t /*all*/) {}

    /// Whether the run is to end. Asked often: between steps, and within long ones every few
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
