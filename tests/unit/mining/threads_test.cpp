#include <quarvis/mining/mine.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "runs.hpp"
#include "support/engine.hpp"
#include "tasks.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::Account;

TEST(Threads, DoNotChangeTheResult) {
    const HistoryIndex index = mining_tests::evenHistories(1500, 13, 1);
    for (const std::uint64_t window : {0U, 1U}) {
        MiningOptions options;
        options.minCount = 20;
        options.window = window;
        Observer observer;
        const Account expected(mine(index, options, observer));
        EXPECT_GT(expected.levels.size(), 3U);
        EXPECT_GT(expected.rules.size(), 100U);
        for (const unsigned threads : {2U, 3U, 8U}) {
            options.threads = threads;
            EXPECT_TRUE(expected == Account(mine(index, options, observer))) << threads;
        }
    }
}

TEST(Threads, DoNotChangeTheResultOfSmallRuns) {
    for (std::uint64_t seed = 0; seed < 110; ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        const HistoryIndex index = support::indexOf(drawn.table, drawn.settings.minCount);
        MiningOptions options = support::optionsOf(drawn.settings);
        options.splits = Splits::ALL;
        Observer observer;
        const Account expected(mine(index, options, observer));
        for (const unsigned threads : {2U, 8U}) {
            options.threads = threads;
            EXPECT_TRUE(expected == Account(mine(index, options, observer))) << "seed " << seed;
        }
    }
}

TEST(Tasks, AreEachWorkedOnOnce) {
    for (const unsigned threads : {1U, 2U, 5U}) {
        Observer observer;
        Meter meter{Budget()};
        Step step(observer, meter);
        std::vector<std::atomic<int>> done(1000);
        std::size_t last = 0;
        const std::thread::id caller = std::this_thread::get_id();
        workOn(
            done.size(), threads, step,
            [&](unsigned) { return [&](std::size_t task) { ++done[task]; }; },
            [&](std::size_t tasks) {
                EXPECT_EQ(caller, std::this_thread::get_id());
                EXPECT_GT(tasks, last);
                EXPECT_LE(tasks, done.size());
                last = tasks;
            });
        for (const std::atomic<int>& times : done)
            EXPECT_EQ(1, times);
    }
}

TEST(Tasks, HaveNoMoreThreadsThanTheyAre) {
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    std::mutex mutex;
    std::set<unsigned> workers;
    const auto makeWorker = [&](unsigned thread) {
        const std::lock_guard lock(mutex);
        workers.insert(thread);
        return [](std::size_t) {};
    };
    workOn(2, 8, step, makeWorker, [](std::size_t) {});
    EXPECT_EQ((std::set<unsigned>{0, 1}), workers);
}

TEST(Tasks, EndAllWhenOneFails) {
    for (const unsigned threads : {1U, 4U}) {
        Observer observer;
        Meter meter{Budget()};
        Step step(observer, meter);
        std::atomic<int> begun{0};
        const auto makeWorker = [&](unsigned) {
            return [&](std::size_t task) {
                ++begun;
                if (task == 10)
                    throw std::logic_error("task 10");
                // The other threads notice when they next settle their work.
                while (task > 10)
                    Work(step).settle();
            };
        };
        EXPECT_THROW(workOn(1000, threads, step, makeWorker, [](std::size_t) {}), std::logic_error);
        EXPECT_LE(begun, 11 + 3);
    }
}

TEST(Tasks, EndWhenAWorkerCannotBeMade) {
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    const auto makeWorker = [](unsigned thread) {
        if (thread == 0)
            throw std::bad_alloc();
        return [](std::size_t) {};
    };
    EXPECT_THROW(workOn(10, 2, step, makeWorker, [](std::size_t) {}), std::bad_alloc);
}

TEST(Step, EndsWhatCostsMoreThanItWasGiven) {
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter, 100);
    step.spend(60);
    step.spend(40);
    EXPECT_EQ(100U, step.spent());
    EXPECT_THROW(step.spend(1), TooLong);
}

TEST(Work, IsSettledNowAndThen) {
    Observer observer;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    work.add(999'999);
    EXPECT_EQ(0U, step.spent());
    work.add(1);
    EXPECT_EQ(1'000'000U, step.spent());
    work.add(7);
    work.settle();
    EXPECT_EQ(1'000'007U, step.spent());
}

}  // namespace
}  // namespace quarvis::mining
