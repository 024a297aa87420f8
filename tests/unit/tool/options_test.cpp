#include "options.hpp"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Eq;
using testing::ExitedWithCode;

constexpr double INF = std::numeric_limits<double>::infinity();

/// The argument vector of a program called "tool", ended by a null pointer.
class Arguments {
  public:
    explicit Arguments(std::vector<std::string> args) : m_texts(std::move(args)) {
        m_texts.insert(m_texts.begin(), "tool");
        for (std::string& text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
    }

    int count() const { return static_cast<int>(m_texts.size()); }
    char** vector() { return m_pointers.data(); }

  private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

Configuration configured(std::vector<std::string> args) {
    Arguments arguments(std::move(args));
    return configure(arguments.count(), arguments.vector());
}

std::string usageOf(const std::string& program) {
    return "usage: " + program +
           " [input] [output] [item-sets]\n"
           "\n"
           "OPTIONS:\n"
           "  -?, --help\t\tDisplay this message.\n"
           "  -c, --count=i\t\tSet the minimum count necessary for inclusion (default: 5).\n"
           "  -C, --confidence=f\tSet the minimum confidence necessary for inclusion (default: "
           "0).\n"
           "  -l, --lift=f\t\tSet the minimum lift necessary for inclusion (default: 0).\n"
           "  -o, --order=i\t\tSet the maximum rule order to mine (default: 0).\n"
           "  -s, --support=f\tSet the minimum support necessary for inclusion (default: 0).\n"
           "  -V, --conviction=f\tSet the maximum conviction neccessary for inclusion (default: "
           "infinity).\n"
           "  -v, --verbose\t\tPrint additional information.\n"
           "  -w, --window\t\tSet the size of the window (default: 0)\n"
           "\n";
}

TEST(Configure, NoArguments) {
    const Configuration config = configured({});
    EXPECT_EQ("-", config.inputFile);
    EXPECT_EQ("-", config.outputFile);
    EXPECT_EQ("", config.itemSetFile);
    EXPECT_EQ(5U, config.minCount);
    EXPECT_EQ(0.0, config.minSupport);
    EXPECT_EQ(0.0, config.minConfidence);
    EXPECT_EQ(0.0, config.minLift);
    EXPECT_EQ(INF, config.maxConviction);
    EXPECT_EQ(0U, config.maxOrder);
    EXPECT_EQ(0U, config.windowSize);
    EXPECT_FALSE(config.verbose);
}

TEST(Configure, WholeNumbers) {
    struct Row {
        const char* shortKey;
        const char* longKey;
        std::uint32_t Configuration::*field;
    };
    const Row rows[] = {
        {"-c", "--count", &Configuration::minCount},
        {"-o", "--order", &Configuration::maxOrder},
        {"-w", "--window", &Configuration::windowSize},
    };
    const std::pair<const char*, std::uint32_t> values[] = {
        {"7", 7}, {"0", 0}, {"+3", 3}, {"4294967295", 4294967295}};
    for (const Row& row : rows) {
        const std::string shortKey = row.shortKey;
        const std::string longKey = row.longKey;
        for (const auto& [text, value] : values) {
            EXPECT_EQ(value, configured({shortKey, text}).*row.field) << shortKey << ' ' << text;
            EXPECT_EQ(value, configured({shortKey + text}).*row.field) << shortKey << text;
            EXPECT_EQ(value, configured({shortKey + '=' + text}).*row.field);
            EXPECT_EQ(value, configured({longKey, text}).*row.field) << longKey << ' ' << text;
            EXPECT_EQ(value, configured({longKey + '=' + text}).*row.field);
        }
        EXPECT_EQ(4294967295U, configured({shortKey + "-1"}).*row.field) << shortKey << "-1";
    }
}

TEST(Configure, RealNumbers) {
    struct Row {
        const char* shortKey;
        const char* longKey;
        double Configuration::*field;
    };
    const Row rows[] = {
        {"-C", "--confidence", &Configuration::minConfidence},
        {"-l", "--lift", &Configuration::minLift},
        {"-s", "--support", &Configuration::minSupport},
        {"-V", "--conviction", &Configuration::maxConviction},
    };
    const std::pair<const char*, double> values[] = {{"0.5", 0.5},
                                                     {"0", 0.0},
                                                     {"1.25e2", 125.0},
                                                     {"inf", INF},
                                                     {"0.1", static_cast<double>(0.1F)}};
    for (const Row& row : rows) {
        const std::string shortKey = row.shortKey;
        const std::string longKey = row.longKey;
        for (const auto& [text, value] : values) {
            EXPECT_EQ(value, configured({shortKey, text}).*row.field) << shortKey << ' ' << text;
            EXPECT_EQ(value, configured({shortKey + text}).*row.field) << shortKey << text;
            EXPECT_EQ(value, configured({longKey + '=' + text}).*row.field) << longKey << text;
        }
        EXPECT_TRUE(std::isnan(configured({shortKey, "nan"}).*row.field)) << shortKey;
    }
}

TEST(Configure, ASupportOfATenthIsThatOfSinglePrecision) {
    EXPECT_EQ(0.100000001490116119384765625, configured({"-s0.1"}).minSupport);
}

TEST(Configure, NegativeThresholdsAreAccepted) {
    EXPECT_EQ(-2.0, configured({"-C-2"}).minConfidence);
    EXPECT_EQ(-0.5, configured({"-l=-0.5"}).minLift);
    EXPECT_EQ(-INF, configured({"--support=-inf"}).minSupport);
}

TEST(Configure, ANegativeConvictionIsInfinite) {
    EXPECT_EQ(INF, configured({"-V-3"}).maxConviction);
    EXPECT_EQ(INF, configured({"-V-1"}).maxConviction);
    EXPECT_EQ(INF, configured({"-V-0.001"}).maxConviction);
}

TEST(Configure, AConvictionOfZeroIsZero) {
    EXPECT_EQ(0.0, configured({"-V0"}).maxConviction);
    EXPECT_EQ(0.0, configured({"-V-0"}).maxConviction);
}

TEST(Configure, VerboseIsAcceptedAndChangesNothing) {
    EXPECT_FALSE(configured({"-v"}).verbose);
    EXPECT_FALSE(configured({"--verbose"}).verbose);
    EXPECT_EQ("in", configured({"-v", "in"}).inputFile);
}

TEST(Configure, TheLastOfRepeatedOptionsCounts) {
    const Configuration config = configured({"-c3", "-s0.25", "--count=9", "-c", "4"});
    EXPECT_EQ(4U, config.minCount);
    EXPECT_EQ(0.25, config.minSupport);
}

TEST(Configure, PositionalArgumentsNameTheFiles) {
    struct Row {
        std::vector<std::string> args;
        const char* input;
        const char* output;
        const char* itemSets;
    };
    const Row rows[] = {
        {{"in"}, "in", "-", ""},
        {{"in", "out"}, "in", "out", ""},
        {{"in", "out", "sets"}, "in", "out", "sets"},
        {{"in", "out", "sets", "more"}, "in", "out", "sets"},
        {{"-", "-", "-"}, "-", "-", "-"},
        {{"in", "", "sets"}, "in", "", "sets"},
        {{"in", "-c", "3", "out"}, "in", "out", ""},
    };
    for (const Row& row : rows) {
        const Configuration config = configured(row.args);
        EXPECT_EQ(row.input, config.inputFile);
        EXPECT_EQ(row.output, config.outputFile);
        EXPECT_EQ(row.itemSets, config.itemSetFile);
    }
}

TEST(ConfigureDeathTest, HelpEndsWithSuccess) {
    EXPECT_EXIT(configured({"--help"}), ExitedWithCode(0), Eq(usageOf("tool")));
    EXPECT_EXIT(configured({"--help", "-c", "3"}), ExitedWithCode(0), Eq(usageOf("tool")));
    EXPECT_EXIT(configured({"-?"}), ExitedWithCode(0), Eq(usageOf("tool")));
}

TEST(ConfigureDeathTest, HelpWinsOverValidArguments) {
    EXPECT_EXIT(configured({"-c3", "in", "-?", "out"}), ExitedWithCode(0), Eq(usageOf("tool")));
}

TEST(ConfigureDeathTest, HelpWithABadOptionFails) {
    EXPECT_EXIT(configured({"--help", "-x"}), ExitedWithCode(1),
                Eq("Unknown short option: x\n" + usageOf("tool")));
    EXPECT_EXIT(configured({"-x", "--help"}), ExitedWithCode(1),
                Eq("Unknown short option: x\n" + usageOf("tool")));
}

TEST(ConfigureDeathTest, ArgumentsThatDoNotParseFail) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"-x"}, "Unknown short option: x\n"},
        {{"-x", "-yz"}, "Unknown short option: x\nUnknown short option: yz\n"},
        {{"-c"}, "Not enough arguments for option \"-c\": have 0, need 1.\n"},
        {{"--window"}, "Not enough arguments for option \"--window\": have 0, need 1.\n"},
        {{"-c", "5x"}, "Couldn't parse \"5x\".\n"},
        {{"-s", "half", "-x"}, "Couldn't parse \"half\".\n"},
        {{"-c", "-3"},
         "Not enough arguments for option \"-c\": have 0, need 1.\n"
         "Unknown short option: 3\n"},
        {{"-v=1"}, "Option \"-v\" doesn't take parameters.\n"},
        {{"--help=1"}, "Option \"--help\" doesn't take parameters.\n"},
    };
    for (const auto& [args, message] : rows)
        EXPECT_EXIT(configured(args), ExitedWithCode(1), Eq(message + usageOf("tool")))
            << args.front();
}

TEST(ConfigureDeathTest, AnUnknownLongOptionIsNotReportedOnStandardError) {
    EXPECT_EXIT(configured({"--nothing"}), ExitedWithCode(1), Eq(usageOf("tool")));
}

TEST(UsageDeathTest, NamesTheProgramAsItWasCalled) {
    std::string name = "/some/where/%s else";
    char* argv[] = {name.data(), nullptr};
    EXPECT_EXIT(usage(0, 1, argv), ExitedWithCode(0), Eq(usageOf(name)));
}

TEST(UsageDeathTest, EndsWithTheStatusGiven) {
    Arguments arguments({});
    for (const int status : {0, 1, 3})
        EXPECT_EXIT(usage(status, arguments.count(), arguments.vector()), ExitedWithCode(status),
                    Eq(usageOf("tool")));
}

}  // namespace
