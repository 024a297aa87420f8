#include <quarvis/mining/observer.hpp>

#include <atomic>
#include <cstddef>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>

#include "runs.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::Account;
using mining_tests::evenHistories;

/// Cancels when it is asked for the n-th time, from 0 on.
class Canceller : public Observer {
  public:
    explicit Canceller(std::size_t at) : m_at(at) {}

    bool isCancelled() const override { return m_asked++ >= m_at; }
    std::size_t asked() const { return m_asked; }

  private:
    std::size_t m_at;
    mutable std::atomic<std::size_t> m_asked{0};
};

constexpr std::size_t NEVER = std::numeric_limits<std::size_t>::max();

TEST(Cancelling, EndsARunAtAnyOfItsQuestions) {
    const HistoryIndex index = evenHistories(4000, 14, 4);
    MiningOptions options;
    options.minCount = 120;
    for (const unsigned threads : {1U, 3U}) {
        options.threads = threads;
        Canceller never(NEVER);
        const Account expected(mine(index, options, never));
        ASSERT_GT(never.asked(), 5U) << "there is little to cancel";
        // Several threads may ask a little less often the next time.
        const std::size_t questions = threads == 1 ? never.asked() : never.asked() / 2;
        for (std::size_t at = 0; at < questions; ++at) {
            Canceller canceller(at);
            EXPECT_THROW(mine(index, options, canceller), Cancelled) << at << " of " << questions;
        }
        Canceller again(NEVER);
        EXPECT_TRUE(expected == Account(mine(index, options, again)));
    }
}

TEST(Cancelling, EndsARunThatWasCancelledBeforeHoweverSmallItIs) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a 2:b", "1:a 2:b"}), 1);
    MiningOptions options;
    options.minCount = 1;
    Canceller canceller(0);
    EXPECT_THROW(findItemSets(index, options, canceller), Cancelled);
    Observer observer;
    const ItemSets sets = findItemSets(index, options, observer);
    EXPECT_THROW(findRules(index, sets, options, canceller), Cancelled);
}

/// Cancels as soon as it is told a level.
class LevelCanceller : public Observer {
  public:
    void levelFound(std::size_t size, std::size_t) override { m_cancelled = size == 2; }
    bool isCancelled() const override { return m_cancelled; }
    void rulesCounted(std::size_t) override { ADD_FAILURE() << "the run goes on"; }

  private:
    bool m_cancelled = false;
};

TEST(Cancelling, BetweenTheSearchAndTheRulesEndsTheRun) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a 2:b", "1:a 2:b"}), 1);
    MiningOptions options;
    options.minCount = 1;
    options.maxSize = 2;
    LevelCanceller canceller;
    EXPECT_THROW(mine(index, options, canceller), Cancelled);
}

TEST(Cancelled, SaysSo) {
    EXPECT_STREQ("the run was cancelled", Cancelled().what());
}

}  // namespace
}  // namespace quarvis::mining
