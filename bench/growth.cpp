/// Measures how the time of mining grows with the histories, the items and the least count, on
/// generated tables.

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "engine/bare_pairs.hpp"
#include "engine/phases.hpp"
#include "support/check.hpp"
#include "support/program.hpp"
#include "support/quest.hpp"
#include "support/table.hpp"
#include "support/temp_file.hpp"

namespace {

using bench::Arguments;
using bench::PhaseTimes;
using bench::QuestShape;
using bench::QuestTable;
using bench::Table;
using bench::TempFile;

constexpr std::uint64_t SEED = 19940912;

/// A point of a curve, and what is found there.
struct Point {
    std::size_t at;
    std::size_t itemSets;
    std::size_t rules;
};

TempFile fileOf(const QuestTable& table, std::size_t histories) {
    return TempFile([&](std::ostream& os) { os << table.file(histories); });
}

/// The same histories `copies` times over, each time with other entities.
TempFile copiesOf(const QuestTable& table, std::size_t histories, std::size_t copies) {
    return TempFile([&](std::ostream& os) {
        std::string text(table.file(histories));
        const std::size_t header = text.find('\n') + 1;
        os << text.substr(0, header);
        text.erase(0, header);
        for (std::size_t copy = 0; copy < copies; ++copy) {
            for (std::size_t row = 0; row < text.size(); row = text.find('\n', row) + 1)
                text[row] = static_cast<char>('0' + copy);
            os << text;
        }
    });
}

Configuration atCount(std::size_t minCount) {
    Configuration config;
    config.minCount = static_cast<std::uint32_t>(minCount);
    return config;
}

/// A table of measurements along one quantity, with the microseconds a history and the growth since
/// the last row. Both are without the writing, which depends only on what is found.
class Curve {
  public:
    Curve(const std::string& quantity, std::size_t runs)
        : m_table("Growth with " + quantity + ": processor time, ms, medians of " +
                      std::to_string(runs) + " runs",
                  {quantity, "histories", "-c", "items", "item sets", "rules", "reading", "index",
                   "item sets, ms", "rules, ms", "writing", "total", "least..greatest",
                   "us/history", "growth"}),
          m_runs(runs) {}

    void measure(const std::string& label, const TempFile& file, std::size_t histories,
                 std::size_t minCount, const Point& expected) {
        using bench::grouped;
        using bench::milliseconds;
        const PhaseTimes times = bench::repeatedPhases(m_runs, atCount(minCount), file.path());
        const bench::Phases& found = times.last;
        bench::checkCount("histories at " + label, found.histories, histories);
        bench::checkCount("item sets at " + label, found.setCount, expected.itemSets);
        bench::checkCount("rules at " + label, found.ruleCount, expected.rules);
        const double total = times.total.cpu.median();
        const double writing = times.writing.median();
        m_table.row({label, grouped(histories), grouped(minCount), grouped(found.items),
                     grouped(found.setCount), grouped(found.ruleCount),
                     milliseconds(times.reading.median()), milliseconds(times.index.median()),
                     milliseconds(times.itemSets.median()),
                     milliseconds(times.counting.median() + times.selection.median()),
                     milliseconds(writing), milliseconds(total),
                     bench::millisecondRange(times.total.cpu),
                     bench::fixed((total - writing) / static_cast<double>(histories) * 1e6, 2),
                     m_last == 0 ? "" : bench::fixed((total - writing) / m_last, 2)});
        m_last = total - writing;
    }

  private:
    Table m_table;
    std::size_t m_runs;
    double m_last = 0;
};

constexpr std::size_t BASE = 4000;  // histories

void growHistories(const QuestTable& table, std::size_t runs) {
    Curve curve("histories", runs);
    for (const Point& point : std::vector<Point>{{1, 168'771, 5'146},
                                                 {2, 119'507, 1'379},
                                                 {4, 103'548, 450},
                                                 {8, 98'280, 241},
                                                 {16, 95'669, 154},
                                                 {32, 93'691, 134},
                                                 {64, 92'861, 128}}) {
        const std::size_t number = BASE * point.at;
        curve.measure(std::to_string(point.at) + 'x', fileOf(table, number), number, number / 800,
                      point);
    }
}

/// The same sets and rules are found, with other counts: only the number of histories grows.
void growCopies(const QuestTable& table, std::size_t runs) {
    Curve curve("copies of the histories", runs);
    constexpr std::size_t number = 2 * BASE;
    for (std::size_t copies = 1; copies <= 64; copies *= 2)
        curve.measure(std::to_string(copies) + 'x', copiesOf(table, number, copies),
                      number * copies, 40 * copies, {copies, 14'909, 0});
}

void growItems(std::size_t runs) {
    Curve curve("items", runs);
    constexpr std::size_t number = 4 * BASE;
    for (const Point& point : std::vector<Point>{{500, 744'264, 61'258},
                                                 {1000, 150'758, 1'791},
                                                 {2000, 97'072, 0},
                                                 {4000, 70'489, 0},
                                                 {8000, 44'550, 0},
                                                 {16000, 20'127, 0}}) {
        QuestShape shape;
        shape.items = point.at;
        shape.patterns = 2 * point.at;
        const QuestTable table(shape, number, SEED);
        curve.measure(std::to_string(point.at), fileOf(table, number), number, number / 1000,
                      point);
    }
}

void lowerCount(const QuestTable& table, std::size_t runs) {
    Curve curve("least count", runs);
    constexpr std::size_t number = 4 * BASE;
    const TempFile file = fileOf(table, number);
    for (const Point& point : std::vector<Point>{{640, 69, 0},
                                                 {320, 842, 0},
                                                 {160, 2'864, 0},
                                                 {80, 14'280, 0},
                                                 {40, 38'027, 0},
                                                 {20, 103'548, 450},
                                                 {10, 440'898, 23'303}})
        curve.measure(std::to_string(point.at), file, number, point.at, point);
}

void checkAgainstPlain(const QuestTable& table) {
    const TempFile file = fileOf(table, BASE / 20);
    const Configuration config = atCount(8);
    bench::check(bench::minedPlainly(config, file.path()).digest ==
                     bench::minedByModel(config, file.path()).digest,
                 "not what the plain miner finds in a generated table");
}

void run(const Arguments& arguments) {
    bench::printKernels();
    const QuestTable table(QuestShape(), 64 * BASE, SEED);
    checkAgainstPlain(table);
    growHistories(table, arguments.runs);
    growCopies(table, arguments.runs);
    growItems(arguments.runs);
    lowerCount(table, arguments.runs);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
