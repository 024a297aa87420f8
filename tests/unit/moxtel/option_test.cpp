#include <moxtel/option.hpp>

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace moxtel::cmdline {
namespace {

TEST(Domain, NumbersAreFixed) {
    EXPECT_EQ(Domain::ALIAS, 0U);
    EXPECT_EQ(Domain::STRING, 1U);
    EXPECT_EQ(Domain::BOOL, 2U);
    EXPECT_EQ(Domain::SINT, 3U);
    EXPECT_EQ(Domain::UINT, 4U);
    EXPECT_EQ(Domain::FLOAT, 5U);
}

TEST(Domain, ConvertsToAndFromItsValue) {
    const Domain domain = Domain::UINT;
    const Domain::Value value = domain;
    EXPECT_EQ(value, Domain::UINT);
    EXPECT_EQ(domain.value, Domain::UINT);
    EXPECT_TRUE(domain == Domain::UINT);
    EXPECT_TRUE(Domain::UINT == domain);
    EXPECT_TRUE(domain != Domain::SINT);
    EXPECT_TRUE(domain == Domain(Domain::UINT));
    EXPECT_TRUE(domain != Domain(Domain::SINT));
}

TEST(Option, OfASerialIsOtherwiseEmpty) {
    const Option option(7);
    EXPECT_EQ(option.serial(), 7U);
    EXPECT_EQ(option.target(), 0U);
    EXPECT_EQ(option.owner(), nullptr);
    EXPECT_EQ(option.shortKey(), '\0');
    EXPECT_EQ(option.longKey(), "");
    EXPECT_EQ(option.domain, Domain::ALIAS);
    EXPECT_TRUE(option.isAlias());
    EXPECT_EQ(option.description, "");
    EXPECT_EQ(option.minArity, 0U);
    EXPECT_EQ(option.maxArity, 0U);
    EXPECT_FALSE(option.mandatory);
}

TEST(Option, OneArityIsTheLeastAndTheMost) {
    const Option option(Domain::FLOAT, "A weight.", 2, true);
    EXPECT_EQ(option.serial(), 0U);
    EXPECT_EQ(option.domain, Domain::FLOAT);
    EXPECT_FALSE(option.isAlias());
    EXPECT_EQ(option.description, "A weight.");
    EXPECT_EQ(option.minArity, 2U);
    EXPECT_EQ(option.maxArity, 2U);
    EXPECT_TRUE(option.mandatory);
}

TEST(Option, TwoAritiesAreARange) {
    const Option option(Domain::STRING, "Names.", 1, 3, false);
    EXPECT_EQ(option.minArity, 1U);
    EXPECT_EQ(option.maxArity, 3U);
    EXPECT_FALSE(option.mandatory);
}

TEST(Option, CopiesAndAssignmentsTakeEverything) {
    Option alias(Domain::ALIAS, "Another name.", 0, true);
    alias.setTarget(4);
    const Option copy(alias);
    EXPECT_EQ(copy.target(), 4U);
    EXPECT_EQ(copy.description, "Another name.");
    Option assigned(9);
    assigned = copy;
    EXPECT_EQ(assigned.serial(), 0U);
    EXPECT_EQ(assigned.target(), 4U);
    EXPECT_TRUE(assigned.mandatory);
}

TEST(KeyOperationsOfOptions, TheKeyIsTheSerial) {
    using Keys = util::KeyOperations<Option>;
    Option option;
    Keys::createValue(3, option);
    EXPECT_EQ(Keys::extract(option), 3U);
    EXPECT_TRUE(Keys::equals(3, 3));
    EXPECT_FALSE(Keys::equals(3, 4));
}

}  // namespace
}  // namespace moxtel::cmdline
