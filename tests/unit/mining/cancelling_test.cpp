#include <quarvis/mining/observer.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

#include "canceller.hpp"
#include "runs.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::Account;
using mining_tests::Canceller;
using mining_tests::evenHistories;

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

/// Cancels as soon as a level is reported.
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

TEST(Cancelling, EndsTheIndexingOfColumnsAtAnyOfItsQuestions) {
    // With 300,000 rows of 10,000 histories every step asks.
    std::vector<std::uint32_t> entities;
    std::vector<std::uint32_t> times;
    std::vector<std::uint32_t> items;
    for (std::uint32_t row = 0; row < 300'000; ++row) {
        entities.push_back(row % 10'000);
        times.push_back(row);
        items.push_back(row % 7);
    }
    Dictionary names;
    for (const char* const name : {"a", "b", "c", "d", "e", "f", "g"})
        names.add(name);
    const auto index = [&](const Observer& observer) {
        return indexColumns(entities, std::span<const std::uint32_t>(times), items, 10'000, names,
                            1, observer);
    };
    const Canceller never(NEVER);
    EXPECT_EQ(10'000U, index(never).historyCount());
    ASSERT_GT(never.asked(), 5U) << "there is little to cancel";
    for (std::size_t at = 0; at < never.asked(); ++at) {
        const Canceller canceller(at);
        EXPECT_THROW(index(canceller), Cancelled) << at;
    }
}

TEST(Cancelled, SaysSo) {
    EXPECT_STREQ("the run was cancelled", Cancelled().what());
}

}  // namespace
}  // namespace quarvis::mining
