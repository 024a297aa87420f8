#pragma once

#include <atomic>
#include <cassert>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "run_control.hpp"

namespace quarvis::mining {

/// Runs the tasks 0 to `count` - 1 in `threads` threads, the calling one among them.
///
/// Each thread makes a worker by `makeWorker(thread)` and calls it with one task after the other.
/// Tasks are handed out in ascending order. Before each task the step is asked whether to end. The
/// first exception ends all threads and is rethrown. The calling thread calls `between(done)` after
/// each of its tasks; `done` is about the number of tasks that are done.
template <class MakeWorker, class Between>
void workOn(std::size_t count, unsigned threads, Step& step, MakeWorker makeWorker,
            Between between) {
    std::atomic<std::size_t> next{0};
    std::exception_ptr error;
    std::mutex mutex;
    const auto run = [&](unsigned thread, auto afterEach) {
        try {
            auto worker = makeWorker(thread);
            for (std::size_t task = next++; task < count; task = next++) {
                // Small tasks never reach the amount of work at which the step is asked.
                step.spend(0);
                worker(task);
                afterEach(task + 1);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!error)
                error = std::current_exception();
            step.fail();
        }
    };
    std::vector<std::thread> others;
    try {
        for (unsigned thread = 1; thread < threads && thread < count; ++thread)
            others.emplace_back(run, thread, [](std::size_t) {});
    } catch (...) {
        step.fail();
        for (std::thread& other : others)
            other.join();
        throw;
    }
    run(0, between);
    for (std::thread& other : others)
        other.join();
    if (error)
        std::rethrow_exception(error);
}

/// Calls `work(part)` for each part from 0 to `parts` - 1, each in a thread of its own.
template <class PartWork>
void workOnParts(unsigned parts, Step& step, PartWork work) {
    workOn(
        parts, parts, step, [&work](unsigned) { return work; }, [](std::size_t) {});
}

/// The threads to work on this many item sets in: one for few sets, since starting others would
/// take as long.
inline unsigned threadsFor(std::size_t sets, unsigned threads) {
    return sets < std::size_t{1} << 14 ? 1 : threads;
}

/// The elements [begin, end) of a part.
struct PartRange {
    std::size_t begin;
    std::size_t end;
};

/// One of `parts` parts of about equal size that `size` elements are cut into.
inline PartRange partOf(std::size_t size, std::size_t part, std::size_t parts) {
    assert(part < parts);
    const auto begin = [=](std::size_t of) {
        return size / parts * of + size % parts * of / parts;
    };
    return {begin(part), begin(part + 1)};
}

}  // namespace quarvis::mining
