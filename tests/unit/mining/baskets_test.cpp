#include "baskets.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "naive_sets.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::makeBaskets;

/// The conditional database of an item, by name, with sorted histories: "bc,c".
std::string conditionalOf(const Baskets& baskets, const WalkOrder& order, const HistoryIndex& index,
                          WalkItem item) {
    std::vector<std::string> histories;
    for (const std::uint32_t place : baskets.places(item)) {
        histories.emplace_back();
        for (const WalkItem* other = baskets.after(place); *other != Baskets::END; ++other)
            histories.back() += index.name(order.rank(*other));
    }
    std::sort(histories.begin(), histories.end());
    std::string text;
    for (const std::string& history : histories)
        text += (text.empty() ? "" : " ") + (history.empty() ? "-" : history);
    return text;
}

TEST(Baskets, HaveForEachItemWhatComesAfterItInItsHistories) {
    // In walk order: c 2, d 2, b 3, a 4.
    const HistoryIndex index = support::indexOf(
        oracle::tableOf({"1:a,b 2:c", "1:b 2:a 3:b,d 4:a", "1:d,c,a", "1:a 2:b", "1:e"}), 2);
    const WalkOrder order(index, 2);
    const Baskets baskets = makeBaskets(Shard::whole(index), order);
    ASSERT_EQ(4U, baskets.itemCount());
    EXPECT_EQ("ba da", conditionalOf(baskets, order, index, order.item(Rank{2})));
    EXPECT_EQ("a ba", conditionalOf(baskets, order, index, order.item(Rank{3})));
    EXPECT_EQ("a a a", conditionalOf(baskets, order, index, order.item(Rank{1})));
    EXPECT_EQ("- - - -", conditionalOf(baskets, order, index, order.item(Rank{0})));
}

/// What counts is how many items of a history are walked, not how many it has.
TEST(Baskets, LeaveOutHistoriesOfFewerThanTwoItems) {
    const HistoryIndex index =
        support::indexOf(oracle::tableOf({"1:a 9:a", "1:b,x", "1:a,b", "3:y", "1:x,y 4:b"}), 1);
    const WalkOrder order(index, 3);
    ASSERT_EQ(1U, order.size());
    EXPECT_TRUE(makeBaskets(Shard::whole(index), order).places(WalkItem{0}).empty());

    const WalkOrder more(index, 2);  // a 2, x 2, y 2, b 3
    const Baskets baskets = makeBaskets(Shard::whole(index), more);
    EXPECT_EQ("b", conditionalOf(baskets, more, index, more.item(Rank{0})));
    EXPECT_EQ("b yb", conditionalOf(baskets, more, index, more.item(Rank{2})));
    EXPECT_EQ("b", conditionalOf(baskets, more, index, more.item(Rank{3})));
}

TEST(Baskets, OfAShardHaveItsHistoriesAlone) {
    const HistoryIndex index =
        support::indexOf(oracle::tableOf({"1:a,b", "1:a,b,c", "1:a,c", "1:b,c"}), 1);
    const WalkOrder order(index, 1);
    const Baskets baskets = makeBaskets(Shard{&index, 1, 3}, order);
    EXPECT_EQ("bc c", conditionalOf(baskets, order, index, order.item(Rank{0})));
    EXPECT_EQ("c", conditionalOf(baskets, order, index, order.item(Rank{1})));
    EXPECT_EQ("- -", conditionalOf(baskets, order, index, order.item(Rank{2})));
    EXPECT_TRUE(makeBaskets(Shard{&index, 2, 2}, order).places(WalkItem{0}).empty());
}

TEST(Baskets, OfNoItemsAreEmpty) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a,b"}), 1);
    EXPECT_EQ(0U, makeBaskets(Shard::whole(index), WalkOrder(index, 2)).itemCount());
}

TEST(Baskets, HoldEveryHistoryOfRandomTables) {
    for (std::uint64_t seed = 0; seed < 330; ++seed) {
        const HistoryIndex index = support::indexOf(oracle::randomCase(seed).table, 1);
        const WalkOrder order(index, 1 + static_cast<std::uint32_t>(seed % 3));
        const Baskets baskets =
            makeBaskets(Shard::whole(index), order, static_cast<unsigned>(1 + seed % 4));
        std::vector<std::multiset<std::vector<WalkItem>>> expected(order.size());
        for (const std::set<Rank>& history : mining_tests::itemsOfHistories(index)) {
            std::vector<WalkItem> items;
            for (const Rank item : history)
                if (order.item(item) != WalkOrder::NOT_WALKED)
                    items.push_back(order.item(item));
            std::sort(items.begin(), items.end());
            for (std::size_t i = 0; items.size() > 1 && i < items.size(); ++i)
                expected[at(items[i])].insert(
                    {items.begin() + static_cast<std::ptrdiff_t>(i) + 1, items.end()});
        }
        for (std::uint32_t item = 0; item < order.size(); ++item) {
            std::multiset<std::vector<WalkItem>> found;
            for (const std::uint32_t place : baskets.places(WalkItem{item})) {
                const WalkItem* const first = baskets.after(place);
                const WalkItem* end = first;
                while (*end != Baskets::END)
                    ++end;
                found.insert({first, end});
            }
            ASSERT_EQ(expected[item], found) << "seed " << seed << ", item " << item;
        }
    }
}

}  // namespace
}  // namespace quarvis::mining
