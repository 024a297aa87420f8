#include "oracle/measures.hpp"

#include <limits>

#include <gtest/gtest.h>

namespace oracle {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

struct Row {
    const char* title;
    RuleCounts counts;
    Measures measures;
};

TEST(OracleMeasures, Table) {
    const Row rows[] = {
        {"all that have A have S",
         {.rule = 1, .both = 2, .antecedent = 2, .subsequent = 4, .all = 4},
         {0.25, 1, 1, INFINITE, 0.5, 1}},
        {"half of those that have A have S",
         {.rule = 1, .both = 4, .antecedent = 8, .subsequent = 16, .all = 32},
         {1.0 / 32, 0.5, 1, 1, 0.25, 1.0 / 3}},
        {"all that have S have A",
         {.rule = 2, .both = 2, .antecedent = 4, .subsequent = 2, .all = 8},
         {0.25, 0.5, 2, 1.5, 1, INFINITE}},
        {"S is everywhere",
         {.rule = 1, .both = 1, .antecedent = 2, .subsequent = 4, .all = 4},
         {0.25, 0.5, 0.5, 0, 0.25, 1.0 / 3}},
        {"nowhere",
         {.rule = 0, .both = 0, .antecedent = 0, .subsequent = 0, .all = 4},
         {0, 0, 0, 1, 0, INFINITE}},
    };
    for (const auto& [title, counts, expected] : rows) {
        const Measures measures = measuresOf(counts);
        EXPECT_EQ(expected.support, measures.support) << title;
        EXPECT_EQ(expected.confidence, measures.confidence) << title;
        EXPECT_EQ(expected.lift, measures.lift) << title;
        EXPECT_EQ(expected.conviction, measures.conviction) << title;
        EXPECT_EQ(expected.probability, measures.probability) << title;
        EXPECT_EQ(expected.certainty, measures.certainty) << title;
    }
}

}  // namespace
}  // namespace oracle
