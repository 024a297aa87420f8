#include "plain_assembly.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/error_output.hpp"
#include "table.hpp"

namespace quarvis::rule::plain {
namespace {

using mining_tests::itemsOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double INF = std::numeric_limits<double>::infinity();

/// Settings that let every rule pass.
Configuration unfiltered() {
    Configuration config;
    config.minCount = 0;
    return config;
}

class PopulateRuleSet : public testing::Test {
  protected:
    void populate(const Configuration& config, std::size_t histories) {
        const support::ErrorOutput messages;
        populateRuleSet(config, m_rules, m_supports, m_counts, histories);
        m_messages = messages.text();
    }

    void setCount(const char* items, std::size_t count) { m_supports.add(itemsOf(items), count); }

    std::vector<std::string> listed() const {
        std::vector<std::string> rules;
        for (const auto& [rule, stats] : m_rules)
            rules.push_back(rule.toString());
        return rules;
    }

    Rule m_rule = Rule(itemsOf("a"), itemsOf("s"));
    ItemSetSupports m_supports;
    RuleHistogram m_counts;
    RuleSet m_rules;
    std::string m_messages;
};

TEST_F(PopulateRuleSet, MeasuresOfFourHistories) {
    setCount("a", 2);
    setCount("a,s", 2);
    setCount("s", 4);
    m_counts[m_rule] = 1;
    populate(unfiltered(), 4);
    ASSERT_THAT(listed(), ElementsAre("a => s"));
    const RuleSet::Stats& stats = m_rules.at(m_rule);
    EXPECT_EQ(1U, stats.count);
    EXPECT_EQ(2U, stats.icount);
    EXPECT_EQ(0.25, stats.support);
    EXPECT_EQ(1.0, stats.confidence);
    EXPECT_EQ(1.0, stats.lift);
    EXPECT_EQ(INF, stats.conviction);
    EXPECT_EQ(0.5, stats.probability);
    EXPECT_EQ(1.0, stats.certainty);
}

TEST_F(PopulateRuleSet, OnlyTheSupportComesFromTheCountOfTheRule) {
    setCount("a", 8);
    setCount("a,s", 4);
    setCount("s", 16);
    m_counts[m_rule] = 1;
    populate(unfiltered(), 32);
    const RuleSet::Stats& stats = m_rules.at(m_rule);
    EXPECT_EQ(1U, stats.count);
    EXPECT_EQ(4U, stats.icount);
    EXPECT_EQ(1.0 / 32, stats.support);
    EXPECT_EQ(0.5, stats.confidence);
    EXPECT_EQ(1.0, stats.lift);
    EXPECT_EQ(1.0, stats.conviction);
    EXPECT_EQ(0.25, stats.probability);
    EXPECT_EQ(1.0 / 3, stats.certainty);
}

TEST_F(PopulateRuleSet, SidesOfSeveralItemsAreLookedUpWhole) {
    const Rule rule(itemsOf("b,d"), itemsOf("a,c"));
    setCount("a,b,c,d", 1);
    setCount("b,d", 2);
    setCount("a,c", 3);
    m_counts[rule] = 1;
    populate(unfiltered(), 4);
    EXPECT_EQ(1U, m_rules.at(rule).icount);
    EXPECT_EQ(0.5, m_rules.at(rule).confidence);
    EXPECT_EQ(0.25 / 0.75, m_rules.at(rule).probability);
}

TEST_F(PopulateRuleSet, ReportsItself) {
    populate(unfiltered(), 0);
    EXPECT_EQ("\t ... preparing rules for reporting.\n", m_messages);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(PopulateRuleSet, RulesThatFailAThresholdAreDropped) {
    for (const char* items : {"a", "b", "s", "a,s", "b,s"})
        setCount(items, 4);
    m_counts[m_rule] = 2;
    m_counts[Rule(itemsOf("b"), itemsOf("s"))] = 1;
    Configuration config = unfiltered();
    config.minCount = 2;
    populate(config, 4);
    EXPECT_THAT(listed(), ElementsAre("a => s"));
}

TEST_F(PopulateRuleSet, ARuleThatIsThereIsReplacedAndTheRestStays) {
    setCount("a", 2);
    setCount("a,s", 2);
    setCount("s", 2);
    m_counts[m_rule] = 1;
    m_rules[m_rule].count = 77;
    m_rules[Rule(itemsOf("x"), itemsOf("y"))].count = 5;
    populate(unfiltered(), 2);
    EXPECT_THAT(listed(), ElementsAre("a => s", "x => y"));
    EXPECT_EQ(1U, m_rules.at(m_rule).count);
}

TEST_F(PopulateRuleSet, ARuleThatIsThereAndFailsStaysAsItWas) {
    setCount("a", 2);
    setCount("a,s", 2);
    setCount("s", 2);
    m_counts[m_rule] = 1;
    m_rules[m_rule].count = 77;
    Configuration config = unfiltered();
    config.minCount = 2;
    populate(config, 2);
    EXPECT_EQ(77U, m_rules.at(m_rule).count);
}

TEST_F(PopulateRuleSet, AMissingCountIsOutOfRange) {
    for (const char* missing : {"a", "s", "a,s"}) {
        m_supports = ItemSetSupports();
        for (const char* items : {"a", "s", "a,s"})
            if (items != std::string(missing))
                setCount(items, 1);
        m_counts[m_rule] = 1;
        try {
            populate(unfiltered(), 1);
            ADD_FAILURE() << "without the count of " << missing;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ("map::at", error.what());
        }
    }
}

TEST_F(PopulateRuleSet, CountsBeyond32BitsWrapAroundInSupports) {
    const std::size_t beyond = (std::size_t{1} << 32) + 1;
    setCount("a", beyond);
    setCount("a,s", beyond);
    setCount("s", beyond + 1);
    m_counts[m_rule] = beyond;
    populate(unfiltered(), beyond + 3);
    const RuleSet::Stats& stats = m_rules.at(m_rule);
    EXPECT_EQ(beyond, stats.count);
    EXPECT_EQ(beyond, stats.icount);
    EXPECT_EQ(0.25, stats.support);
    EXPECT_EQ(0.5, stats.probability);
}

}  // namespace
}  // namespace quarvis::rule::plain
