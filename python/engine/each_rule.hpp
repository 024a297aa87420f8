#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include <quarvis/mining/observer.hpp>

#include "watch.hpp"

namespace binding {

/// Calls `worker(place)` for each place below `count`, in `threads` threads including the calling
/// one. Each thread has a worker of its own, made by `makeWorker()`. The first exception ends all
/// threads and is rethrown. Throws `Cancelled` when the watch ends the run.
template <class MakeWorker>
void forEachPlace(std::size_t count, unsigned threads, Watch& watch, MakeWorker makeWorker) {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::exception_ptr error;
    std::mutex mutex;
    const auto run = [&](bool isCaller) {
        try {
            auto worker = makeWorker();
            for (std::size_t place = next++; place < count && !failed; place = next++) {
                watch.endIfAsked();
                worker(place);
                if (isCaller)
                    watch.progressed(place + 1, count);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!error)
                error = std::current_exception();
            failed = true;
        }
    };
    {
        // The threads join at the end of the block, even if one of them cannot be started.
        std::vector<std::jthread> others;
        for (unsigned thread = 1; thread < threads && thread < count; ++thread)
            others.emplace_back(run, false);
        run(true);
    }
    if (error)
        std::rethrow_exception(error);
}

}  // namespace binding
