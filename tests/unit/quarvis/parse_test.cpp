#include <quarvis/parse.hpp>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "io_error.hpp"
#include "items.hpp"

namespace {

using namespace std::string_literals;
using moxtel::string::parse;
using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::test::ioErrorOf;
using quarvis::test::itemsOf;
using quarvis::test::setOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Items = std::vector<Item>;

const char* const BRACE_ERROR = "Missing trailing brace ('{') in braced form.";

struct Reading {
    std::string text;
    Items items;
};

void expectItems(const std::vector<Reading>& readings) {
    for (const Reading& reading : readings)
        EXPECT_EQ(itemsOf(parse<ItemSet>(reading.text)), reading.items)
            << testing::PrintToString(reading.text);
}

struct RuleReading {
    std::string text;
    Items antecedent, subsequent;
};

void expectRules(const std::vector<RuleReading>& readings) {
    for (const RuleReading& reading : readings) {
        const Rule rule = parse<Rule>(reading.text);
        EXPECT_EQ(itemsOf(rule.antecedent()), reading.antecedent) << reading.text;
        EXPECT_EQ(itemsOf(rule.subsequent()), reading.subsequent) << reading.text;
    }
}

TEST(ItemSetParse, NothingBlanksAndEmptyBracesAreTheEmptySet) {
    expectItems(
        {{"", {}}, {"   ", {}}, {" \t\r\n", {}}, {"{}", {}}, {" { } ", {}}, {"{\t\n}", {}}});
}

TEST(ItemSetParse, BracedAndBareListsReadAlike) {
    expectItems({
        {"{ab, cd }", {"ab", "cd"}},
        {"ab,cd", {"ab", "cd"}},
        {" { ab ,cd} ", {"ab", "cd"}},
        {"\tab\t,\tcd\t", {"ab", "cd"}},
        {"{ab}", {"ab"}},
        {"ab", {"ab"}},
        {"ef,cd,ab,cd", {"ab", "cd", "ef"}},
        {"two words, three  of them", {"three  of them", "two words"}},
    });
}

TEST(ItemSetParse, AMissingClosingBraceIsAnError) {
    for (const char* text : {"{ab", "{ab,cd", " {ab} cd", "{{", "{ab}x"})
        EXPECT_EQ(ioErrorOf([&] { parse<ItemSet>(text); }), BRACE_ERROR) << text;
}

TEST(ItemSetParse, BracesElsewhereAreText) {
    expectItems({
        {"ab}", {"ab}"}},
        {"ab{", {"ab{"}},
        {"ab{cd}", {"ab{cd}"}},
        {"}ab{", {"}ab{"}},
        {"{{ab}}", {"{ab}"}},
        {"{ab}}", {"ab}"}},
        {"ab,{cd}", {"ab", "{cd}"}},
        {"\"{ab\"", {"{ab"}},
    });
}

TEST(ItemSetParse, ATextOfOneCharacterIsTheEmptySet) {
    expectItems({{"a", {}}, {" a ", {}}, {"{a}", {}}, {"{ a }", {}}, {",", {}}, {"{,}", {}}});
}

TEST(ItemSetParse, AnOpeningBraceAloneIsTheEmptySet) {
    expectItems({{"{", {}}, {" { ", {}}, {"}", {}}});
}

TEST(ItemSetParse, ItemsOfOneCharacterBecomeTheEmptyItem) {
    expectItems({
        {"{a,b}", {""}},
        {"a,b", {""}},
        {"a,bc", {"", "bc"}},
        {"{ab, c ,de}", {"", "ab", "de"}},
        {"\"a\",bc", {"", "bc"}},
    });
}

TEST(ItemSetParse, EmptyCellsAreTheEmptyItem) {
    expectItems({
        {"ab,,cd", {"", "ab", "cd"}},
        {"ab,  ,cd", {"", "ab", "cd"}},
        {"ab,", {"", "ab"}},
        {"{ab,}", {"", "ab"}},
        {",,", {""}},
        {"\"\",ab", {"", "ab"}},
        {"\"\"", {""}},
    });
}

TEST(ItemSetParse, AnEmptyFirstCellIsLost) {
    expectItems({{",ab", {"ab"}}, {"{,ab}", {"ab"}}, {"{ ,ab}", {"ab"}}, {",,ab", {"", "ab"}}});
}

TEST(ItemSetParse, QuotesKeepACommaInAnItem) {
    expectItems({
        {"ab,\"cd,ef\"", {"ab", "cd,ef"}},
        {"{\"ab,cd\",ef}", {"ab,cd", "ef"}},
        {"\"ab,cd\"", {"ab,cd"}},
    });
}

TEST(ItemSetParse, QuotedItemsAreTrimmedToo) {
    expectItems({{"\" ab \",cd", {"ab", "cd"}}});
}

TEST(ItemSetParse, AQuoteAfterABlankIsText) {
    expectItems({{"ab, \"cd,ef\"", {"\"cd", "ab", "ef\""}}});
}

TEST(ItemSetParse, TextAfterTheClosingQuoteLeavesTheItemAsWritten) {
    expectItems({{"\"ab,cd\"ef,gh", {"\"ab,cd\"ef", "gh"}},
                 {"\"ab,cd\" ,gh", {"\"ab,cd\"", "gh"}},
                 {"\"ab\"\"cd\"", {"\"ab\"\"cd\""}}});
}

TEST(ItemSetParse, AQuoteThatIsNeverClosedTakesTheRest) {
    expectItems({{"ab,\"cd,ef", {"ab", "cd,ef"}}, {"{ab,\"cd}", {"ab", "cd"}}});
}

TEST(ItemSetParse, OnlyTheFirstLineIsRead) {
    expectItems({
        {"ab\ncd", {"ab"}},
        {"{ab\n,cd}", {"ab"}},
        {"ab,\ncd", {"", "ab"}},
        {"ab\n\rcd", {"ab"}},
    });
}

TEST(ItemSetParse, ACarriageReturnIsNoLineEndButReadAsALineFeed) {
    expectItems(
        {{"ab\r\ncd,ef", {"ab\ncd", "ef"}}, {"ab\rcd", {"ab\ncd"}}, {"ab\r,cd", {"ab", "cd"}}});
}

TEST(ItemSetParse, BytesBeyondAsciiAreText) {
    expectItems({{"\xC3\xA9,\x80\xFE", {"\x80\xFE", "\xC3\xA9"}}, {"a\0b,cd"s, {"a\0b"s, "cd"}}});
}

TEST(ItemSetParse, AByteOfAllOnesEndsAnItem) {
    expectItems({
        {"ab\377cd,ef", {"ab", "cd", "ef"}},
        {"ab,\377cd", {"", "ab", "cd"}},
        {"\377ab", {}},
    });
}

TEST(RuleParse, SidesAreItemSetsInEitherForm) {
    expectRules({
        {"milk => bread", {"milk"}, {"bread"}},
        {"{ab,cd}=>ef", {"ab", "cd"}, {"ef"}},
        {"ab,cd=>{ef,gh}", {"ab", "cd"}, {"ef", "gh"}},
        {"  {ab}  =>  ef  ", {"ab"}, {"ef"}},
        {"{milk}=>{bread}", {"milk"}, {"bread"}},
    });
}

TEST(RuleParse, ATextWithoutArrowIsAnError) {
    EXPECT_EQ(ioErrorOf([] { parse<Rule>("milk"); }), "Missing => operator for rule in \"milk\".");
    EXPECT_EQ(ioErrorOf([] { parse<Rule>(""); }), "Missing => operator for rule in \"\".");
    EXPECT_EQ(ioErrorOf([] { parse<Rule>(" {ab = > %s%n\n\"cd\" "); }),
              "Missing => operator for rule in \" {ab = > %s%n\n\"cd\" \".");
    EXPECT_EQ(ioErrorOf([] { parse<Rule>(std::string(5000, 'x')); }),
              "Missing => operator for rule in \"" + std::string(5000, 'x') + "\".");
}

TEST(RuleParse, TheFirstArrowSplits) {
    expectRules({
        {"ab => cd => ef", {"ab"}, {"cd => ef"}},
        {"\"ab=>cd\" => ef", {"ab"}, {"cd\" => ef"}},
        {"ab==>cd", {"ab="}, {"cd"}},
        {"ab=>=>cd", {"ab"}, {"=>cd"}},
    });
}

TEST(RuleParse, EitherSideMayBeEmpty) {
    expectRules({{"=>", {}, {}},
                 {"{} => {}", {}, {}},
                 {"ab =>", {"ab"}, {}},
                 {"=> ab", {}, {"ab"}},
                 {" => {ab,cd}", {}, {"ab", "cd"}}});
}

TEST(RuleParse, ASideOfOneCharacterIsEmpty) {
    expectRules({{"a => bread", {}, {"bread"}}, {"milk => b", {"milk"}, {}}, {"a => b", {}, {}}});
}

TEST(RuleParse, AMissingClosingBraceOfEitherSideIsAnError) {
    for (const char* text :
         {"{ab => cd", "{ab => cd}", "ab => {cd", "{ab,cd} => {ef", "{ab => {cd"})
        EXPECT_EQ(ioErrorOf([&] { parse<Rule>(text); }), BRACE_ERROR) << text;
}

TEST(RuleParse, TheTextOfARuleOfLongerItemsReadsBackEqual) {
    const std::vector<Rule> rules = {
        Rule(setOf({"milk"}), Item("bread")),
        Rule(setOf({"milk", "tea"}), Item("bread")),
        Rule(setOf({"ab", "cd", "ef"}), setOf({"gh", "ij"})),
        Rule(ItemSet(), setOf({"ab", "cd"})),
        Rule(),
    };
    for (const Rule& rule : rules) {
        const Rule again = parse<Rule>(rule.toString());
        EXPECT_EQ(itemsOf(again.antecedent()), itemsOf(rule.antecedent())) << rule;
        EXPECT_EQ(itemsOf(again.subsequent()), itemsOf(rule.subsequent())) << rule;
    }
    const Rule single = parse<Rule>(Rule(setOf({"m"}), Item("bread")).toString());
    EXPECT_THAT(itemsOf(single.antecedent()), IsEmpty());
    EXPECT_THAT(itemsOf(single.subsequent()), ElementsAre("bread"));
}

}  // namespace
