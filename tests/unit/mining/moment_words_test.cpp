#include "moment_words.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "free_step.hpp"
#include "oracle/random_table.hpp"
#include "support/engine.hpp"
#include "support/sanitized.hpp"

namespace quarvis::mining {
namespace {

using mining_tests::entryOf;
using mining_tests::makeStandings;
using oracle::Table;
using oracle::TableShape;

/// The standings of all items of a table, and its index.
struct Stood {
    HistoryIndex index;
    Standings standings;

    Stood(const Table& table, std::uint64_t window)
        : index(support::indexOf(table, 1)),
          standings(makeStandings(Shard::whole(index), std::vector<bool>(index.itemCount(), true),
                                  window)) {}
};

/// All words of a packing, with weights and tops.
struct Described {
    std::vector<std::uint32_t> word;
    std::vector<std::uint32_t> weights;
    std::vector<std::uint64_t> tops;
    MomentWords::Selection selection;

    explicit Described(const MomentWords& words) : weights(words.words()), tops(words.words()) {
        for (std::uint32_t i = 0; i < words.words(); ++i)
            word.push_back(i);
        selection.size = word.size();
        selection.word = word.data();
        words.describe(selection, weights.data(), tops.data());
    }
};

/// For each pair, as many equal histories as the weight says, with this many moments: i100 occurs
/// at time 0, i101 at time 1 and so on.
Table weighted(const std::vector<std::pair<std::size_t, std::size_t>>& weightsAndMoments) {
    Table table;
    for (const auto& [weight, moments] : weightsAndMoments)
        for (std::size_t i = 0; i < weight; ++i) {
            oracle::History history;
            for (std::size_t item = 0; item <= moments; ++item)
                history[item] = {"i" + std::to_string(100 + item)};
            table.histories.push_back(history);
        }
    return table;
}

TEST(MomentWords, HistoriesShareAWordAsLongAsTheirMomentsFit) {
    const Stood stood(weighted({{1, 30}, {1, 20}, {1, 14}, {1, 1}}), 0);
    MomentWords words;
    words.make(stood.standings, stood.standings.places(Rank{0}));
    ASSERT_EQ(4U, words.fields().size());
    EXPECT_EQ(2U, words.words());
    EXPECT_EQ(1U, words.mostFields());
    const std::vector<std::vector<std::size_t>> expected = {
        {0, 0, 30}, {0, 30, 20}, {0, 50, 14}, {1, 0, 1}};
    for (std::size_t i = 0; i < 4; ++i) {
        const MomentWords::Field& field = words.fields()[i];
        EXPECT_EQ(expected[i], (std::vector<std::size_t>{field.word, field.to, field.bits}));
        EXPECT_EQ(0U, field.from);
    }
    const Described described(words);
    EXPECT_EQ((std::vector<std::uint32_t>{1, 1}), described.weights);
    EXPECT_EQ((std::vector<std::uint64_t>{
                  std::uint64_t{1} << 29 | std::uint64_t{1} << 49 | std::uint64_t{1} << 63, 1}),
              described.tops);
    EXPECT_EQ(2U, described.selection.shared);
}

TEST(MomentWords, AHistoryIsPackedForEachDigitOfItsWeight) {
    const Stood stood(weighted({{5, 2}, {3, 4}}), 0);
    MomentWords words;
    words.make(stood.standings, stood.standings.places(Rank{0}));
    EXPECT_EQ(2U, words.mostFields());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 4}), Described(words).weights);
    std::multimap<std::uint32_t, std::uint32_t> wordsOfPlaces;
    for (const MomentWords::Field& field : words.fields())
        wordsOfPlaces.insert({field.place, field.word});
    EXPECT_EQ((std::multimap<std::uint32_t, std::uint32_t>{{0, 0}, {0, 2}, {1, 0}, {1, 1}}),
              wordsOfPlaces);
}

TEST(MomentWords, BeginAtTheFirstMomentOfTheItem) {
    // Item i103 is new at moment 2 and recent at 3 and 4, of the moments 0 to 4.
    const Stood stood(weighted({{1, 5}}), 0);
    MomentWords words;
    words.make(stood.standings, stood.standings.places(Rank{3}));
    ASSERT_EQ(1U, words.fields().size());
    const MomentWords::Field& field = words.fields()[0];
    EXPECT_EQ(2U, field.from);
    EXPECT_EQ(3U, field.bits);
    const Standings::Place& place = stood.standings.places(Rank{3})[field.place];
    const Standings::Masks masks = stood.standings.masks(place.history, place.entry);
    EXPECT_EQ(0b001U, MomentWords::moved(masks.fresh, field));
    EXPECT_EQ(0b110U, MomentWords::moved(masks.recent(), field));
}

TEST(MomentWords, LongHistoriesHaveWordsOfTheirOwn) {
    const Stood stood(weighted({{3, 150}, {1, 10}}), 0);
    MomentWords words;
    words.make(stood.standings, stood.standings.places(Rank{0}));
    EXPECT_EQ(4U, words.words());
    EXPECT_EQ(3U, words.mostFields());
    const Described described(words);
    EXPECT_EQ((std::vector<std::uint32_t>{1, 3, 3, 3}), described.weights);
    EXPECT_EQ(1U, described.selection.shared);
    // Item i170 is new at moment 69, in the second word of its history.
    words.make(stood.standings, stood.standings.places(Rank{70}));
    ASSERT_EQ(2U, words.fields().size());
    EXPECT_EQ(1U, words.fields()[0].source);
    EXPECT_EQ(2U, words.fields()[1].source);
}

TEST(MomentWords, OfNoPlacesAreNone) {
    const Stood stood(weighted({{1, 3}}), 0);
    MomentWords words;
    words.make(stood.standings, stood.standings.places(Rank{0}));
    words.make(stood.standings, {});
    EXPECT_EQ(0U, words.words());
    EXPECT_TRUE(words.fields().empty());
}

using MaskOf = const std::uint64_t* (*)(const Standings::Masks&);

const std::uint64_t* freshOf(const Standings::Masks& masks) {
    return masks.fresh;
}
const std::uint64_t* recentOf(const Standings::Masks& masks) {
    return masks.recent();
}

/// The masks of an item in all words of a first item.
std::vector<std::uint64_t> bitsOf(const Standings& standings, const MomentWords& words, Rank first,
                                  Rank item, MaskOf maskOf) {
    std::vector<std::uint64_t> bits(words.words());
    for (const MomentWords::Field& field : words.fields()) {
        const std::uint32_t history = standings.places(first)[field.place].history;
        const std::size_t entry = entryOf(standings, history, item);
        if (entry == standings.endEntry(history))
            continue;
        const std::uint64_t moved =
            MomentWords::moved(maskOf(standings.masks(history, entry)), field);
        EXPECT_EQ(0U, bits[field.word] & moved) << "fields overlap";
        bits[field.word] |= moved;
    }
    return bits;
}

/// The number of histories in which both masks have a bit at the same moment.
std::uint32_t naiveCount(const Standings& standings, Rank a, MaskOf maskOfA, Rank b,
                         MaskOf maskOfB) {
    std::uint32_t count = 0;
    for (std::size_t history = 0; history < standings.historyCount(); ++history) {
        const std::size_t first = entryOf(standings, history, a);
        const std::size_t second = entryOf(standings, history, b);
        const std::size_t end = standings.endEntry(history);
        if (first == end || second == end)
            continue;
        const Standings::Masks masks = standings.masks(history, first);
        const std::uint64_t* const left = maskOfA(masks);
        const std::uint64_t* const right = maskOfB(standings.masks(history, second));
        bool any = false;
        for (std::size_t word = 0; word < masks.words; ++word)
            any = any || (left[word] & right[word]) != 0;
        count += any ? standings.weight(history) : 0;
    }
    return count;
}

void expectNaiveCounts(const Table& table, std::uint64_t window, std::uint64_t seed) {
    const Stood stood(table, window);
    const Standings& standings = stood.standings;
    MomentWords words;
    for (std::uint32_t a = 0; a < standings.itemCount(); ++a) {
        words.make(standings, standings.places(Rank{a}));
        const Described described(words);
        for (std::uint32_t b = 0; b < standings.itemCount(); ++b)
            for (const MaskOf maskOfA : {&freshOf, &recentOf})
                for (const MaskOf maskOfB : {&freshOf, &recentOf}) {
                    const auto left = bitsOf(standings, words, Rank{a}, Rank{a}, maskOfA);
                    const auto right = bitsOf(standings, words, Rank{a}, Rank{b}, maskOfB);
                    std::vector<std::uint64_t> both(words.words());
                    const std::uint32_t count = words.intersect(described.selection, left.data(),
                                                                right.data(), both.data(), false);
                    ASSERT_EQ(naiveCount(standings, Rank{a}, maskOfA, Rank{b}, maskOfB), count)
                        << "seed " << seed << ", items " << a << " and " << b;
                    for (std::size_t word = 0; word < words.words(); ++word)
                        ASSERT_EQ(left[word] & right[word], both[word]);
                    // Without a window an item is new at most once in a history.
                    if (window == 0 && maskOfB == freshOf) {
                        ASSERT_EQ(count, words.intersect(described.selection, left.data(),
                                                         right.data(), both.data(), true));
                    }
                }
    }
}

TEST(MomentWords, CountHistoriesAsANaiveWalkDoes) {
    for (std::uint64_t seed = 0; seed < (ADDRESS_SANITIZED ? 55U : 330U); ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        expectNaiveCounts(drawn.table, drawn.settings.windowSize, seed);
    }
}

TEST(MomentWords, CountHistoriesOfAllWeightsAndLengths) {
    const TableShape shapes[] = {
        {"", {"a", "b", "c"}, 700, 2, 2, 2},
        {"", {"a", "b", "c", "d"}, 4, 200, 1, 800},
        {"", {"a", "b", "c"}, 30, 90, 1, 400},
        {"", {"a", "b", "c"}, 3, 600, 1, 400},
    };
    for (const TableShape& shape : shapes)
        for (std::uint64_t seed = 0; seed < 6; ++seed)
            for (const std::uint64_t window : {0U, 1U, 3U, 20U})
                expectNaiveCounts(oracle::randomTable(shape, seed), window, seed);
}

}  // namespace
}  // namespace quarvis::mining
