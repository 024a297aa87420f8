#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "input.hpp"
#include "oracle/mine.hpp"
#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"
#include "support/conversion.hpp"
#include "support/engine.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using oracle::History;
using oracle::Outcome;
using oracle::Settings;
using oracle::Table;

// Larger tables are merely expensive: each item triples the number of rules, and the plain miner
// tests each rule in every history of its items. These numbers of histories and of transactions of
// one history fill more than one word of the engine's bitmaps. Orders beyond the number of items
// only add messages.
constexpr std::size_t MOST_ROWS = 12;
constexpr std::size_t MOST_TRANSACTIONS = 70;
constexpr std::size_t MOST_HISTORIES = 66;
constexpr std::size_t ITEMS = 5;
constexpr std::uint32_t MOST_ORDER = 9;

/// Plain names, names that are prefixes of each other, and odd names.
const std::string NAMES[][ITEMS] = {
    {"item0", "item1", "item2", "item3", "item4"},
    {"a", "aa", "aaa", "ab", "b"},
    {"", "a,b", " => ", std::string("\0", 1), "\xff"},
};

/// Multiples of an eighth, and special values.
double thresholdOf(std::uint8_t code) {
    switch (code) {
        case 255:
            return std::numeric_limits<double>::quiet_NaN();
        case 254:
            return std::numeric_limits<double>::infinity();
        default:
            return (code - 8) / 8.0;
    }
}

/// Small numbers, and some of the greatest.
std::uint32_t numberOf(std::uint8_t code) {
    return code < 240 ? code : std::numeric_limits<std::uint32_t>::max() - (255U - code);
}

Settings settingsOf(Input& input) {
    Settings settings;
    settings.minCount = numberOf(input.byte());
    settings.maxOrder = input.byte() % (MOST_ORDER + 1);
    settings.windowSize = numberOf(input.byte());
    settings.minSupport = thresholdOf(input.byte());
    settings.minConfidence = thresholdOf(input.byte());
    settings.minLift = thresholdOf(input.byte());
    settings.maxConviction = thresholdOf(input.byte());
    return settings;
}

/// The result of the engine alone, without messages. The rule model costs as much as the engine, so
/// it is left out.
Outcome minedByEngine(const Settings& settings, const Table& table) {
    const quarvis::mining::HistoryIndex index = support::indexOf(table, settings.minCount);
    quarvis::mining::Observer observer;
    return support::outcomeOf(index, mine(index, support::optionsOf(settings), observer));
}

/// Decodes three bytes per row: the history, the time, and a bit for each item. The two highest
/// bits tell how many successive histories have the row or, if the bit below them is set, at how
/// many successive times the history has it.
Table tableOf(Input& input, std::uint8_t kind) {
    const std::string* const names = NAMES[kind % std::size(NAMES)];
    const std::uint32_t timeUnit = kind < 128 ? 1 : 0x01010101;

    std::vector<History> histories(MOST_HISTORIES);
    std::size_t transactions = 0;
    for (std::size_t row = 0; row < MOST_ROWS && !input.empty(); ++row) {
        const std::size_t first = input.byte() % MOST_HISTORIES;
        const std::uint32_t time = input.byte();
        const unsigned bits = input.byte();
        const bool overTimes = (bits >> ITEMS) % 2 != 0;
        const std::uint32_t number = std::uint32_t{1} << (bits >> 6) * 2;
        for (std::uint32_t i = 0; i < number && transactions < MOST_TRANSACTIONS; ++i) {
            ++transactions;
            History& history = histories[(first + (overTimes ? 0 : i)) % MOST_HISTORIES];
            auto& items = history[(time + (overTimes ? i : 0)) % 256 * timeUnit];
            for (std::size_t item = 0; item < ITEMS; ++item)
                if ((bits >> item) % 2 != 0)
                    items.insert(names[item]);
        }
    }
    std::erase_if(histories, [](const History& history) { return history.empty(); });
    return {std::move(histories)};
}

}  // namespace

void fuzzWholeRun(Bytes bytes) {
    Input input(bytes);
    const Settings settings = settingsOf(input);
    const std::uint8_t kind = input.byte();
    const bool isWhole = kind / std::size(NAMES) % 16 == 0;
    const Table table = tableOf(input, kind);
    Outcome expected = oracle::mine(settings, table);
    if (!isWhole)
        expected.messages.clear();
    const Outcome mined =
        isWhole ? support::mined(settings, table) : minedByEngine(settings, table);
    if (mined == expected)
        return;
    std::ostringstream message;
    message << "the mining of\n" << table << "gives\n" << mined << "instead of\n" << expected;
    throw Failure(message.str());
}

}  // namespace fuzz
