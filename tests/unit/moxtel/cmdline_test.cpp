#include <moxtel/cmdline.hpp>

#include <functional>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

namespace moxtel::cmdline {
namespace {

const Option COUNT(Domain::UINT, "A count.", 1, false);

/// The message of the `E` that `action` throws.
template <class E>
std::string messageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const E& e) {
        return e.what();
    }
    return "nothing thrown";
}

TEST(CmdLine, SerialsCountFrom1) {
    CmdLine registry;
    EXPECT_EQ(registry.add(COUNT), 1U);
    EXPECT_EQ(registry.add(COUNT), 2U);
    EXPECT_EQ(registry.add('c', "count", COUNT), 3U);
}

TEST(CmdLine, AddStoresACopyUnderItsSerial) {
    CmdLine registry;
    const unsigned serial = registry.add(COUNT);
    const Option& stored = registry.forSerial(serial);
    EXPECT_EQ(stored.serial(), serial);
    EXPECT_EQ(stored.owner(), &registry);
    EXPECT_EQ(stored.domain, Domain::UINT);
    EXPECT_EQ(stored.description, "A count.");
    EXPECT_EQ(COUNT.serial(), 0U);
}

TEST(CmdLine, KeysLeadToTheOption) {
    CmdLine registry;
    registry.add('a', "all", COUNT);
    const unsigned serial = registry.add('c', "count", COUNT);
    EXPECT_TRUE(registry.hasSerial(serial));
    EXPECT_TRUE(registry.hasShort('c'));
    EXPECT_TRUE(registry.hasLong("count"));
    EXPECT_EQ(&registry.forShort('c'), &registry.forSerial(serial));
    EXPECT_EQ(&registry.forLong("count"), &registry.forSerial(serial));
    EXPECT_EQ(registry.forSerial(serial).shortKey(), 'c');
    EXPECT_EQ(registry.forSerial(serial).longKey(), "count");
}

TEST(CmdLine, OptionWithoutKeysIsReachableOnlyThroughItsSerial) {
    CmdLine registry;
    const unsigned serial = registry.add('\0', "", COUNT);
    EXPECT_EQ(registry.forSerial(serial).description, "A count.");
    EXPECT_FALSE(registry.hasShort('\0'));
    EXPECT_FALSE(registry.hasLong(""));
    EXPECT_EQ(messageOf<NotFoundException>([&] { registry.forShort('\0'); }), "Key not found\n");
    EXPECT_EQ(messageOf<NotFoundException>([&] { registry.forLong(""); }), "Key not found\n");
}

TEST(CmdLine, LookupOfAnAbsentKeyThrows) {
    const CmdLine registry;
    EXPECT_FALSE(registry.hasSerial(1));
    EXPECT_FALSE(registry.hasShort('x'));
    EXPECT_FALSE(registry.hasLong("x"));
    EXPECT_EQ(messageOf<NotFoundException>([&] { registry.forSerial(1); }), "Key not found\n");
    EXPECT_EQ(messageOf<NotFoundException>([&] { registry.forShort('x'); }), "Key not found\n");
    EXPECT_EQ(messageOf<NotFoundException>([&] { registry.forLong("x"); }), "Key not found\n");
}

TEST(CmdLine, BindingAShortKeyToASecondOptionThrows) {
    CmdLine registry;
    const unsigned first = registry.add('x', "", COUNT);
    const unsigned second = registry.add(COUNT);
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindShort('x', second); }),
              "Key \"x\" is already mapped.");
    EXPECT_EQ(registry.forShort('x').serial(), first);
    EXPECT_EQ(registry.forSerial(second).shortKey(), '\0');
}

TEST(CmdLine, BindingALongKeyToASecondOptionThrows) {
    CmdLine registry;
    const unsigned first = registry.add('\0', "extra", COUNT);
    const unsigned second = registry.add(COUNT);
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindLong("extra", second); }),
              "Key \"extra\" is already mapped.");
    EXPECT_EQ(registry.forLong("extra").serial(), first);
    EXPECT_EQ(registry.forSerial(second).longKey(), "");
}

TEST(CmdLine, RebindingAnOptionToAnotherShortKeyThrows) {
    CmdLine registry;
    const unsigned serial = registry.add('a', "", COUNT);
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindShort('b', serial); }),
              "Serial already mapped to short key \"a\".");
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindShort('\0', serial); }),
              "Serial already mapped to short key \"a\".");
    EXPECT_FALSE(registry.hasShort('b'));
    EXPECT_EQ(registry.forShort('a').serial(), serial);
}

TEST(CmdLine, RebindingAnOptionToAnotherLongKeyThrows) {
    CmdLine registry;
    const unsigned serial = registry.add('\0', "alpha", COUNT);
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindLong("beta", serial); }),
              "Serial already mapped to long key \"alpha\".");
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindLong("", serial); }),
              "Serial already mapped to long key \"alpha\".");
    EXPECT_FALSE(registry.hasLong("beta"));
    EXPECT_EQ(registry.forLong("alpha").serial(), serial);
}

TEST(CmdLine, BindingAKeyAgainToItsOwnOptionThrows) {
    CmdLine registry;
    const unsigned serial = registry.add('v', "verbose", COUNT);
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindShort('v', serial); }),
              "Key \"v\" is already mapped.");
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindLong("verbose", serial); }),
              "Key \"verbose\" is already mapped.");
}

TEST(CmdLine, BindingAnAbsentSerialMakesAnEmptyOption) {
    CmdLine registry;
    registry.bindShort('x', 5);
    registry.bindLong("extra", 5);
    EXPECT_EQ(registry.forShort('x').serial(), 5U);
    EXPECT_EQ(registry.forLong("extra").serial(), 5U);
    EXPECT_EQ(registry.forSerial(5).owner(), &registry);
    EXPECT_TRUE(registry.forSerial(5).isAlias());
    registry.bindShort('\0', 6);
    registry.bindLong("", 7);
    EXPECT_TRUE(registry.hasSerial(6));
    EXPECT_TRUE(registry.hasSerial(7));
    EXPECT_FALSE(registry.hasShort('\0'));
    EXPECT_FALSE(registry.hasLong(""));
}

TEST(CmdLine, BoundKeyMovesToAnOptionMadeByBindingIt) {
    CmdLine registry;
    registry.add('x', "extra", COUNT);
    registry.bindShort('x', 5);
    registry.bindLong("extra", 6);
    EXPECT_EQ(registry.forShort('x').serial(), 5U);
    EXPECT_EQ(registry.forLong("extra").serial(), 6U);
}

TEST(CmdLine, KeysBoundBeforeTheirSerialIsHandedOutStay) {
    CmdLine registry;
    registry.bindShort('x', 1);
    registry.bindLong("extra", 1);
    EXPECT_EQ(registry.add(COUNT), 1U);
    EXPECT_EQ(registry.forShort('x').description, "A count.");
    EXPECT_EQ(registry.forLong("extra").shortKey(), 'x');
    EXPECT_EQ(registry.forLong("extra").longKey(), "extra");
}

TEST(CmdLine, CopyFromAnotherRegistryKeepsItsKeysUnbound) {
    CmdLine other;
    other.add('x', "extra", COUNT);
    CmdLine registry;
    const unsigned serial = registry.add(other.forShort('x'));
    EXPECT_EQ(registry.forSerial(serial).shortKey(), 'x');
    EXPECT_EQ(registry.forSerial(serial).longKey(), "extra");
    EXPECT_FALSE(registry.hasShort('x'));
    EXPECT_FALSE(registry.hasLong("extra"));
    EXPECT_EQ(messageOf<AlreadyExistsException>([&] { registry.bindShort('y', serial); }),
              "Serial already mapped to short key \"x\".");
    registry.bindShort('x', serial);
    registry.bindLong("extra", serial);
    EXPECT_EQ(registry.forShort('x').owner(), &registry);
    EXPECT_EQ(registry.forLong("extra").serial(), serial);
    EXPECT_EQ(registry.add('y', "more", COUNT), 2U);
}

TEST(CmdLine, KeysBoundBeforeTheirSerialIsHandedOutGoBeforeThoseOfTheOption) {
    CmdLine other;
    other.add('x', "extra", COUNT);
    CmdLine registry;
    registry.bindShort('y', 1);
    registry.add(other.forShort('x'));
    EXPECT_EQ(registry.forShort('y').shortKey(), 'y');
    EXPECT_EQ(registry.forShort('y').longKey(), "extra");
}

TEST(CmdLine, OptionStaysRegisteredWhenItsKeyIsRefused) {
    CmdLine registry;
    registry.add('x', "one", COUNT);
    EXPECT_THROW(registry.add('x', "two", COUNT), AlreadyExistsException);
    EXPECT_EQ(registry.forSerial(2).shortKey(), '\0');
    EXPECT_FALSE(registry.hasLong("two"));
    EXPECT_THROW(registry.add('y', "one", COUNT), AlreadyExistsException);
    EXPECT_EQ(registry.forShort('y').serial(), 3U);
    EXPECT_EQ(registry.forSerial(3).longKey(), "");
    EXPECT_EQ(registry.add(COUNT), 4U);
}

TEST(CmdLine, AliasKeepsItsTarget) {
    CmdLine registry;
    const unsigned target = registry.add('c', "count", COUNT);
    Option alias(Domain::ALIAS, "As -c.", 0, false);
    alias.setTarget(target);
    registry.add('n', "number", alias);
    EXPECT_EQ(registry.forShort('n').target(), target);
}

TEST(CmdLine, EveryFormOfAddRegistersTheSame) {
    CmdLine registry;
    const std::string noKey;
    struct Row {
        unsigned serial;
        char shortKey;
        std::string longKey;
        std::size_t minArity;
        std::size_t maxArity;
    };
    const Option option(Domain::SINT, "text", 2, true);
    const Row rows[] = {
        {registry.add(option), '\0', noKey, 2, 2},
        {registry.add('a', option), 'a', noKey, 2, 2},
        {registry.add("bb", option), '\0', "bb", 2, 2},
        {registry.add('c', "cc", option), 'c', "cc", 2, 2},
        {registry.add(Domain::SINT, "text", 2, true), '\0', noKey, 2, 2},
        {registry.add('d', Domain::SINT, "text", 2, true), 'd', noKey, 2, 2},
        {registry.add("ee", Domain::SINT, "text", 2, true), '\0', "ee", 2, 2},
        {registry.add('f', "ff", Domain::SINT, "text", 2, true), 'f', "ff", 2, 2},
        {registry.addRanged(Domain::SINT, "text", 1, 3, true), '\0', noKey, 1, 3},
        {registry.addRanged('g', Domain::SINT, "text", 1, 3, true), 'g', noKey, 1, 3},
        {registry.addRanged("hh", Domain::SINT, "text", 1, 3, true), '\0', "hh", 1, 3},
        {registry.addRanged('i', "ii", Domain::SINT, "text", 1, 3, true), 'i', "ii", 1, 3},
    };
    unsigned serial = 0;
    for (const Row& row : rows) {
        EXPECT_EQ(row.serial, ++serial);
        const Option& stored = registry.forSerial(row.serial);
        EXPECT_EQ(stored.shortKey(), row.shortKey);
        EXPECT_EQ(stored.longKey(), row.longKey);
        EXPECT_EQ(stored.domain, Domain::SINT);
        EXPECT_EQ(stored.description, "text");
        EXPECT_EQ(stored.minArity, row.minArity);
        EXPECT_EQ(stored.maxArity, row.maxArity);
        EXPECT_TRUE(stored.mandatory);
        EXPECT_EQ(registry.hasShort(row.shortKey), row.shortKey != '\0');
        EXPECT_EQ(registry.hasLong(row.longKey), !row.longKey.empty());
    }
}

TEST(CmdLineResult, DefaultIsAFailureWithNothingElse) {
    const CmdLine::Result result;
    EXPECT_FALSE(result.success);
    const bool succeeded = result;
    EXPECT_FALSE(succeeded);
    EXPECT_TRUE(!result);
    EXPECT_EQ(result.bindings.size(), 0U);
    EXPECT_EQ(result.excess.size(), 0U);
}

}  // namespace
}  // namespace moxtel::cmdline
