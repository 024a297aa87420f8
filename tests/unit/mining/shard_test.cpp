#include "shard.hpp"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/random_table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

/// The ends of the parts that a shard is cut into: "1 3" if they are [begin, 1) and [1, 3). Checks
/// that each part begins where the one before ends.
std::string endsOf(const Shard& shard, std::size_t parts) {
    std::string ends;
    std::size_t begin = shard.begin;
    for (std::size_t i = 0; i < parts; ++i) {
        const Shard part = shard.part(i, parts);
        EXPECT_EQ(shard.index, part.index);
        EXPECT_EQ(begin, part.begin);
        EXPECT_LE(part.begin, part.end);
        begin = part.end;
        ends += (i == 0 ? "" : " ") + std::to_string(part.end);
    }
    EXPECT_EQ(shard.end, begin);
    return ends;
}

TEST(Shard, IsCutIntoPartsWithAboutAsManyItems) {
    const HistoryIndex index =
        support::indexOf(oracle::tableOf({"1:a 2:b 3:c,d 5:a", "1:a", "1:b", "2:a,b", "7:c"}), 1);
    const Shard whole = Shard::whole(index);
    EXPECT_EQ("5", endsOf(whole, 1));
    EXPECT_EQ("1 5", endsOf(whole, 2));
    EXPECT_EQ("1 2 5", endsOf(whole, 3));
    EXPECT_EQ("3 5", endsOf({&index, 1, 5}, 2));
    EXPECT_EQ("2 2", endsOf({&index, 2, 2}, 2));
}

TEST(Shard, IsCutIntoMorePartsThanItHasHistories) {
    const HistoryIndex index = support::indexOf(oracle::tableOf({"1:a", "1:a,b"}), 1);
    for (std::size_t parts = 2; parts < 9; ++parts)
        endsOf(Shard::whole(index), parts);
}

TEST(Shard, WithHistoriesWithoutItemsIsCut) {
    const HistoryIndex index =
        support::indexOf(oracle::tableOf({"1:x", "1:a,b", "1:y", "1:a", "1:z", "1:b"}), 2);
    EXPECT_EQ("2 6", endsOf(Shard::whole(index), 2));
    const HistoryIndex none = support::indexOf(oracle::tableOf({"1:x", "1:y"}), 2);
    EXPECT_EQ("0 2", endsOf(Shard::whole(none), 2));
}

}  // namespace
}  // namespace quarvis::mining
