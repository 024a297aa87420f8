#include "walk_order.hpp"

#include <string>

#include <gtest/gtest.h>

#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

/// "c 1, a 2".
std::string textOf(const WalkOrder& order, const HistoryIndex& index) {
    std::string text;
    for (std::uint32_t item = 0; item < order.size(); ++item) {
        text += item == 0 ? "" : ", ";
        text += index.name(order.rank(WalkItem{item}));
        text += ' ' + std::to_string(order.count(WalkItem{item}));
    }
    return text;
}

const char* const HISTORIES[] = {"1:a,b,d 2:b", "1:a,d,e", "1:a,e", "1:c,e"};

HistoryIndex index() {
    return support::indexOf(
        oracle::tableOf({HISTORIES[0], HISTORIES[1], HISTORIES[2], HISTORIES[3]}), 1);
}

TEST(WalkOrder, IsByCountAndAmongEqualsByRank) {
    EXPECT_EQ("b 1, c 1, d 2, a 3, e 3", textOf(WalkOrder(index(), 0), index()));
    EXPECT_EQ("b 1, c 1, d 2, a 3, e 3", textOf(WalkOrder(index(), 1), index()));
}

TEST(WalkOrder, LeavesOutItemsThatAreTooRareForTheRun) {
    const WalkOrder order(index(), 2);
    EXPECT_EQ("d 2, a 3, e 3", textOf(order, index()));
    EXPECT_EQ(WalkItem{1}, order.item(Rank{0}));
    EXPECT_EQ(WalkOrder::NOT_WALKED, order.item(Rank{1}));
    EXPECT_EQ(WalkOrder::NOT_WALKED, order.item(Rank{2}));
    EXPECT_EQ(WalkItem{0}, order.item(Rank{3}));
    EXPECT_EQ(WalkItem{2}, order.item(Rank{4}));
}

TEST(WalkOrder, HasNoItemsWhereAllAreTooRare) {
    const WalkOrder order(index(), 4);
    EXPECT_EQ(0U, order.size());
    EXPECT_EQ(WalkOrder::NOT_WALKED, order.item(Rank{4}));
}

}  // namespace
}  // namespace quarvis::mining
