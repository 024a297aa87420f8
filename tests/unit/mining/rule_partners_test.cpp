#include "rule_partners.hpp"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "oracle/table.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::makeStandings;

/// The live pairs of a table with a least count of 2.
struct Living {
    explicit Living(const oracle::Table& table)
        : index(support::indexOf(table, 1)), ledger(2), step(observer, meter) {
        MiningOptions options;
        options.minCount = 1;
        sets = findItemSets(index, options, observer);
        const Standings standings =
            makeStandings(Shard::whole(index), std::vector<bool>(index.itemCount(), true), 0);
        const PairTallies tallies(standings, sets, 1, step);
        live.emplace_back(tallies, sets, index.itemCount(), ledger);
    }

    HistoryIndex index;
    WholeLedger ledger;
    Observer observer;
    Meter meter{Budget()};
    Step step;
    ItemSets sets;
    std::vector<LivePairs> live;
};

/// a => b, b => c and c => a are met twice, c => d once.
const oracle::Table& round() {
    static const oracle::Table TABLE = oracle::tableOf(
        {"1:a 2:b", "1:a 2:b", "1:b 2:c", "1:b 2:c", "1:c 2:a", "1:c 2:a", "1:c 2:d"});
    return TABLE;
}

TEST(LivePairs, AreThoseWithARuleThatIsMetOftenEnough) {
    const Living living(round());
    std::string text;
    for (std::uint32_t item = 0; item < 4; ++item) {
        text += living.live[0].has(Rank{item}) ? '+' : '-';
        for (const LivePairs::Partner& partner : living.live[0].of(Rank{item}))
            text += std::to_string(at(partner.item)) + (partner.forward ? "f" : "") +
                    (partner.backward ? "b" : "");
        text += ' ';
    }
    EXPECT_EQ("+1f2b +2f + - ", text);
}

TEST(RulePartners, TellWhichItemsMayPrecedeAndFollowAnother) {
    const Living living(round());
    RulePartners partners(living.live[0], 4);
    partners.begin(Rank{0}, {Rank{1}, Rank{2}, Rank{3}});
    ASSERT_EQ(1U, partners.words());
    EXPECT_EQ(0U, partners.number(Rank{0}));
    EXPECT_EQ(1U, partners.number(Rank{1}));
    EXPECT_EQ(2U, partners.number(Rank{2}));
    EXPECT_EQ(RulePartners::NONE, partners.number(Rank{3}));
    EXPECT_EQ(0b010U, *partners.after(0));
    EXPECT_EQ(0b100U, *partners.before(0));
    EXPECT_EQ(0b100U, *partners.after(1));
    EXPECT_EQ(0b001U, *partners.before(1));
    EXPECT_EQ(0b001U, *partners.after(2));
    EXPECT_EQ(0b010U, *partners.before(2));
}

TEST(RulePartners, ForgetTheItemsOfTheFirstItemBefore) {
    const Living living(round());
    RulePartners partners(living.live[0], 4);
    partners.begin(Rank{0}, {Rank{1}, Rank{2}});
    partners.begin(Rank{1}, {Rank{2}});
    EXPECT_EQ(RulePartners::NONE, partners.number(Rank{0}));
    EXPECT_EQ(0b10U, *partners.after(0));
    EXPECT_EQ(0b00U, *partners.before(0));
}

}  // namespace
}  // namespace quarvis::mining
