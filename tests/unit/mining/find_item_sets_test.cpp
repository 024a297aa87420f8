#include <quarvis/mining/mine.hpp>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "naive_sets.hpp"
#include "runs.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::CountedSets;
using mining_tests::evenHistories;
using mining_tests::setsOf;

MiningOptions atLeast(std::uint32_t minCount, std::uint32_t maxSize = 0) {
    MiningOptions options;
    options.minCount = minCount;
    options.maxSize = maxSize;
    return options;
}

TEST(FindItemSets, RefusesAnIndexThatLacksFrequentItems) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a", "1:a"}), 2);
    Observer observer;
    EXPECT_THROW(findItemSets(index, atLeast(1), observer), std::invalid_argument);
    EXPECT_THROW(mine(index, atLeast(0), observer), std::invalid_argument);
    EXPECT_EQ(1U, findItemSets(index, atLeast(2), observer).size());
}

TEST(FindItemSets, RefusesToRunWithoutThreads) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a", "1:a"}), 1);
    MiningOptions options = atLeast(1);
    options.threads = 0;
    Observer observer;
    EXPECT_THROW(findItemSets(index, options, observer), std::invalid_argument);
}

TEST(FindItemSets, FindsAllSubsetsWhereNoHistoryIsNeeded) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a,b", "1:c"}), 0);
    Observer observer;
    EXPECT_EQ((CountedSets{{{Rank{0}}, 1},
                           {{Rank{1}}, 1},
                           {{Rank{2}}, 1},
                           {{Rank{0}, Rank{1}}, 1},
                           {{Rank{0}, Rank{2}}, 0},
                           {{Rank{1}, Rank{2}}, 0},
                           {{Rank{0}, Rank{1}, Rank{2}}, 0}}),
              setsOf(findItemSets(index, atLeast(0), observer)));
}

/// Records for each level whether there was work after the one before: 'w' or '-'.
class LevelWatcher : public Observer {
  public:
    void levelFound(std::size_t size, std::size_t) override {
        m_levels += m_works ? 'w' : '-';
        EXPECT_EQ(size, m_levels.size());
        m_works = false;
    }
    void progressed(std::uint64_t, std::uint64_t) override { m_works = true; }

    const std::string& levels() const { return m_levels; }

  private:
    bool m_works = false;
    std::string m_levels;
};

CountedSets multiplied(CountedSets sets, std::uint32_t factor) {
    for (auto& [set, count] : sets)
        count *= factor;
    return sets;
}

/// More sets than a thread puts into one block. Ascending sets are all different, and as many
/// different sets as are possible are all sets.
TEST(FindItemSets, FindsMillionsOfSets) {
    constexpr std::size_t items = 21;
    const char* const history = "1:a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q,r,s,t,u";
    const HistoryIndex index = support::indexOf(oracle::tableOf({history, history}), 2);
    Observer observer;
    const ItemSets sets = findItemSets(index, atLeast(2), observer);
    ASSERT_EQ(items, sets.levels());
    std::size_t subsets = items;  // of the current size, which begins at 1
    for (std::size_t size = 2; size <= items; ++size) {
        subsets = subsets * (items + 1 - size) / size;
        ASSERT_EQ(subsets, sets.count(size));
        const Level& below = sets.level(size - 1);
        const Level& level = sets.level(size);
        for (std::size_t set = 0; set < subsets; ++set) {
            ASSERT_LT(level.prefix[set], below.size());
            ASSERT_LT(below.last[level.prefix[set]], level.last[set]);
            ASSERT_TRUE(set == 0 || level.prefix[set - 1] < level.prefix[set] ||
                        (level.prefix[set - 1] == level.prefix[set] &&
                         level.last[set - 1] < level.last[set]));
            ASSERT_EQ(2U, level.count[set]);
        }
    }
}

/// A search that is one walk over a few histories takes a walk for each level over many copies of
/// them, until a size has fewer sets than the one before; one more walk does the rest. Here size 7
/// is the first with fewer sets, and there are sets of up to 9 items.
TEST(FindItemSets, FindsTheSameInALongSearchLevelByLevel) {
    constexpr std::size_t histories = 500;
    constexpr std::uint32_t items = 26;
    constexpr std::uint32_t minCount = 7;
    constexpr std::uint32_t copies = 400;
    LevelWatcher inShort;
    const ItemSets few =
        findItemSets(evenHistories(histories, items, 1), atLeast(minCount), inShort);
    EXPECT_EQ("-w--------", inShort.levels());
    EXPECT_GT(few.count(6), few.count(5));
    EXPECT_LT(few.count(7), few.count(6));
    const CountedSets expected = multiplied(setsOf(few), copies);

    const HistoryIndex index = evenHistories(histories, items, copies);
    LevelWatcher watcher;
    MiningOptions options = atLeast(minCount * copies);
    // The sets that a first attempt found and threw away are not counted twice.
    options.budget.sets = few.size();
    EXPECT_TRUE(expected == setsOf(findItemSets(index, options, watcher)));
    EXPECT_EQ("-wwwwwww--", watcher.levels());
}

}  // namespace
}  // namespace quarvis::mining
