#include "oracle/random_table.hpp"

#include <algorithm>
#include <limits>
#include <set>

#include "oracle/draws.hpp"

namespace oracle {

namespace {

using namespace std::string_literals;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
/// The greatest time that a transaction file may have.
constexpr Time LARGEST = std::numeric_limits<std::uint32_t>::max();

std::vector<std::string> plainNames(std::size_t number) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < number; ++i)
        names.push_back("item" + std::to_string(i));
    return names;
}

void drawThresholds(Settings& settings, std::size_t histories, Draws& draws) {
    const double share =
        static_cast<double>(draws.upTo(histories)) / static_cast<double>(histories);
    settings.minSupport = draws.oneOf({0.0, 0.0, share, 1.0});
    settings.minConfidence = draws.oneOf({0.0, 0.0, share, 0.5, 1.0});
    settings.minLift = draws.oneOf({0.0, 0.0, -1.0, 0.5, 1.0, 1.5});
    settings.maxConviction = draws.oneOf({INFINITE, INFINITE, 0.5, 1.0, 2.0, 1e300});
    if (draws.upTo(15) == 0)
        settings.*draws.oneOf({&Settings::minSupport, &Settings::minConfidence, &Settings::minLift,
                               &Settings::maxConviction}) = NOT_A_NUMBER;
}

Settings randomSettings(const TableShape& shape, std::size_t histories, std::uint64_t seed) {
    Draws draws(seed);
    Settings settings;
    const auto anyCount = static_cast<std::uint32_t>(draws.upTo(5));
    settings.minCount = std::max(shape.leastMinCount, draws.oneOf({1U, 1U, 2U, anyCount}));
    const auto anyOrder = static_cast<std::uint32_t>(draws.upTo(8));
    settings.maxOrder = draws.oneOf({0U, anyOrder});
    const Time anyWindow = draws.upTo(shape.lastTime);
    settings.windowSize =
        draws.oneOf({Time{0}, Time{0}, Time{1}, Time{2}, Time{4}, anyWindow, anyWindow, LARGEST});
    if (draws.upTo(1) == 0)
        drawThresholds(settings, histories, draws);
    return settings;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const TableShape& shape) {
    return os << shape.name;
}

const std::vector<TableShape>& tableShapes() {
    // Histories, transactions, items of a transaction, last time.
    static const std::vector<TableShape> SHAPES = {
        {"Small", plainNames(4), 4, 3, 3, 6},
        {"Wide", plainNames(14), 8, 3, 3, 12, 1},
        {"Deep", plainNames(6), 3, 40, 2, 100},
        {"Dense", plainNames(7), 6, 4, 12, 8},
        {"Sparse", plainNames(8), 12, 6, 1, 30},
        {"RepeatedTimes", plainNames(5), 6, 12, 2, 3},
        {"OneHistory", plainNames(8), 1, 8, 3, 20},
        {"ManyHistories", plainNames(3), 60, 3, 2, 5},
        {"WholeRangeOfTimes", plainNames(5), 5, 6, 2, LARGEST},
        {"Prefixes", {"a", "aa", "aaa", "aab", "ab", "b", "ba"}, 6, 5, 3, 10},
        {"OddNames",
         {"", " ", "{}", ",", "a,b", " => ", "\0"s, "\t", "\x7f", "\x80", "\xc3\xa9", "\xff"},
         6,
         4,
         2,
         10,
         1},
    };
    return SHAPES;
}

Table randomTable(const TableShape& shape, std::uint64_t seed) {
    Draws draws(seed);
    Table table;
    table.histories.resize(1 + draws.upTo(shape.histories - 1));
    for (History& history : table.histories) {
        const std::size_t transactions = 1 + draws.upTo(shape.transactions - 1);
        for (std::size_t t = 0; t < transactions; ++t) {
            const Time time = draws.upTo(shape.lastTime);
            std::set<std::string> items;
            const std::size_t number = draws.upTo(shape.itemsOfTransaction);
            for (std::size_t i = 0; i < number; ++i)
                items.insert(shape.items[draws.upTo(shape.items.size() - 1)]);
            history[time] = items;
        }
    }
    return table;
}

RandomCase randomCase(std::uint64_t seed) {
    const TableShape& shape = tableShapes()[seed % tableShapes().size()];
    RandomCase result;
    result.shape = shape.name;
    result.table = randomTable(shape, seed);
    result.settings = randomSettings(shape, result.table.histories.size(), ~seed);
    return result;
}

}  // namespace oracle
