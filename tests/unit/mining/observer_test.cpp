#include <quarvis/mining/observer.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quarvis/mining/mine.hpp>

#include "runs.hpp"
#include "support/engine.hpp"

namespace quarvis::mining {
namespace {

using oracle::tableOf;

/// Records all calls except those of progress.
class Listener : public Observer {
  public:
    void levelFound(std::size_t size, std::size_t sets) override {
        m_add(std::to_string(size) + ':' + std::to_string(sets));
    }
    void rulesCounted(std::size_t rules) override { m_add("rules:" + std::to_string(rules)); }

    const std::string& text() const { return m_text; }

  private:
    void m_add(const std::string& text) { m_text += (m_text.empty() ? "" : " ") + text; }

    std::string m_text;
};

std::string told(std::initializer_list<const char*> histories, std::uint32_t minCount,
                 std::uint32_t maxSize, unsigned threads = 1) {
    MiningOptions options;
    options.minCount = minCount;
    options.maxSize = maxSize;
    options.threads = threads;
    Listener listener;
    mine(support::indexOf(tableOf(histories), minCount), options, listener);
    return listener.text();
}

TEST(Observer, IsToldEachLevelUpToTheFirstWithoutSets) {
    EXPECT_EQ("1:3 2:3 3:1 4:0 rules:2", told({"1:a 2:b,c", "1:a 2:b 3:c", "1:d"}, 2, 0));
    EXPECT_EQ("1:2 2:0 rules:0", told({"1:a", "1:b", "1:a", "2:b"}, 2, 0));
}

TEST(Observer, IsToldNoLevelBeyondTheGreatestSize) {
    const std::initializer_list<const char*> histories = {"1:a 2:b 3:c", "1:a 2:b 3:c"};
    EXPECT_EQ("1:3 rules:0", told(histories, 2, 1));
    EXPECT_EQ("1:3 2:3 rules:3", told(histories, 2, 2));
    EXPECT_EQ("1:3 2:3 3:1 rules:4", told(histories, 2, 3));
    EXPECT_EQ("1:3 2:3 3:1 4:0 rules:4", told(histories, 2, 4));
    EXPECT_EQ("1:3 2:3 3:1 4:0 rules:4", told(histories, 2, 0xffffffff));
}

TEST(Observer, IsToldThatThereAreNoItems) {
    EXPECT_EQ("1:0 2:0 rules:0", told({}, 1, 0));
    EXPECT_EQ("1:0 2:0 rules:0", told({"1:", "2:"}, 0, 0));
    EXPECT_EQ("1:0 2:0 rules:0", told({"1:a", "1:b"}, 2, 0));
    EXPECT_EQ("1:0 rules:0", told({"1:a", "1:b"}, 2, 1));
}

/// Rules that the thresholds drop are counted too.
TEST(Observer, IsToldAllRulesThatHaveTheLeastCount) {
    MiningOptions options;
    options.minCount = 1;
    options.thresholds.minConfidence = 0.9;
    Listener listener;
    const Result result =
        mine(support::indexOf(tableOf({"1:a 2:b", "1:a", "1:b 2:c"}), 1), options, listener);
    EXPECT_EQ("1:3 2:2 3:0 rules:2", listener.text());
    EXPECT_EQ(0U, result.rules.size());
}

TEST(Observer, IsToldTheSameWhateverTheThreads) {
    for (const unsigned threads : {1U, 2U, 3U, 8U})
        EXPECT_EQ("1:3 2:3 3:1 4:0 rules:4", told({"1:a 2:b 3:c", "1:a 2:b 3:c"}, 2, 0, threads));
}

/// Checks the promises about progress.
class ProgressChecker : public Observer {
  public:
    void levelFound(std::size_t, std::size_t) override { m_last = 0; }
    void progressed(std::uint64_t done, std::uint64_t all) override {
        EXPECT_LE(done, all);
        EXPECT_GE(done, m_last);
        m_last = done;
        ++m_calls;
    }
    std::size_t calls() const { return m_calls; }

  private:
    std::uint64_t m_last = 0;
    std::size_t m_calls = 0;
};

TEST(Observer, IsToldProgressThatOnlyGrows) {
    const HistoryIndex index = mining_tests::evenHistories(200, 10, 1);
    MiningOptions options;
    options.minCount = 10;
    for (const unsigned threads : {1U, 2U}) {
        options.threads = threads;
        ProgressChecker checker;
        mine(index, options, checker);
        if (threads == 1) {
            EXPECT_EQ(20U, checker.calls());
        }
    }
}

class Boom : public std::runtime_error {
  public:
    Boom() : std::runtime_error("boom") {}
};

/// Throws at the n-th call of one kind.
class Thrower : public Observer {
  public:
    enum Kind { LEVEL, RULES, PROGRESS };
    Thrower(Kind kind, std::size_t calls) : m_kind(kind), m_calls(calls) {}

    void levelFound(std::size_t, std::size_t) override { m_call(LEVEL); }
    void rulesCounted(std::size_t) override { m_call(RULES); }
    void progressed(std::uint64_t, std::uint64_t) override { m_call(PROGRESS); }

  private:
    void m_call(Kind kind) {
        if (kind == m_kind && --m_calls == 0)
            throw Boom();
    }

    Kind m_kind;
    std::size_t m_calls;
};

TEST(Observer, ItsExceptionsReachTheCaller) {
    const HistoryIndex index = mining_tests::evenHistories(100, 6, 1);
    MiningOptions options;
    options.minCount = 1;
    options.maxSize = 3;
    Listener listener;
    const mining_tests::Account expected(mine(index, options, listener));
    EXPECT_EQ("1:6 2:15 3:20", listener.text().substr(0, 13));
    struct Row {
        Thrower::Kind kind;
        std::size_t calls;
    };
    // With more threads, the calling one may find no task left and then reports no progress.
    const Row rows[] = {{Thrower::LEVEL, 1},    {Thrower::LEVEL, 2},    {Thrower::LEVEL, 3},
                        {Thrower::RULES, 1},    {Thrower::PROGRESS, 1}, {Thrower::PROGRESS, 6},
                        {Thrower::PROGRESS, 7}, {Thrower::PROGRESS, 12}};
    for (const unsigned threads : {1U, 3U})
        for (const auto& [kind, calls] : rows) {
            if (threads > 1 && kind == Thrower::PROGRESS)
                continue;
            options.threads = threads;
            Thrower thrower(kind, calls);
            EXPECT_THROW(mine(index, options, thrower), Boom) << kind << ' ' << calls;
            EXPECT_TRUE(expected == mining_tests::Account(mine(index, options, thrower)))
                << "the run after it";
        }
}

}  // namespace
}  // namespace quarvis::mining
