#include "pair_counters.hpp"

#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Numbers = std::vector<std::uint32_t>;

TEST(PairCounters, CountEachPairOfTheNumbers) {
    PairCounters counters;
    counters.reset(4);
    counters.add(Numbers{0, 2, 3});
    counters.add(Numbers{0, 3});
    counters.add(Numbers{1});
    counters.add(Numbers{});
    EXPECT_THAT(counters.row(0), ElementsAre(0, 1, 2));
    EXPECT_THAT(counters.row(1), ElementsAre(0, 0));
    EXPECT_THAT(counters.row(2), ElementsAre(1));
    EXPECT_THAT(counters.row(3), IsEmpty());
}

TEST(PairCounters, BeginAnewForAnotherSize) {
    PairCounters counters;
    counters.reset(2);
    counters.add(Numbers{0, 1});
    counters.reset(3);
    EXPECT_THAT(counters.row(0), ElementsAre(0, 0));
    counters.add(Numbers{1, 2});
    EXPECT_THAT(counters.row(1), ElementsAre(1));
    counters.reset(1);
    counters.add(Numbers{0});
    EXPECT_THAT(counters.row(0), IsEmpty());
}

TEST(PairCounters, TakeSixteenMegabytesAtMost) {
    EXPECT_TRUE(PairCounters::fit(1));
    EXPECT_TRUE(PairCounters::fit(2896));
    EXPECT_FALSE(PairCounters::fit(2897));
    EXPECT_FALSE(PairCounters::fit(1'000'000));
}

}  // namespace
}  // namespace quarvis::rule
