#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "driver.hpp"
#include "input.hpp"
#include "options.hpp"
#include "oracle/mine.hpp"
#include "oracle/outcome.hpp"
#include "oracle/table.hpp"
#include "oracle/transaction_file.hpp"
#include "plain_values.hpp"
#include "require.hpp"
#include "support/conversion.hpp"
#include "support/error_output.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using oracle::Table;

// Larger cases are merely expensive.
constexpr std::size_t MOST_OPTIONS = 5;
constexpr std::size_t MOST_ROWS = 10;
constexpr std::size_t HISTORIES = 4;
constexpr std::uint32_t MOST_ORDER = 9;

const std::array<std::string, 4> ITEMS = {"a", "aa", "ab", "b c"};

struct OptionName {
    char shortKey;
    const char* longKey;
    bool isReal;
};
constexpr OptionName NAMES[] = {{'c', "count", false},     {'o', "order", false},
                                {'w', "window", false},    {'s', "support", true},
                                {'C', "confidence", true}, {'l', "lift", true},
                                {'V', "conviction", true}};

/// A text that looks like a number, or "1".
std::string valueOf(Input& input, bool isReal) {
    static const std::string CHARACTERS = "0123456789123.-+eEinfaNI";
    std::string text = input.text(7);
    for (char& c : text)
        c = CHARACTERS[static_cast<unsigned char>(c) % CHARACTERS.size()];
    const std::size_t used =
        isReal ? plainParse<float>(text).used : plainParse<std::uint32_t>(text).used;
    return text.empty() || used != text.size() ? "1" : text;
}

void set(Configuration& config, char key, const std::string& value) {
    const auto real = [&value] { return double{plainParse<float>(value).value}; };
    const auto whole = [&value] { return plainParse<std::uint32_t>(value).value; };
    switch (key) {
        case 'c':
            config.minCount = whole();
            break;
        case 'o':
            config.maxOrder = whole();
            break;
        case 'w':
            config.windowSize = whole();
            break;
        case 's':
            config.minSupport = real();
            break;
        case 'C':
            config.minConfidence = real();
            break;
        case 'l':
            config.minLift = real();
            break;
        default:
            config.maxConviction = real();
    }
}

/// The arguments of a run, and the settings that they stand for.
struct Arguments {
    std::vector<std::string> words = {"quarvis-rules"};
    Configuration config;

    explicit Arguments(Input& input) {
        config.inputFile = config.outputFile = "-";
        const std::size_t names = input.byte() % 5;
        config.itemSetFile = names >= 3 ? "-" : "";
        const std::size_t options = input.byte() % (MOST_OPTIONS + 1);
        for (std::size_t i = 0; i < options; ++i)
            m_addOption(input);
        // File names may stand anywhere. Names after the third one are ignored.
        words.insert(input.byte() % 2 == 0 ? words.begin() + 1 : words.end(), names, "-");
        if (config.maxConviction < 0)
            config.maxConviction = std::numeric_limits<double>::infinity();
    }

  private:
    void m_addOption(Input& input) {
        const std::uint8_t code = input.byte();
        const OptionName& name = NAMES[code % std::size(NAMES)];
        const std::string value = valueOf(input, name.isReal);
        const std::string shortName = std::string("-") + name.shortKey;
        const std::string longName = std::string("--") + name.longKey;
        set(config, name.shortKey, value);
        // A value that begins with a hyphen must be attached.
        const std::size_t form = code / std::size(NAMES) % (value[0] == '-' ? 3 : 5);
        if (form == 0)
            words.push_back(shortName + value);
        else if (form == 1)
            words.push_back(shortName + '=' + value);
        else if (form == 2)
            words.push_back(longName + '=' + value);
        else
            words.insert(words.end(), {form == 3 ? shortName : longName, value});
    }
};

void requireSame(const Configuration& got, const Configuration& expected) {
    const auto require = [](const char* what, double value, double other) {
        requireEqual(what, std::bit_cast<std::uint64_t>(value),
                     std::bit_cast<std::uint64_t>(other));
    };
    requireEqual("the count", got.minCount, expected.minCount);
    requireEqual("the order", got.maxOrder, expected.maxOrder);
    requireEqual("the window", got.windowSize, expected.windowSize);
    require("the support", got.minSupport, expected.minSupport);
    require("the confidence", got.minConfidence, expected.minConfidence);
    require("the lift", got.minLift, expected.minLift);
    require("the conviction", got.maxConviction, expected.maxConviction);
    requireEqual("the input", got.inputFile, expected.inputFile);
    requireEqual("the output", got.outputFile, expected.outputFile);
    requireEqual("the item sets", got.itemSetFile, expected.itemSetFile);
}

Configuration configured(const std::vector<std::string>& words) {
    std::vector<std::string> copies = words;
    std::vector<char*> argv;
    for (std::string& word : copies)
        argv.push_back(word.data());
    return configure(static_cast<int>(argv.size()), argv.data());
}

/// Decodes two bytes per row: a history and a bit for each item, then the time. Times go up to the
/// greatest ones.
Table tableOf(Input& input) {
    const std::uint32_t unit = input.byte() % 2 == 0 ? 1 : 0x01010101;
    Table table;
    table.histories.resize(HISTORIES);
    for (std::size_t row = 0; row < MOST_ROWS && !input.empty(); ++row) {
        const unsigned code = input.byte();
        auto& items = table.histories[code % HISTORIES][input.byte() * unit];
        for (std::size_t item = 0; item < ITEMS.size(); ++item)
            if ((code >> (4 + item)) % 2 != 0)
                items.insert(ITEMS[item]);
    }
    std::erase_if(table.histories, [](const auto& history) { return history.empty(); });
    return table;
}

/// Makes a standard stream use another buffer during this object's lifetime.
class Redirected {
  public:
    Redirected(std::ios& stream, std::streambuf* buffer)
        : m_stream(stream), m_previous(stream.rdbuf(buffer)) {}
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;
    ~Redirected() { m_stream.rdbuf(m_previous); }

  private:
    std::ios& m_stream;
    std::streambuf* m_previous;
};

void requireRun(Configuration config, const Table& table) {
    const oracle::Outcome expected = oracle::mine(support::settingsOf(config), table);
    std::size_t transactions = 0;
    for (const oracle::History& history : table.histories)
        transactions += history.size();
    const std::string number = std::to_string(expected.rules.size());
    const std::string messages = "Read - with " + std::to_string(transactions) +
                                 " transaction(s) over " + std::to_string(table.histories.size()) +
                                 " history record(s).\n" + expected.messages + number + '\n' +
                                 config.itemSetFile + '\n';
    std::istringstream in(oracle::textOf(table));
    std::ostringstream out;
    const support::ErrorOutput err;
    {
        const Redirected fromText(std::cin, in.rdbuf());
        const Redirected toText(std::cout, out.rdbuf());
        mine(config);
    }
    requireEqual("the messages", err.text(), messages);
    requireEqual("the files", out.str(),
                 expected.rulesFile() + (config.itemSetFile.empty() ? "" : expected.itemSetFile()));
}

}  // namespace

void fuzzToolRun(Bytes bytes) {
    Input input(bytes);
    const Arguments arguments(input);
    const Configuration config = configured(arguments.words);
    requireSame(config, arguments.config);
    // There is a message for each order up to the greatest, so that one must be small.
    if (config.maxOrder <= MOST_ORDER)
        requireRun(config, tableOf(input));
}

}  // namespace fuzz
