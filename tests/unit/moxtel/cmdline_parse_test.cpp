#include <moxtel/cmdline.hpp>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/memory.hpp>

namespace moxtel::cmdline {
namespace {

constexpr auto UNKNOWN_DOMAIN = static_cast<Domain::Value>(17);

/// One option of each kind.
class Registry : public CmdLine {
  public:
    Registry() {
        add('k', "key", Domain::UINT, "", 1, false);
        add('n', "number", Domain::SINT, "", 1, false);
        add('f', "real", Domain::FLOAT, "", 1, false);
        add('b', "bool", Domain::BOOL, "", 1, false);
        add('t', "text", Domain::STRING, "", 1, false);
        add('v', "verbose", Domain::ALIAS, "", 0, false);
        add('p', "pair", Domain::SINT, "", 2, false);
        add('A', "alias", Domain::ALIAS, "", 1, false);
        add('U', "unknown", UNKNOWN_DOMAIN, "", 1, false);
        add('m', "must", Domain::UINT, "", 1, true);
        add('5', Domain::ALIAS, "", 0, false);
        add("long-only", Domain::UINT, "", 1, false);
        addRanged('r', "range", Domain::STRING, "", 0, 2, false);
        addRanged('R', "reverse", Domain::STRING, "", 3, 1, false);
    }
};

struct Outcome {
    std::string result;
    std::string out;
    std::string err;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* to) {
    *to << "result [" << outcome.result << "] out [" << outcome.out << "] err [" << outcome.err
        << "]";
}

void describe(const CmdLine::Value& value, Domain domain, std::ostream& to) {
    switch (domain) {
        case Domain::BOOL:
            to << (value.data.b ? "true" : "false");
            break;
        case Domain::SINT:
            to << value.data.si;
            break;
        case Domain::UINT:
            to << value.data.ui;
            break;
        case Domain::FLOAT:
            to << value.data.fl;
            break;
        default:
            to << '"' << value.raw << '"' << (value.data.ui == 0 ? "" : " with data");
    }
}

/// "failed", or the bindings as key@position(values), then the positional arguments in brackets.
std::string textOf(const CmdLine::Result& result) {
    if (!result)
        return result.bindings.size() + result.excess.size() == 0 ? "failed" : "failed, not empty";
    std::ostringstream text;
    for (const CmdLine::Binding& binding : result.bindings) {
        const Option& option = *binding.source;
        if (option.shortKey() != '\0')
            text << option.shortKey();
        else
            text << option.longKey();
        text << '@' << binding.pos << '(';
        for (std::size_t i = 0; i < binding.values.size(); ++i) {
            if (i > 0)
                text << ' ';
            describe(binding.values[i], option.domain, text);
        }
        text << ") ";
    }
    for (const std::string& argument : result.excess)
        text << '[' << argument << ']';
    return text.str();
}

Outcome parse(const std::vector<const char*>& arguments) {
    std::vector<const char*> argv = {"program"};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const Registry registry;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const CmdLine::Result result = registry.parse(static_cast<int>(argv.size()), argv.data());
    std::string out = testing::internal::GetCapturedStdout();
    std::string err = testing::internal::GetCapturedStderr();
    return {textOf(result), out, err};
}

/// Arguments, and what comes of them.
struct Parsing {
    const char* name;
    std::vector<const char*> arguments;
    Outcome outcome;
};

void PrintTo(const Parsing& row, std::ostream* to) {
    for (const char* argument : row.arguments)
        *to << " '" << argument << "'";
}

class ArgumentTable : public testing::TestWithParam<Parsing> {};

TEST_P(ArgumentTable, Parsing) {
    EXPECT_EQ(parse(GetParam().arguments), GetParam().outcome);
}

std::string nameOf(const testing::TestParamInfo<Parsing>& info) {
    return info.param.name;
}

Outcome bound(const char* result) {
    return {result, "", ""};
}

Outcome failed(const char* err) {
    return {"failed", "", err};
}

INSTANTIATE_TEST_SUITE_P(
    Positional, ArgumentTable,
    testing::Values(
        Parsing{"NoArguments", {}, bound("")},
        Parsing{"ArgumentsInOrder", {"b", "a", "b"}, bound("[b][a][b]")},
        Parsing{"EmptyArgument", {""}, bound("[]")},
        Parsing{"LoneDash", {"-", "-"}, bound("[-][-]")},
        Parsing{"TwoDashesBetweenArguments", {"a", "--", "b"}, {"[a][--][b]", "", "Got --\n"}},
        Parsing{
            "TwoDashesEndNothing", {"--", "-v", "--"}, {"v@2() [--][--]", "", "Got --\nGot --\n"}},
        Parsing{"OptionsBetweenArguments",
                {"a", "-k", "5", "b", "-v", "c"},
                bound("k@2(5) v@5() [a][b][c]")},
        Parsing{"EqualsSignAlone", {"="}, bound("[=]")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Forms, ArgumentTable,
    testing::Values(
        Parsing{"ShortWithSeparateValue", {"-k", "5"}, bound("k@1(5) ")},
        Parsing{"ShortWithAttachedValue", {"-k5"}, bound("k@1(5) ")},
        Parsing{"ShortWithEqualsSign", {"-k=5"}, bound("k@1(5) ")},
        Parsing{"LongWithSeparateValue", {"--key", "5"}, bound("k@1(5) ")},
        Parsing{"LongWithEqualsSign", {"--key=5"}, bound("k@1(5) ")},
        Parsing{"LongOnly", {"--long-only=5"}, bound("long-only@1(5) ")},
        Parsing{"PositionIsThatOfTheOptionToken",
                {"a", "-k", "5", "--key=6"},
                bound("k@2(5) k@4(6) [a]")},
        Parsing{
            "RepeatedOptionIsBoundEachTime", {"-k1", "-k2", "-k1"}, bound("k@1(1) k@2(2) k@3(1) ")},
        Parsing{"AttachedValueLeavesTheNextTokenAlone", {"-k5", "6"}, bound("k@1(5) [6]")},
        Parsing{"EmptyAttachedTextIsNone", {"-k=", "5"}, bound("k@1(5) ")},
        Parsing{"EmptyAttachedTextOfALongOptionIsNone", {"--key=", "5"}, bound("k@1(5) ")},
        Parsing{"EqualsSignOnAFlag", {"-v=", "--verbose="}, bound("v@1() v@2() ")},
        Parsing{"FlagTakesNoToken", {"-v", "5"}, bound("v@1() [5]")},
        Parsing{"OnlyOneEqualsSignIsSkipped", {"-t==x"}, bound("t@1(\"=x\") ")},
        Parsing{"LongNameEndsAtTheFirstEqualsSign", {"--text=a=b"}, bound("t@1(\"a=b\") ")},
        Parsing{"NoClusteringOfShortOptions", {"-tv"}, bound("t@1(\"v\") ")},
        Parsing{"AbsentMandatoryOptionIsNotChecked", {"-v"}, bound("v@1() ")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Values, ArgumentTable,
    testing::Values(Parsing{"UnsignedSignAlone", {"-k+"}, bound("k@1(0) ")},
                    Parsing{"UnsignedNegativeWraps", {"-k=-5"}, bound("k@1(4294967291) ")},
                    Parsing{
                        "UnsignedNegativeAttachedDirectly", {"-k-5"}, bound("k@1(4294967291) ")},
                    Parsing{"UnsignedGreatest", {"-k4294967295"}, bound("k@1(4294967295) ")},
                    Parsing{"SignedNegativeAttached", {"-n-12"}, bound("n@1(-12) ")},
                    Parsing{"SignedPlusSign", {"-n", "+7"}, bound("n@1(7) ")},
                    Parsing{"RealWithExponent", {"-f", "1.25e2"}, bound("f@1(125) ")},
                    Parsing{"RealExponentAlone", {"-f", "e3"}, bound("f@1(1000) ")},
                    Parsing{"RealInfinityWord", {"-f", "iguana"}, bound("f@1(inf) ")},
                    Parsing{"RealNotANumber", {"-f", "NaN"}, bound("f@1(nan) ")},
                    Parsing{"RealNegativeAttached", {"-f-0.5"}, bound("f@1(-0.5) ")},
                    Parsing{"BoolYes", {"-b", "yes"}, bound("b@1(true) ")},
                    Parsing{"BoolN", {"-b", "n"}, bound("b@1(false) ")},
                    Parsing{"BoolTrueInAnyCase", {"-bTRUE"}, bound("b@1(true) ")},
                    Parsing{"BoolFalse", {"--bool=False"}, bound("b@1(false) ")},
                    Parsing{"StringIsKept", {"-t", "5x y"}, bound("t@1(\"5x y\") ")},
                    Parsing{"StringMayBeEmptyInATokenOfItsOwn", {"-t", ""}, bound("t@1(\"\") ")},
                    Parsing{"StringBeginningWithADashIsAttached", {"-t-v"}, bound("t@1(\"-v\") ")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Arities, ArgumentTable,
    testing::Values(
        Parsing{"RangeStopsAtAnOption", {"-r", "a", "-v"}, bound("r@1(\"a\") v@3() ")},
        Parsing{
            "RangeTakesNoMoreThanTheMost", {"-r", "a", "b", "c"}, bound("r@1(\"a\" \"b\") [c]")},
        Parsing{"RangeTakesNothing", {"-r"}, bound("r@1() ")},
        Parsing{"RangeCountsTheAttachedValue", {"-ra", "b", "c"}, bound("r@1(\"a\" \"b\") [c]")},
        Parsing{"RangeStopsAtALoneDash", {"-r", "a", "-", "b"}, bound("r@1(\"a\") [-][b]")},
        Parsing{"RangeStopsAtTwoDashes", {"-r", "a", "--"}, {"r@1(\"a\") [--]", "", "Got --\n"}},
        Parsing{"PairTakesTwoTokens", {"-p", "1", "2", "3"}, bound("p@1(1 2) [3]")},
        Parsing{"PairWithTheFirstAttached", {"--pair=-1", "2"}, bound("p@1(-1 2) ")},
        Parsing{"ReversedRangeCannotBeSatisfied",
                {"-R", "a", "b"},
                failed("Not enough arguments for option \"-R\": have 1, need 3.\n")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    FailuresThatGoOn, ArgumentTable,
    testing::Values(
        Parsing{"UnknownShortOption", {"-x"}, failed("Unknown short option: x\n")},
        Parsing{"UnknownShortOptionIsNamedWithItsWholeToken",
                {"-xyz=3"},
                failed("Unknown short option: xyz=3\n")},
        Parsing{"UnknownLongOptionOnStandardOutput",
                {"--extra"},
                {"failed", "Unknown long option: extra\n", ""}},
        Parsing{"UnknownLongOptionIsNamedWithoutItsValue",
                {"--extra=3"},
                {"failed", "Unknown long option: extra\n", ""}},
        Parsing{
            "UnknownLongOptionWithoutAName", {"--=3"}, {"failed", "Unknown long option: \n", ""}},
        Parsing{"ThreeDashes", {"---key"}, {"failed", "Unknown long option: -key\n", ""}},
        Parsing{"LongKeyIsNotAbbreviated", {"--ke"}, {"failed", "Unknown long option: ke\n", ""}},
        Parsing{"LongKeyIsNoShortKey", {"-key"}, failed("Couldn't parse \"ey\".\n")},
        Parsing{"LongOnlyOptionHasNoShortKey", {"-l5"}, failed("Unknown short option: l5\n")},
        Parsing{"EqualsSignAsShortKey", {"-=5"}, failed("Unknown short option: =5\n")},
        Parsing{"EveryUnknownOptionIsReported",
                {"-x", "--extra", "a", "-y", "--more=1"},
                {"failed", "Unknown long option: extra\nUnknown long option: more\n",
                 "Unknown short option: x\nUnknown short option: y\n"}},
        Parsing{"AttachedValueOnAFlag",
                {"-v5", "-x"},
                failed("Option \"-v\" doesn't take parameters.\nUnknown short option: x\n")},
        Parsing{"AttachedValueOnALongFlag",
                {"--verbose=5", "-x"},
                failed("Option \"--verbose\" doesn't take parameters.\nUnknown short option: x\n")},
        Parsing{
            "TwoEqualsSignsOnAFlag", {"-v=="}, failed("Option \"-v\" doesn't take parameters.\n")},
        Parsing{"ClusteredFlags", {"-vv"}, failed("Option \"-v\" doesn't take parameters.\n")},
        Parsing{"ValueMissingAtTheEnd",
                {"-k"},
                failed("Not enough arguments for option \"-k\": have 0, need 1.\n")},
        Parsing{"ValueMissingOfALongOption",
                {"--key=", "-x"},
                failed("Not enough arguments for option \"--key\": have 0, need 1.\n"
                       "Unknown short option: x\n")},
        Parsing{"NegativeNumberInATokenOfItsOwnIsAnOption",
                {"-n", "-7"},
                failed("Not enough arguments for option \"-n\": have 0, need 1.\n"
                       "Unknown short option: 7\n")},
        Parsing{"NegativeNumberThatIsAKnownOption",
                {"-k", "-5"},
                failed("Not enough arguments for option \"-k\": have 0, need 1.\n")},
        Parsing{"SecondValueMissing",
                {"-p1"},
                failed("Not enough arguments for option \"-p\": have 1, need 2.\n")},
        Parsing{"LoneDashIsNoValue",
                {"-t", "-"},
                failed("Not enough arguments for option \"-t\": have 0, need 1.\n")},
        Parsing{"TwoDashesAreNoValue",
                {"-t", "--"},
                failed("Not enough arguments for option \"-t\": have 0, need 1.\nGot --\n")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    FailuresThatStop, ArgumentTable,
    testing::Values(
        Parsing{"TrailingCharacters", {"-k", "5x", "-x"}, failed("Couldn't parse \"5x\".\n")},
        Parsing{"TrailingCharactersAttached", {"-k5x", "-x"}, failed("Couldn't parse \"5x\".\n")},
        Parsing{"TwoEqualsSigns", {"-k==5", "-x"}, failed("Couldn't parse \"=5\".\n")},
        Parsing{"EmptyValue", {"-k", "", "-x"}, failed("Couldn't parse \"\".\n")},
        Parsing{"EmptyTruthValue", {"-b", "", "-x"}, failed("Couldn't parse \"\".\n")},
        Parsing{"LeadingBlank", {"-k", " 5", "-x"}, failed("Couldn't parse \" 5\".\n")},
        Parsing{"Word", {"--number=five", "-x"}, failed("Couldn't parse \"five\".\n")},
        Parsing{
            "UnsignedOverflow", {"-k4294967296", "-x"}, failed("Couldn't parse \"4294967296\".\n")},
        Parsing{
            "SignedOverflow", {"-n2147483648", "-x"}, failed("Couldn't parse \"2147483648\".\n")},
        Parsing{"RealEndingInAPoint", {"-f", "5.", "-x"}, failed("Couldn't parse \"5.\".\n")},
        Parsing{"BoolMaybe", {"-b", "maybe", "-x"}, failed("Couldn't parse \"maybe\".\n")},
        Parsing{"BoolNope", {"-b", "nope", "-x"}, failed("Couldn't parse \"nope\".\n")},
        Parsing{"SecondOfTwoValues", {"-p", "1", "x", "-x"}, failed("Couldn't parse \"x\".\n")},
        Parsing{"AliasWithAttachedValue",
                {"-A5", "-x"},
                failed("Warning: ALIAS shouldn't have arguments.\n")},
        Parsing{"AliasWithSeparateValue",
                {"--alias", "5", "-x"},
                failed("Warning: ALIAS shouldn't have arguments.\n")},
        Parsing{"UnknownDomain", {"-U5", "-x"}, failed("Don't know about domain 17.\n")},
        Parsing{"AfterEarlierFailures",
                {"-x", "-k", "five", "-y"},
                failed("Unknown short option: x\nCouldn't parse \"five\".\n")}),
    nameOf);

TEST(ArgumentParsing, RawTextStandsBesideTheConvertedValue) {
    const Registry registry;
    const char* const argv[] = {"program", "-k=+05", "-f", "0.1"};
    const CmdLine::Result result = registry.parse(4, argv);
    ASSERT_TRUE(result);
    ASSERT_EQ(result.bindings.size(), 2U);
    EXPECT_EQ(result.bindings[0].values[0].raw, "+05");
    EXPECT_EQ(result.bindings[0].values[0].data.ui, 5U);
    EXPECT_EQ(result.bindings[1].values[0].raw, "0.1");
    EXPECT_EQ(result.bindings[1].values[0].data.fl, 0.1F);
}

TEST(ArgumentParsing, SourceIsTheRegisteredOption) {
    const Registry registry;
    const char* const argv[] = {"program", "--key", "5"};
    const CmdLine::Result result = registry.parse(3, argv);
    ASSERT_EQ(result.bindings.size(), 1U);
    EXPECT_EQ(result.bindings[0].source, &registry.forShort('k'));
}

TEST(ArgumentParsing, ValuesAreHeldInMallocMemory) {
    const Registry registry;
    const char* const argv[] = {"program", "-k5"};
    const CmdLine::Result result = registry.parse(2, argv);
    const CmdLine::Value* values = result.bindings[0].values.pointer();
    const auto* buffer = reinterpret_cast<const char*>(values) - sizeof(std::size_t);
    EXPECT_EQ(mem::allocatorOf(buffer), mem::MALLOC);
}

TEST(ArgumentParsing, EmptyArgumentVectorSucceeds) {
    const Registry registry;
    const CmdLine::Result result = registry.parse(0, nullptr);
    EXPECT_TRUE(result);
    EXPECT_EQ(result.bindings.size(), 0U);
}

TEST(ArgumentParsing, RegistryCanParseAgain) {
    const Registry registry;
    const char* const argv[] = {"program", "-k5", "a"};
    for (int n = 0; n < 2; ++n)
        EXPECT_EQ(textOf(registry.parse(3, argv)), "k@1(5) [a]");
}

TEST(ArgumentParsing, AliasAddedWithATargetBindsItself) {
    CmdLine registry;
    Option alias(Domain::ALIAS, "", 0, false);
    alias.setTarget(registry.add('c', Domain::ALIAS, "", 0, false));
    registry.add('n', alias);
    const char* const argv[] = {"program", "-n"};
    const CmdLine::Result result = registry.parse(2, argv);
    ASSERT_EQ(result.bindings.size(), 1U);
    EXPECT_EQ(result.bindings[0].source->shortKey(), 'n');
    EXPECT_EQ(result.bindings[0].source->target(), 1U);
}

}  // namespace
}  // namespace moxtel::cmdline
