#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/shards.hpp>

#include "canceller.hpp"
#include "indexed_tables.hpp"
#include "oracle/random_table.hpp"
#include "shard_cuts.hpp"
#include "support/same_result.hpp"

/// What a run over shards tells its observer, and how an observer ends it.
namespace quarvis::mining {
namespace {

using mining_tests::Canceller;
using mining_tests::cut;
using mining_tests::indexed;
using mining_tests::optionsLike;
using oracle::tableOf;
using testing::ElementsAre;

/// Records what it is told.
class ShardRecorder : public Observer {
  public:
    void levelFound(std::size_t size, std::size_t sets) override {
        m_note(std::to_string(sets) + " sets of " + std::to_string(size));
    }
    void rulesCounted(std::size_t rules) override { m_note(std::to_string(rules) + " rules"); }
    void progressed(std::uint64_t done, std::uint64_t all) override {
        EXPECT_EQ(m_thread, std::this_thread::get_id());
        EXPECT_LE(done, all);
        ++reports;
    }

    std::vector<std::string> told;
    std::size_t reports = 0;

  private:
    void m_note(const std::string& text) {
        EXPECT_EQ(m_thread, std::this_thread::get_id());
        told.push_back(text);
    }

    std::thread::id m_thread = std::this_thread::get_id();
};

TEST(ShardsObserver, IsToldOfEachLevelAndOfTheRules) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b 3:c", "1:a 2:b 3:c", "1:a,c", "2:b"}));
    MiningOptions options;
    options.minCount = 2;
    for (const unsigned threads : {1U, 3U}) {
        options.threads = threads;
        ShardRecorder recorder;
        mineShards(cut(index, 2), options, recorder);
        // The rules are a => b, a => c, b => c and {a,b} => c.
        EXPECT_THAT(recorder.told, ElementsAre("3 sets of 1", "3 sets of 2", "1 sets of 3",
                                               "0 sets of 4", "4 rules"));
        // The other threads may leave no task to the one that reports progress.
        if (threads == 1) {
            EXPECT_GT(recorder.reports, 0U);
        }
    }
}

TEST(ShardsObserver, IsToldNothingBeyondTheGreatestSize) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b 3:c", "1:a 2:b 3:c"}));
    MiningOptions options;
    options.minCount = 2;
    options.maxSize = 2;
    ShardRecorder recorder;
    mineShards(cut(index, 2), options, recorder);
    EXPECT_THAT(recorder.told, ElementsAre("3 sets of 1", "3 sets of 2", "3 rules"));
    options.maxSize = 1;
    ShardRecorder other;
    mineShards(cut(index, 2), options, other);
    EXPECT_THAT(other.told, ElementsAre("3 sets of 1", "0 rules"));
}

TEST(ShardsObserver, IsToldWhatIsToldOfTheWhole) {
    for (std::uint64_t seed = 0; seed < 110; ++seed) {
        const oracle::RandomCase drawn = oracle::randomCase(seed);
        const HistoryIndex index = indexed(drawn.table, drawn.settings.minCount);
        const MiningOptions options = optionsLike(drawn.settings);
        ShardRecorder expected;
        mine(index, options, expected);
        for (const std::size_t number : {1U, 2U, 5U}) {
            ShardRecorder recorder;
            mineShards(cut(index, number), options, recorder);
            EXPECT_EQ(expected.told, recorder.told) << "seed " << seed;
        }
    }
}

/// A table whose run asks more than once at a step.
HistoryIndex someHistories() {
    return indexed(oracle::randomTable({.name = "Some",
                                        .items = {"a", "b", "c", "d", "e", "f"},
                                        .histories = 60,
                                        .transactions = 20,
                                        .itemsOfTransaction = 3,
                                        .lastTime = 60},
                                       2));
}

TEST(ShardsObserver, IsAskedWhetherToGoOnHoweverShortTheRunIs) {
    const HistoryIndex index = indexed(tableOf({"1:a 2:b", "1:a 2:b"}));
    MiningOptions options;
    options.minCount = 2;
    for (const unsigned threads : {1U, 3U}) {
        options.threads = threads;
        Canceller canceller(0);
        EXPECT_THROW(mineShards(cut(index, 2), options, canceller), Cancelled);
    }
}

TEST(ShardsObserver, EndsTheRunAtAnyQuestion) {
    const HistoryIndex index = someHistories();
    const std::vector<HistoryIndex> shards = cut(index, 4);
    MiningOptions options;
    options.minCount = 3;
    Canceller patient;
    const Result expected = mineShards(shards, options, patient);
    ASSERT_GE(patient.asked(), 20U);
    for (std::size_t question = 0; question < patient.asked(); ++question) {
        Canceller canceller(question);
        EXPECT_THROW(mineShards(shards, options, canceller), Cancelled) << "question " << question;
        EXPECT_EQ(question + 1, canceller.asked());
    }
    EXPECT_EQ("", support::differenceOf(expected, mineShards(shards, options, patient)));
}

/// How often several threads ask depends on how they share the tasks.
TEST(ShardsObserver, EndsARunOfSeveralThreads) {
    const HistoryIndex index = someHistories();
    const std::vector<HistoryIndex> shards = cut(index, 4);
    MiningOptions options;
    options.minCount = 3;
    options.threads = 3;
    for (std::size_t question = 0; question < 20; ++question) {
        Canceller canceller(question);
        EXPECT_THROW(mineShards(shards, options, canceller), Cancelled) << "question " << question;
    }
}

class Failing : public Observer {
  public:
    enum class At { LEVEL, RULES, PROGRESS };
    explicit Failing(At at) : m_at(at) {}

    void levelFound(std::size_t size, std::size_t) override { m_failAt(At::LEVEL, size == 3); }
    void rulesCounted(std::size_t) override { m_failAt(At::RULES, true); }
    void progressed(std::uint64_t, std::uint64_t) override { m_failAt(At::PROGRESS, true); }

  private:
    void m_failAt(At place, bool now) const {
        if (now && place == m_at)
            throw std::domain_error("an error of the front end");
    }

    At m_at;
};

void expectError(Failing::At at, unsigned threads) {
    const std::vector<HistoryIndex> shards = cut(someHistories(), 4);
    MiningOptions options;
    options.minCount = 3;
    options.threads = threads;
    Failing failing(at);
    EXPECT_THAT([&] { mineShards(shards, options, failing); },
                testing::ThrowsMessage<std::domain_error>("an error of the front end"));
}

TEST(ShardsObserver, WhatItThrowsReachesTheCaller) {
    for (const unsigned threads : {1U, 3U})
        for (const Failing::At at : {Failing::At::LEVEL, Failing::At::RULES})
            expectError(at, threads);
    expectError(Failing::At::PROGRESS, 1);
}

}  // namespace
}  // namespace quarvis::mining
