#include "forecast.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/shards.hpp>

#include "free_step.hpp"
#include "oracle/table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

TEST(MostLarger, OfItemsAreAllPairs) {
    EXPECT_EQ(0U, mostLarger(1, 0));
    EXPECT_EQ(0U, mostLarger(1, 1));
    EXPECT_EQ(10U, mostLarger(1, 5));
    EXPECT_EQ(499999500000U, mostLarger(1, 1000000));
}

/// 7 pairs are the 6 pairs of four items and one more, which is in no triple.
TEST(MostLarger, IsWorkedOutFromSumsOfBinomials) {
    EXPECT_EQ(0U, mostLarger(2, 2));
    EXPECT_EQ(1U, mostLarger(2, 3));
    EXPECT_EQ(4U, mostLarger(2, 7));
    EXPECT_EQ(10U, mostLarger(2, 10));
    EXPECT_EQ(1U, mostLarger(3, 4));
    EXPECT_EQ(126U, mostLarger(4, 126));
}

/// The greatest number of triangles over all graphs with five corners and this many edges.
TEST(MostLarger, IsTheMostThatAnyPairsHave) {
    std::array<std::size_t, 11> most{};
    const auto edge = [](std::size_t a, std::size_t b) {
        return std::uint32_t{1} << (a + b * (b - 1) / 2);
    };
    for (std::uint32_t graph = 0; graph < 1U << 10; ++graph) {
        std::size_t triangles = 0;
        for (std::size_t c = 0; c < 5; ++c)
            for (std::size_t b = 0; b < c; ++b)
                for (std::size_t a = 0; a < b; ++a) {
                    const std::uint32_t all = edge(a, b) | edge(a, c) | edge(b, c);
                    triangles += (graph & all) == all ? 1 : 0;
                }
        std::size_t& known = most[static_cast<std::size_t>(std::popcount(graph))];
        known = std::max(known, triangles);
    }
    for (std::size_t edges = 0; edges <= 10; ++edges)
        EXPECT_EQ(most[edges], mostLarger(2, edges)) << edges;
}

TEST(MostLarger, EndsAtTheGreatestNumber) {
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(most, mostLarger(1, most));
    EXPECT_EQ(most, mostLarger(1, std::size_t{1} << 33));
}

class Forecasts : public Observer {
  public:
    void levelForecast(std::size_t size, std::size_t most) override {
        text += std::to_string(size) + ":<=" + std::to_string(most) + ' ';
    }
    void levelFound(std::size_t size, std::size_t sets) override {
        text += std::to_string(size) + ':' + std::to_string(sets) + ' ';
    }

    std::string text;
};

/// ab, ac, bc and abc; d is in no pair.
TEST(Forecast, ComesBeforeEachLevelOfARunOverShards) {
    const HistoryIndex index =
        support::indexOf(oracle::tableOf({"1:a,b,c", "1:a,b,c", "1:d", "1:d"}), 2);
    const std::vector<HistoryIndex> shards = {index.slice(HistoryId{0}, HistoryId{1}),
                                              index.slice(HistoryId{1}, HistoryId{4})};
    MiningOptions options;
    options.minCount = 2;
    Forecasts told;
    mineShards(shards, options, told);
    EXPECT_EQ("1:4 2:<=6 2:3 3:<=1 3:1 4:<=0 4:0 ", told.text);
}

/// Four items have the pairs ab, ac and bd. Only abc is made of two of them.
TEST(Forecast, IsTheNumberOfJoinsWhereThatIsLess) {
    FoundSets found;
    found.add(2, 0, WalkItem{1}, 9);
    found.add(2, 0, WalkItem{2}, 9);
    found.add(2, 1, WalkItem{3}, 9);
    found.add(2, 2, WalkItem{3}, 9);
    found.link(4);
    mining_tests::FreeStep free;
    EXPECT_EQ(1U, forecast(found, 4, free.step));
}

}  // namespace
}  // namespace quarvis::mining
