#include <quarvis/implication.hpp>

#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "items.hpp"

namespace {

using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<Rule>);
static_assert(std::is_same_v<decltype(std::declval<Rule&>().antecedent()), ItemSet&>);
static_assert(std::is_same_v<decltype(std::declval<const Rule&>().antecedent()), const ItemSet&>);
static_assert(std::is_same_v<decltype(std::declval<Rule&>().subsequent()), const ItemSet&>);

TEST(Rule, IsEmptyOnBothSidesByDefault) {
    const Rule rule;
    EXPECT_THAT(itemsOf(rule.antecedent()), IsEmpty());
    EXPECT_THAT(itemsOf(rule.subsequent()), IsEmpty());
}

TEST(Rule, TakesASingleItemAsItsSubsequent) {
    const Rule rule(setOf({"ab", "cd"}), Item("ef"));
    EXPECT_THAT(itemsOf(rule.antecedent()), ElementsAre("ab", "cd"));
    EXPECT_THAT(itemsOf(rule.subsequent()), ElementsAre("ef"));
    EXPECT_THAT(itemsOf(Rule(ItemSet(), Item()).subsequent()), ElementsAre(""));
}

TEST(Rule, CopiesBothSides) {
    ItemSet antecedent = setOf({"ab"});
    ItemSet subsequent = setOf({"cd", "ef"});
    const Rule rule(antecedent, subsequent);
    antecedent.clear();
    subsequent.clear();
    EXPECT_THAT(itemsOf(rule.antecedent()), ElementsAre("ab"));
    EXPECT_THAT(itemsOf(rule.subsequent()), ElementsAre("cd", "ef"));
}

TEST(Rule, TheAntecedentCanBeChangedInPlace) {
    Rule rule(setOf({"ab"}), Item("cd"));
    rule.antecedent().add("ef");
    EXPECT_EQ(rule.toString(), "{ab,ef} => cd");
}

TEST(Rule, ItemsAreThoseOfBothSides) {
    EXPECT_THAT(itemsOf(Rule(setOf({"ab", "cd"}), setOf({"cd", "ef"})).items()),
                ElementsAre("ab", "cd", "ef"));
    EXPECT_THAT(itemsOf(Rule().items()), IsEmpty());
}

TEST(Rule, CopiesAreIndependent) {
    Rule original(setOf({"ab"}), Item("cd"));
    const Rule copy(original);
    Rule assigned;
    assigned = original;
    original.antecedent().clear();
    EXPECT_EQ(copy.toString(), "ab => cd");
    EXPECT_EQ(assigned.toString(), "ab => cd");
}

TEST(RuleText, ASideOfOneItemIsBareAndAnyOtherInBraces) {
    const std::vector<std::pair<Rule, std::string>> forms = {
        {Rule(setOf({"milk"}), Item("bread")), "milk => bread"},
        {Rule(setOf({"milk", "bread"}), Item("eggs")), "{bread,milk} => eggs"},
        {Rule(ItemSet(), setOf({"y", "x"})), "{} => {x,y}"},
        {Rule(setOf({"a"}), ItemSet()), "a => {}"},
        {Rule(setOf({"a", "b"}), setOf({"c", "d"})), "{a,b} => {c,d}"},
        {Rule(), "{} => {}"},
        {Rule(setOf({""}), Item("ab")), " => ab"},
        {Rule(setOf({"ab"}), Item()), "ab => "},
        {Rule(setOf({"", "ab"}), Item("cd")), "{,ab} => cd"},
        {Rule(setOf({"a => b"}), Item("{c,\t\"d")), "a => b => {c,\t\"d"},
    };
    for (const auto& [rule, text] : forms) {
        EXPECT_EQ(rule.toString(), text);
        EXPECT_EQ(static_cast<std::string>(rule), text);
        std::ostringstream written;
        rule.writeInto(written);
        EXPECT_EQ(written.str(), text);
        std::ostringstream streamed;
        streamed << rule;
        EXPECT_EQ(streamed.str(), text);
    }
}

TEST(RuleText, WritingReturnsTheStream) {
    const Rule rule(setOf({"ab"}), Item("cd"));
    std::ostringstream os;
    EXPECT_EQ(&rule.writeInto(os), &os);
    EXPECT_EQ(&(os << rule), &os);
    EXPECT_EQ(os.str(), "ab => cdab => cd");
}

}  // namespace
