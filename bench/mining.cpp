/// Measures the mining of the histories in a user's folder and of generated tables: the time of
/// each phase, the cost of an item set, memory, the gain by a second thread, and the ratio to the
/// plain miner.

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include <quarvis/mining/history_index.hpp>

#include "engine/bare_pairs.hpp"
#include "engine/input.hpp"
#include "engine/mining_cases.hpp"
#include "engine/mining_memory.hpp"
#include "engine/phases.hpp"
#include "engine/thread_times.hpp"
#include "support/check.hpp"
#include "support/program.hpp"
#include "support/table.hpp"

namespace {

using bench::Arguments;
using bench::MiningCase;
using bench::MiningMemory;
using bench::PhaseTimes;
using bench::Samples;
using bench::Table;
using bench::ThreadTimes;
using quarvis::mining::at;
using quarvis::mining::HistoryIndex;
using quarvis::mining::Rank;

constexpr auto GIVEN = MiningCase::Origin::GIVEN;

/// A run of the plain miner on the `items` most frequent items (0: on all). It compares the lists
/// of histories of every pair of items, so it takes long on all items of a large file.
struct PlainCase {
    MiningCase run;
    std::size_t items;
};

const std::vector<PlainCase>& plainCases() {
    static const std::vector<PlainCase> CASES = {
        {{GIVEN, "online_retail", 100, 0, 0, 1'408, 1}, 23},
        {{GIVEN, "log_traffic_fines", 20, 0, 0, 783, 273}, 0},
        {{GIVEN, "bag-customers", 25, 0, 0, 1'398, 3}, 0},
    };
    return CASES;
}

/// By rank: whether the item is one of the `number` most frequent ones. Of items with equal counts
/// the lower ranks come first.
std::vector<bool> mostFrequent(const HistoryIndex& index, std::size_t number) {
    std::vector<Rank> ranks;
    for (std::uint32_t item = 0; item < index.itemCount(); ++item)
        ranks.push_back(Rank{item});
    std::stable_sort(ranks.begin(), ranks.end(),
                     [&](Rank a, Rank b) { return index.count(a) > index.count(b); });
    ranks.resize(std::min(number, ranks.size()));
    std::vector<bool> kept(index.itemCount());
    for (const Rank item : ranks)
        kept[at(item)] = true;
    return kept;
}

/// Writes the file with only its `number` most frequent items. Every transaction stays, and so does
/// every history.
void writeCut(const std::string& path, std::size_t number, std::ostream& os) {
    const HistoryIndex index = bench::indexOf(path, 1);
    const std::vector<bool> kept = mostFrequent(index, number);
    os << "entity\ttime\titems\n";
    for (std::uint32_t history = 0; history < index.historyCount(); ++history) {
        const quarvis::mining::HistoryId id{history};
        for (std::size_t place = index.firstTransaction(id); place < index.endTransaction(id);
             ++place) {
            os << 'e' << history << '\t' << index.time(place);
            for (const Rank item : index.items(place))
                if (kept[at(item)])
                    os << '\t' << index.name(item);
            os << '\n';
        }
    }
}

struct CaseResult {
    std::string name;
    PhaseTimes times;
    MiningMemory memory;
    Samples bare;
    ThreadTimes threads;
};

/// What two threads gain is disturbed most, so it takes more runs.
std::size_t threadRuns(std::size_t runs) {
    return 5 * runs;
}

CaseResult measured(const MiningCase& run, const std::string& path, std::size_t runs) {
    CaseResult result{run.name(),
                      bench::repeatedPhases(runs, run.config(), path),
                      bench::measuredMemory(run.config(), path),
                      {},
                      bench::comparedThreads(threadRuns(runs), run.config(), path)};
    for (std::size_t i = 0; i < runs; ++i) {
        const bench::BarePairs bare = bench::intersectPairs(path, run.minCount);
        bench::checkCount("bare pairs of " + result.name, bare.frequent, result.times.last.pairs);
        result.bare.add(bare.time.cpu);
    }
    return result;
}

std::string ratio(double a, double b) {
    return bench::fixed(a / b, 2);
}

std::string ratio(std::size_t a, std::size_t b) {
    return ratio(static_cast<double>(a), static_cast<double>(b));
}

std::string median(const Samples& seconds) {
    return bench::milliseconds(seconds.median());
}

std::string least(const Samples& seconds) {
    return bench::milliseconds(seconds.least());
}

std::string leastRatio(const Samples& a, const Samples& b) {
    return ratio(a.least(), b.least());
}

std::string nanoseconds(double seconds, std::size_t operations, int digits) {
    return bench::fixed(seconds / static_cast<double>(operations) * 1e9, digits);
}

void printTimes(const std::vector<CaseResult>& results, std::size_t runs) {
    const Table table("Mining: processor time, ms, medians of " + std::to_string(runs) + " runs",
                      {"case", "reading", "index", "item sets", "counting", "selection", "writing",
                       "total", "least..greatest", "wall"});
    for (const CaseResult& result : results) {
        const PhaseTimes& times = result.times;
        table.row({result.name, median(times.reading), median(times.index), median(times.itemSets),
                   median(times.counting), median(times.selection), median(times.writing),
                   median(times.total.cpu), bench::millisecondRange(times.total.cpu),
                   median(times.total.wall)});
    }
}

void printCosts(const std::vector<CaseResult>& results) {
    using bench::grouped;
    const Table table(
        "Mining: nanoseconds for each thing that a phase goes through",
        {"case", "histories", "items", "item sets", "rules", "reading, a byte", "item sets, a set",
         "a set in a history", "rules, a set", "writing, a line"});
    for (const CaseResult& result : results) {
        const PhaseTimes& times = result.times;
        const bench::Phases& last = times.last;
        const double reading = times.reading.median() + times.index.median();
        const double rules = times.counting.median() + times.selection.median();
        table.row({result.name, grouped(last.histories), grouped(last.items),
                   grouped(last.setCount), grouped(last.ruleCount),
                   nanoseconds(reading, last.fileBytes, 1),
                   nanoseconds(times.itemSets.median(), last.setCount, 0),
                   nanoseconds(times.itemSets.median(), last.memberships, 2),
                   nanoseconds(rules, last.setCount, 0),
                   nanoseconds(times.writing.median(), last.setCount + last.ruleCount + 2, 0)});
    }
}

void printBare(const std::vector<CaseResult>& results) {
    using bench::grouped;
    const Table table("Mining beside bare intersections of bitmaps",
                      {"case", "pairs", "frequent", "bare, ms", "ns a pair", "item sets/bare",
                       "(item sets + rules)/bare"});
    for (const CaseResult& result : results) {
        const bench::Phases& last = result.times.last;
        const std::size_t pairs = last.items * (last.items - 1) / 2;
        const double bare = result.bare.median();
        table.row({result.name, grouped(pairs), grouped(last.pairs), bench::milliseconds(bare),
                   nanoseconds(bare, pairs, 1), ratio(result.times.itemSets.median(), bare),
                   ratio(result.times.search.median(), bare)});
    }
}

void printMemory(const std::vector<CaseResult>& results) {
    using bench::megabytes;
    const Table table(
        "Mining: memory, MB",
        {"case", "index", "bytes/occurrence", "reading peak", "/ index", "item sets", "search peak",
         "/ (index + item sets)", "rules", "counting peak", "/ (index + item sets + rules)"});
    for (const CaseResult& result : results) {
        const MiningMemory& memory = result.memory;
        const std::size_t searched = memory.index + memory.itemSets;
        const std::size_t counted = searched + memory.rules;
        table.row({result.name, megabytes(memory.index), ratio(memory.index, memory.occurrences),
                   megabytes(memory.readingPeak), ratio(memory.readingPeak, memory.index),
                   megabytes(memory.itemSets), megabytes(memory.itemSetPeak),
                   ratio(memory.itemSetPeak, searched), megabytes(memory.rules),
                   megabytes(memory.rulePeak), ratio(memory.rulePeak, counted)});
    }
}

void printThreads(const std::vector<CaseResult>& results, std::size_t runs) {
    const Table table("Search by one thread and by two: wall clock, ms, least of " +
                          std::to_string(threadRuns(runs)) + " runs",
                      {"case", "item sets: 1", "2", "1/2", "rules: 1", "2", "1/2", "both: 1", "2",
                       "1/2", "bare 1/2"});
    for (const CaseResult& result : results) {
        const auto& [one, two, setCount, ruleCount] = result.threads;
        table.row({result.name, least(one.itemSets), least(two.itemSets),
                   leastRatio(one.itemSets, two.itemSets), least(one.rules), least(two.rules),
                   leastRatio(one.rules, two.rules), least(one.both), least(two.both),
                   leastRatio(one.both, two.both), leastRatio(one.bare, two.bare)});
    }
}

void printPlain(bench::CaseFiles& files, std::size_t runs) {
    const Table table(
        "Mining beside the plain miner: the same result, processor time without "
        "reading and writing",
        {"case", "histories", "item sets", "rules", "plain, ms", "here, ms", "plain/here"});
    for (const auto& [run, items] : plainCases()) {
        const std::string whole = files.path(run);
        if (whole.empty())
            continue;
        const bench::TempFile cut([&, number = items](std::ostream& os) {
            if (number != 0)
                writeCut(whole, number, os);
        });
        const std::string path = items == 0 ? whole : cut.path();
        const PhaseTimes times = bench::repeatedPhases(runs, run.config(), path);
        const bench::WholeRun plain = bench::minedPlainly(run.config(), path);
        bench::check(plain.digest == times.last.digest, "not what the plain miner finds");
        run.check(times.last.setCount, times.last.ruleCount);
        const double here = times.index.median() + times.search.median();
        table.row({run.name() + (items == 0 ? "" : ", " + std::to_string(items) + " items"),
                   bench::grouped(times.last.histories), bench::grouped(times.last.setCount),
                   bench::grouped(times.last.ruleCount), bench::milliseconds(plain.time.cpu),
                   bench::milliseconds(here), bench::fixed(plain.time.cpu / here, 0)});
    }
}

std::vector<CaseResult> measureAll(bench::CaseFiles& files, std::size_t runs) {
    std::vector<CaseResult> results;
    for (const MiningCase& each : bench::miningCases()) {
        const std::string path = files.path(each);
        if (path.empty())
            continue;
        results.push_back(measured(each, path, runs));
        const bench::Phases& found = results.back().times.last;
        each.check(found.setCount, found.ruleCount);
    }
    return results;
}

CaseResult measureOwn(const Arguments& arguments) {
    const MiningCase own{
        GIVEN, arguments.file, arguments.minCount, arguments.windowSize, arguments.maxOrder, 0, 0};
    return measured(own, arguments.file, arguments.runs);
}

void run(const Arguments& arguments) {
    bench::printKernels();
    bench::CaseFiles files(arguments.data);
    const bool own = !arguments.file.empty();
    const std::vector<CaseResult> results =
        own ? std::vector{measureOwn(arguments)} : measureAll(files, arguments.runs);
    printTimes(results, arguments.runs);
    printCosts(results);
    printBare(results);
    printMemory(results);
    printThreads(results, arguments.runs);
    if (!own)
        printPlain(files, arguments.runs);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
