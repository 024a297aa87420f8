#include "allocation_failure.hpp"

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/cmdline.hpp>
#include <moxtel/table.hpp>

namespace moxtel {
namespace {

// The command line.

TEST(AllocationFailure, RegistryOfOptionsIsMadeOrThrows) {
    withEveryAllocationFailing(
        [](const Attempt& attempt) { attempt([] { cmdline::CmdLine registry; }); });
}

TEST(AllocationFailure, OptionIsAddedOrLeavesNoTrace) {
    const std::string description = longText();
    const cmdline::Option count(cmdline::Domain::UINT, description, 1, false);
    withEveryAllocationFailing([&](const Attempt& attempt) {
        cmdline::CmdLine registry;
        registry.add('o', "old", count);
        const bool added = attempt([&] { registry.add(count); });
        EXPECT_EQ(registry.hasSerial(2), added);
        EXPECT_EQ(registry.forShort('o').serial(), 1U);
        EXPECT_EQ(registry.forLong("old").description, description);
        EXPECT_EQ(registry.add(count), added ? 3U : 2U);
    });
}

TEST(AllocationFailure, OptionWithKeysIsBoundAsFarAsItCame) {
    const std::string longKey = longText("new");
    const cmdline::Option count(cmdline::Domain::UINT, longText(), 1, false);
    withEveryAllocationFailing([&](const Attempt& attempt) {
        cmdline::CmdLine registry;
        registry.add('o', "old", count);
        const bool added = attempt([&] { registry.add('n', longKey, count); });
        EXPECT_EQ(registry.hasLong(longKey), added);
        EXPECT_TRUE(registry.hasShort('n') || !added);
        if (registry.hasShort('n')) {
            EXPECT_EQ(registry.forShort('n').serial(), 2U);
            EXPECT_EQ(registry.forShort('n').shortKey(), 'n');
        }
        if (registry.hasSerial(2)) {
            EXPECT_EQ(registry.forSerial(2).longKey(), added ? longKey : "");
        }
        EXPECT_EQ(registry.forShort('o').description, longText());
    });
}

TEST(AllocationFailure, ParseGivesTheWholeResultOrThrows) {
    cmdline::CmdLine registry;
    registry.add('n', "name", cmdline::Domain::STRING, "A name.", 2, false);
    registry.add('c', "count", cmdline::Domain::UINT, "A count.", 1, false);
    const std::string first = longText("first");
    const std::string second = longText("second");
    const char* const argv[] = {"program",      "--name", first.c_str(),
                                second.c_str(), "-c5",    second.c_str()};
    withEveryAllocationFailing([&](const Attempt& attempt) {
        cmdline::CmdLine::Result result;
        const bool parsed =
            attempt([&] { result = registry.parse(static_cast<int>(std::size(argv)), argv); });
        ASSERT_EQ(result.success, parsed);
        ASSERT_EQ(result.bindings.size(), parsed ? 2U : 0U);
        ASSERT_EQ(result.excess.size(), parsed ? 1U : 0U);
        if (parsed) {
            EXPECT_EQ(result.bindings[0].values[1].raw, second);
            EXPECT_EQ(result.bindings[1].values[0].data.ui, 5U);
            EXPECT_EQ(result.excess[0], second);
        }
    });
}

// Tables.

using Row = std::vector<std::string>;

Row firstRow(io::DelimitedRowParser& parser) {
    Row row;
    while (parser.hasCell())
        row.push_back(parser.nextCell());
    return row;
}

TEST(AllocationFailure, ParserIsMadeOrThrows) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        attempt([] { io::DelimitedRowParser::createRFC4180(',', nullptr); });
    });
    withEveryAllocationFailing([](const Attempt& attempt) {
        attempt([] { io::DelimitedRowParser::createEscaped(',', "'\"", '\\', '#'); });
    });
    withEveryAllocationFailing([](const Attempt& attempt) {
        std::istringstream in("a,b");
        attempt([&] { io::DelimitedRowParser::createRFC4180(in, ',', nullptr); });
        EXPECT_EQ(in.get(), 'a');
    });
}

TEST(AllocationFailure, ParserOpensANewInputOrKeepsTheOld) {
    const std::string text = longText("new") + ",b";
    withEveryAllocationFailing([&](const Attempt& attempt) {
        io::DelimitedRowParser parser = io::DelimitedRowParser::createRFC4180(',', nullptr);
        parser.openFromString("old,b");
        const bool opened = attempt([&] { parser.openFromString(text); });
        EXPECT_EQ(firstRow(parser), Row({opened ? longText("new") : "old", "b"}));
    });
}

TEST(AllocationFailure, ParserReadsARowOrThrows) {
    const std::string quoted = longText("a, quoted");
    const std::string plain = longText("b");
    withEveryAllocationFailing([&](const Attempt& attempt) {
        std::istringstream in('"' + quoted + "\"," + plain + "\nnext");
        io::DelimitedRowParser parser = io::DelimitedRowParser::createRFC4180(in, ',', nullptr);
        Row row;
        if (attempt([&] { row = firstRow(parser); })) {
            EXPECT_EQ(row, Row({quoted, plain}));
            EXPECT_EQ(firstRow(parser), Row({"next"}));
        } else {
            // A cell that was begun is lost, but the parser may go on.
            EXPECT_EQ(row, Row());
            while (parser.hasRow())
                firstRow(parser);
        }
        parser.openFromString("x");
        EXPECT_EQ(firstRow(parser), Row({"x"}));
    });
}

}  // namespace
}  // namespace moxtel
