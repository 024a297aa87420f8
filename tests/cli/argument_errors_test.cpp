// Arguments that do not parse: message, stream, and whether later arguments are still parsed.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::rejected;

struct Rejection {
    std::vector<std::string> args;
    std::string messages;
};

void expectRejections(const std::vector<Rejection>& rows) {
    for (const auto& [args, messages] : rows)
        expectRun({.args = args, .input = "h\ne0\t1\ta\n"}, rejected(messages));
}

TEST(ArgumentErrors, UnknownShortOptionIsToldWithoutItsDash) {
    expectRejections({
        {{"-x"}, "Unknown short option: x\n"},
        {{"-xyz=3"}, "Unknown short option: xyz=3\n"},
        {{"-S1"}, "Unknown short option: S1\n"},
        {{"-=5"}, "Unknown short option: =5\n"},
        {{"-5"}, "Unknown short option: 5\n"},
        {{"-%s%n"}, "Unknown short option: %s%n\n"},
        {{"-\xFF"}, "Unknown short option: \xFF\n"},
        {{"- "}, "Unknown short option:  \n"},
    });
}

TEST(ArgumentErrors, UnknownLongOptionIsToldOnStandardOutputByItsName) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"--nope", "nope"},   {"--nope=3", "nope"},   {"--nope=", "nope"}, {"--=3", ""},
        {"--=", ""},          {"---", "-"},           {"--c", "c"},        {"--Count=1", "Count"},
        {"--coun=1", "coun"}, {"--counts", "counts"}, {"--%s%n", "%s%n"},  {"---count=1", "-count"},
    };
    for (const auto& [arg, name] : rows)
        expectRun({.args = {arg}}, rejected("", "Unknown long option: " + name + "\n"));
}

TEST(ArgumentErrors, FlagTakesNoAttachedValue) {
    expectRejections({
        {{"-v=x"}, "Option \"-v\" doesn't take parameters.\n"},
        {{"-vx"}, "Option \"-v\" doesn't take parameters.\n"},
        {{"-v?"}, "Option \"-v\" doesn't take parameters.\n"},
        {{"-v=="}, "Option \"-v\" doesn't take parameters.\n"},
        {{"--verbose=1"}, "Option \"--verbose\" doesn't take parameters.\n"},
        {{"-?=x"}, "Option \"-?\" doesn't take parameters.\n"},
        {{"-?c"}, "Option \"-?\" doesn't take parameters.\n"},
        {{"--help=me"}, "Option \"--help\" doesn't take parameters.\n"},
    });
}

TEST(ArgumentErrors, ValueIsMissingAtTheEnd) {
    for (const char* form : {"-c", "-C", "-l", "-o", "-s", "-V", "-w", "--count", "--confidence",
                             "--lift", "--order", "--support", "--conviction", "--window"}) {
        const std::string option = form;
        const std::string message =
            "Not enough arguments for option \"" + option + "\": have 0, need 1.\n";
        expectRejections({{{option}, message}, {{option + "="}, message}});
    }
}

TEST(ArgumentErrors, ValueIsMissingBeforeAnArgumentThatBeginsWithAHyphen) {
    expectRejections({
        {{"-c", "-5"},
         "Not enough arguments for option \"-c\": have 0, need 1.\nUnknown short option: 5\n"},
        {{"--count", "-"}, "Not enough arguments for option \"--count\": have 0, need 1.\n"},
        {{"-s", "--"}, "Not enough arguments for option \"-s\": have 0, need 1.\nGot --\n"},
        {{"-l=", "-v"}, "Not enough arguments for option \"-l\": have 0, need 1.\n"},
        {{"-V", "-inf"},
         "Not enough arguments for option \"-V\": have 0, need 1.\nUnknown short option: inf\n"},
    });
}

TEST(ArgumentErrors, ValueThatDoesNotConvertIsToldWhole) {
    expectRejections({
        {{"-c", "5x"}, "Couldn't parse \"5x\".\n"},
        {{"-c5x"}, "Couldn't parse \"5x\".\n"},
        {{"--count=5x"}, "Couldn't parse \"5x\".\n"},
        {{"-c", ""}, "Couldn't parse \"\".\n"},
        {{"-c==5"}, "Couldn't parse \"=5\".\n"},
        {{"--count==5"}, "Couldn't parse \"=5\".\n"},
        {{"-c", "=5"}, "Couldn't parse \"=5\".\n"},
        {{"-c=", "=5"}, "Couldn't parse \"=5\".\n"},
        {{"-c", "%s%n"}, "Couldn't parse \"%s%n\".\n"},
        {{"-w", "in.txt"}, "Couldn't parse \"in.txt\".\n"},
        {{"-o", "1.5"}, "Couldn't parse \"1.5\".\n"},
        {{"-s", "0,5"}, "Couldn't parse \"0,5\".\n"},
        {{"-c", "two\nlines"}, "Couldn't parse \"two\nlines\".\n"},
    });
}

TEST(ArgumentErrors, NothingIsLookedAtAfterAValueThatDoesNotConvert) {
    expectRejections({
        {{"-c", "5x", "-y", "--nope", "--", "-s"}, "Couldn't parse \"5x\".\n"},
        {{"-y", "-c5x", "-z"}, "Unknown short option: y\nCouldn't parse \"5x\".\n"},
        {{"-sx", "-?"}, "Couldn't parse \"x\".\n"},
    });
}

TEST(ArgumentErrors, EveryOtherErrorLetsTheParseGoOn) {
    expectRun(
        {.args = {"-x", "--one", "-v=1", "--", "-s", "--two=2", "-c", "9", "-y", "file", "-l"}},
        rejected("Unknown short option: x\n"
                 "Option \"-v\" doesn't take parameters.\n"
                 "Got --\n"
                 "Not enough arguments for option \"-s\": have 0, need 1.\n"
                 "Unknown short option: y\n"
                 "Not enough arguments for option \"-l\": have 0, need 1.\n",
                 "Unknown long option: one\n"
                 "Unknown long option: two\n"));
}

TEST(ArgumentErrors, NothingIsReadOrWritten) {
    const tool::Files before = {{"in", "h\ne0\t1\ta\n"}, {"out", "old\n"}};
    tool::Outcome expected = rejected("Unknown short option: x\n");
    expected.files = before;
    expectRun({.args = {"-c1", "in", "out", "sets", "-x"}, .files = before}, expected);
}

}  // namespace
