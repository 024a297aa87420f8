#pragma once

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

/// A value that counts how many of its kind are alive, records the order in which they are
/// destroyed, and fails to be made on wish.
struct Counted {
    static inline int alive = 0;
    static inline int untilFailure = -1;  ///< Constructions that succeed before one throws; or -1.
    static inline std::vector<int> destroyed;

    int value;

    Counted() : Counted(0) {}
    explicit Counted(int v) : value(v) { m_count(); }
    Counted(const Counted& other) : value(other.value) { m_count(); }
    Counted& operator=(const Counted&) = default;
    virtual ~Counted() {
        --alive;
        destroyed.push_back(value);
    }
    bool operator==(const Counted& other) const { return value == other.value; }

    static void reset() {
        alive = 0;
        untilFailure = -1;
        destroyed.clear();
    }

  private:
    void m_count() {
        if (untilFailure == 0)
            throw std::runtime_error("not made");
        if (untilFailure > 0)
            --untilFailure;
        ++alive;
    }
};

/// Tests after which no value may be alive.
class CountedTest : public testing::Test {
  protected:
    void SetUp() override { Counted::reset(); }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};
