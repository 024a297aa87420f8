#include <string>

#include <gtest/gtest.h>

#include "cli/support/expected_run.hpp"

namespace {

using tool::expectRun;
using tool::rejected;
using tool::usage;

TEST(Usage, WholeText) {
    expectRun({.args = {"--help"}},
              {.err = "usage: quarvis-rules [input] [output] [item-sets]\n"
                      "\n"
                      "OPTIONS:\n"
                      "  -?, --help\t\tDisplay this message.\n"
                      "  -c, --count=i\t\tSet the minimum count necessary for inclusion (default: "
                      "5).\n"
                      "  -C, --confidence=f\tSet the minimum confidence necessary for inclusion "
                      "(default: 0).\n"
                      "  -l, --lift=f\t\tSet the minimum lift necessary for inclusion (default: "
                      "0).\n"
                      "  -o, --order=i\t\tSet the maximum rule order to mine (default: 0).\n"
                      "  -s, --support=f\tSet the minimum support necessary for inclusion "
                      "(default: 0).\n"
                      "  -V, --conviction=f\tSet the maximum conviction neccessary for inclusion "
                      "(default: infinity).\n"
                      "  -v, --verbose\t\tPrint additional information.\n"
                      "  -w, --window\t\tSet the size of the window (default: 0)\n"
                      "\n"});
}

TEST(Usage, EveryFormOfHelpEndsWithStatusZero) {
    for (const char* form : {"-?", "-?=", "--help", "--help="})
        expectRun({.args = {form}}, {.err = usage()});
    expectRun({.args = {"-?", "--help", "-?"}}, {.err = usage()});
}

TEST(Usage, HelpWinsOverValidArguments) {
    const std::string table = "h\ne0\t1\ta\n";
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"-?", "-c", "1", "in", "out", "sets"},
          {"-c", "1", "in", "out", "sets", "-?"},
          {"in", "--help", "out", "-V", "nan", "sets"}})
        expectRun({.args = args, .files = {{"in", table}}},
                  {.err = usage(), .files = {{"in", table}}});
}

TEST(Usage, HelpWithABadOptionEndsWithStatusOne) {
    expectRun({.args = {"--help", "--nope"}}, rejected("", "Unknown long option: nope\n"));
    expectRun({.args = {"-x", "-?"}}, rejected("Unknown short option: x\n"));
    expectRun({.args = {"-?", "-c", "five"}}, rejected("Couldn't parse \"five\".\n"));
    expectRun({.args = {"--help=me"}}, rejected("Option \"--help\" doesn't take parameters.\n"));
}

TEST(Usage, MessagesOfTheParserComeFirst) {
    expectRun({.args = {"--", "--help"}}, {.err = "Got --\n" + usage()});
}

TEST(Usage, TellsTheNameUnderWhichTheProgramWasCalled) {
    for (const char* name : {"qr", "./bin/quarvis-rules", "/opt/a b/quarvis-rules", "%s%n%d", "",
                             "-?", "two\nlines", "\xC3\xA9"})
        expectRun({.args = {"-?"}, .name = name}, {.err = usage(name)});
}

}  // namespace
