#include <quarvis/mining/budget.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>
#include <quarvis/mining/shards.hpp>

#include "oracle/table.hpp"
#include "runs.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using Limit = BudgetExceeded::Limit;

/// The sets a, b, c, ab, ac, bc and abc are each in at least two histories. The rules a => b and b
/// => a count in one each.
HistoryIndex smallIndex() {
    return support::indexOf(oracle::tableOf({"1:a,b,c", "1:a,b,c", "1:a 2:b", "1:b 2:a", "1:a"}),
                            1);
}

/// How a run is done: in one thread, in three threads, or over two shards.
enum class Way { WHOLE, THREADS, SHARDS };

/// The exception that ends the run, if any.
std::optional<BudgetExceeded> outcome(const HistoryIndex& index, MiningOptions options,
                                      Way way = Way::WHOLE) {
    Observer observer;
    try {
        if (way == Way::SHARDS) {
            const auto histories = static_cast<std::uint32_t>(index.historyCount());
            const std::vector<HistoryIndex> shards = {
                index.slice(HistoryId{0}, HistoryId{histories / 2}),
                index.slice(HistoryId{histories / 2}, HistoryId{histories})};
            mineShards(shards, options, observer);
        } else {
            options.threads = way == Way::THREADS ? 3 : 1;
            mine(index, options, observer);
        }
        return std::nullopt;
    } catch (const BudgetExceeded& exceeded) {
        return exceeded;
    }
}

std::size_t setsOf(const BudgetExceeded& exceeded) {
    return std::accumulate(exceeded.levels().begin(), exceeded.levels().end(), std::size_t{0});
}

class BudgetOf : public testing::TestWithParam<Way> {
  protected:
    std::optional<BudgetExceeded> outcomeOf(const Budget& budget) {
        MiningOptions options;
        options.minCount = 1;
        options.budget = budget;
        return outcome(smallIndex(), options, GetParam());
    }
};

TEST_P(BudgetOf, NothingEndsNoRun) {
    EXPECT_FALSE(outcomeOf({}));
}

TEST_P(BudgetOf, SetsEndsARunThatFindsMore) {
    EXPECT_FALSE(outcomeOf({.sets = 7}));
    for (std::size_t sets = 1; sets < 7; ++sets) {
        const std::optional<BudgetExceeded> exceeded = outcomeOf({.sets = sets});
        ASSERT_TRUE(exceeded) << sets;
        EXPECT_EQ(Limit::SETS, exceeded->limit());
        EXPECT_EQ(3U, exceeded->levels().front());
        EXPECT_LE(setsOf(*exceeded), 7U);
    }
}

TEST_P(BudgetOf, LevelsEndsARunThatFindsALargerSet) {
    EXPECT_FALSE(outcomeOf({.levels = 3}));
    const std::optional<BudgetExceeded> exceeded = outcomeOf({.levels = 2});
    ASSERT_TRUE(exceeded);
    EXPECT_EQ(Limit::LEVELS, exceeded->limit());
    const std::optional<BudgetExceeded> first = outcomeOf({.levels = 1});
    ASSERT_TRUE(first);
    EXPECT_EQ(Limit::LEVELS, first->limit());
}

/// 7 sets of 28 bytes, 2 rules of 144 bytes, and some bytes for the histories.
TEST_P(BudgetOf, BytesEndsARunThatTakesMore) {
    for (const std::size_t bytes : {1U, 28 * 7U, 28 * 7 + 2 * 144U}) {
        const std::optional<BudgetExceeded> exceeded = outcomeOf({.bytes = bytes});
        ASSERT_TRUE(exceeded) << bytes;
        EXPECT_EQ(Limit::BYTES, exceeded->limit());
    }
    EXPECT_FALSE(outcomeOf({.bytes = 1 << 16}));
}

TEST_P(BudgetOf, TimeEndsARunThatIsLonger) {
    const std::optional<BudgetExceeded> exceeded = outcomeOf({.time = std::chrono::nanoseconds(1)});
    ASSERT_TRUE(exceeded);
    EXPECT_EQ(Limit::TIME, exceeded->limit());
    EXPECT_FALSE(outcomeOf({.time = std::chrono::hours(24)}));
}

INSTANTIATE_TEST_SUITE_P(Ways, BudgetOf, testing::Values(Way::WHOLE, Way::THREADS, Way::SHARDS));

TEST(Budget, AdvisesTheLeastCountThatHalfOfTheSetsHave) {
    MiningOptions options;
    options.minCount = 1;
    options.budget.bytes = 28 * 7 + 2 * 144;
    // All sets are known when the rules are counted: a 5, b 4, c 2, ab 4, ac 2, bc 2, abc 2.
    const std::optional<BudgetExceeded> exceeded = outcome(smallIndex(), options);
    ASSERT_TRUE(exceeded);
    EXPECT_EQ((std::vector<std::size_t>{3, 3, 1}), exceeded->levels());
    EXPECT_EQ(3U, exceeded->advisedCount());
    EXPECT_STREQ(
        "the budget of memory is exceeded: 7 frequent sets of up to 3 items were found so "
        "far; at most half of them have a count of 3",
        exceeded->what());
}

/// Without the budget there would be almost 2^20 sets.
TEST(Budget, AdviceLeadsToARunThatFits) {
    const HistoryIndex index = mining_tests::evenHistories(40, 20, 1);
    MiningOptions options;
    options.minCount = 1;
    options.budget.sets = 5000;
    std::size_t tries = 0;
    for (std::optional<BudgetExceeded> exceeded = outcome(index, options); exceeded;
         exceeded = outcome(index, options)) {
        ASSERT_LT(options.minCount, exceeded->advisedCount());
        options.minCount = exceeded->advisedCount();
        ASSERT_LT(++tries, 10U);
    }
    EXPECT_GT(tries, 0U);
}

}  // namespace
}  // namespace quarvis::mining
