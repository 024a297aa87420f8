/// The mining of the histories in a folder of the user's: time of each phase, cost of an item set,
/// memory, and the ratio to the plain miner.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <quarvis/rule.hpp>

#include "bit_kernels.hpp"
#include "history_index.hpp"
#include "support/check.hpp"
#include "support/child.hpp"
#include "support/phases.hpp"
#include "support/program.hpp"
#include "support/table.hpp"

namespace {

using bench::Arguments;
using bench::PhaseTimes;
using bench::Samples;
using bench::Table;
using quarvis::rule::HistoryIndex;
using quarvis::rule::Item;
using quarvis::rule::ItemSet;
using quarvis::rule::Rank;
using quarvis::rule::TransactionSet;

/// A run and what it finds. Days and seconds are the units of the files.
struct Case {
    std::string file;
    std::uint32_t minCount;
    std::uint32_t windowSize;
    std::uint32_t maxOrder;
    std::size_t itemSets;
    std::size_t rules;

    Configuration config() const {
        Configuration config;
        config.minCount = minCount;
        config.windowSize = windowSize;
        config.maxOrder = maxOrder;
        return config;
    }

    std::string name() const {
        const auto option = [](const char* key, std::uint32_t value) {
            return value == 0 ? std::string() : key + std::to_string(value);
        };
        return std::filesystem::path(file).stem().string() + option(" -c ", minCount) +
               option(" -w ", windowSize) + option(" -o ", maxOrder);
    }
};

constexpr std::uint32_t MONTH = 30;
constexpr std::uint32_t MONTH_IN_SECONDS = MONTH * 24 * 60 * 60;

const std::vector<Case>& knownCases() {
    static const std::vector<Case> CASES = {
        {"online_retail.tsv", 100, 0, 0, 37'086, 14},
        {"online_retail.tsv", 100, MONTH_IN_SECONDS, 0, 37'086, 0},
        {"online_retail.tsv", 70, 0, 0, 239'333, 279},
        {"online_retail.tsv", 70, MONTH_IN_SECONDS, 0, 239'333, 0},
        {"online_retail_lines.tsv", 100, 0, 0, 37'086, 12},
        {"online_retail_lines.tsv", 100, MONTH, 0, 37'086, 0},
        {"completejourney_types.tsv", 100, 0, 0, 431, 39},
        {"log_traffic_fines.tsv", 20, 0, 0, 783, 273},
        {"synthea27.tsv", 14, 0, 2, 53'004, 559},
        {"bag-customers.tsv", 12, 0, 0, 381'914, 1'660},
        {"bag-customers.tsv", 12, 3 * MONTH_IN_SECONDS, 2, 9'591, 50},
    };
    return CASES;
}

/// A run of the plain miner, on so many of the most frequent items (0: on all). It compares the
/// lists of histories of every pair of items, so it takes long with all items of a large file.
struct PlainCase {
    Case run;
    std::size_t items;
};

const std::vector<PlainCase>& plainCases() {
    static const std::vector<PlainCase> CASES = {
        {{"online_retail.tsv", 100, 0, 0, 1'408, 1}, 23},
        {{"log_traffic_fines.tsv", 20, 0, 0, 783, 273}, 0},
        {{"bag-customers.tsv", 25, 0, 0, 1'398, 3}, 0},
    };
    return CASES;
}

TransactionSet histories(const std::string& path) {
    TransactionSet txns;
    txns.readInto(path, '\t');
    bench::check(txns.size() > 0, path + " has no histories");
    return txns;
}

/// Keeps only the `number` items that are in the most histories; of equals those first in order.
void keepMostFrequent(TransactionSet& txns, std::size_t number) {
    std::set<Item> kept;
    {
        const HistoryIndex index(txns, 1);
        std::vector<Rank> ranks(index.itemCount());
        for (Rank item = 0; item < ranks.size(); ++item)
            ranks[item] = item;
        std::stable_sort(ranks.begin(), ranks.end(),
                         [&](Rank a, Rank b) { return index.count(a) > index.count(b); });
        ranks.resize(std::min(number, ranks.size()));
        for (const Rank item : ranks)
            kept.insert(index.name(item));
    }
    for (auto& [key, history] : txns)
        for (auto& [time, items] : history) {
            ItemSet rest;
            for (const Item& item : items)
                if (kept.contains(item))
                    rest.add(item);
            items = rest;
        }
}

/// The least that a search by bitmaps can do: intersect the bitmaps of every two frequent items, as
/// long as there are histories, and count the bits.
struct BarePairs {
    bench::Seconds time;
    std::size_t frequent;
};

BarePairs intersectPairs(const TransactionSet& txns, std::uint32_t minCount) {
    const HistoryIndex index(txns, minCount);
    const std::size_t words = (index.historyCount() + 63) / 64;
    std::vector<std::uint64_t> bits(index.itemCount() * words);
    std::vector<const std::uint64_t*> bitmaps;
    for (Rank item = 0; item < index.itemCount(); ++item) {
        std::uint64_t* const bitmap = bits.data() + item * words;
        for (const auto history : index.histories(item))
            bitmap[history / 64] |= std::uint64_t{1} << (history % 64);
        bitmaps.push_back(bitmap);
    }

    BarePairs result{};
    std::vector<std::uint32_t> counts(index.itemCount());
    const bench::Stopwatch watch;
    for (std::size_t item = 0; item + 1 < bitmaps.size(); ++item) {
        const std::size_t others = bitmaps.size() - item - 1;
        quarvis::rule::bitKernels().countCommonEach(bitmaps[item], &bitmaps[item + 1], others,
                                                    words, counts.data());
        result.frequent += static_cast<std::size_t>(
            std::count_if(counts.begin(), counts.begin() + static_cast<std::ptrdiff_t>(others),
                          [minCount](std::uint32_t count) { return count >= minCount; }));
    }
    result.time = watch.elapsed();
    return result;
}

void checkCounts(const Case& run, const bench::Phases& found) {
    bench::checkCount("item sets of " + run.name(), found.itemSets, run.itemSets);
    bench::checkCount("rules of " + run.name(), found.ruleCount, run.rules);
}

struct CaseResult {
    std::string name;
    PhaseTimes times;
    Samples bare;
};

CaseResult measured(const Case& run, const TransactionSet& txns, std::size_t runs, bool known) {
    CaseResult result{run.name(), bench::repeatedPhases(runs, run.config(), txns), {}};
    const bench::Phases& found = result.times.last;
    if (known)
        checkCounts(run, found);
    for (std::size_t i = 0; i < runs; ++i) {
        const BarePairs bare = bench::inChild([&] { return intersectPairs(txns, run.minCount); });
        bench::checkCount("bare pairs of " + result.name, bare.frequent, found.pairCount);
        result.bare.add(bare.time.cpu);
    }
    return result;
}

void printTimes(const std::vector<CaseResult>& results, std::size_t runs) {
    using bench::milliseconds;
    const Table table("Mining: processor time, ms, medians of " + std::to_string(runs) + " runs",
                      {"case", "index", "pairs", "larger", "counting", "assembly", "total",
                       "least..greatest", "wall"});
    for (const auto& [name, times, bare] : results)
        table.row({name, milliseconds(times.index.median()), milliseconds(times.pairs.median()),
                   milliseconds(times.larger.median()), milliseconds(times.counting.median()),
                   milliseconds(times.assembly.median()), milliseconds(times.total.cpu.median()),
                   bench::millisecondRange(times.total.cpu),
                   milliseconds(times.total.wall.median())});
}

std::string nanoseconds(double seconds, std::size_t operations, int digits) {
    return bench::fixed(seconds / static_cast<double>(operations) * 1e9, digits);
}

void printCosts(const std::vector<CaseResult>& results) {
    using bench::grouped;
    const Table table(
        "Mining: nanoseconds for each item set and history, and for each history "
        "that an item set is in",
        {"case", "histories", "items", "item sets", "rules", "search", "counting", "total",
         "total, in it"});
    for (const auto& [name, times, bare] : results) {
        const bench::Phases& last = times.last;
        const std::size_t all = last.itemSets * last.histories;
        const double total = times.total.cpu.median();
        table.row({name, grouped(last.histories), grouped(last.items), grouped(last.itemSets),
                   grouped(last.ruleCount), nanoseconds(times.search(), all, 3),
                   nanoseconds(times.counting.median(), all, 3), nanoseconds(total, all, 3),
                   nanoseconds(total, last.memberships, 1)});
    }
}

void printBare(const std::vector<CaseResult>& results) {
    using bench::grouped;
    const Table table("Mining beside bare intersections of bitmaps",
                      {"case", "pairs", "frequent", "bare, ms", "ns a pair", "pairs/bare",
                       "search/bare", "search, ns a set"});
    for (const auto& [name, times, bare] : results) {
        const bench::Phases& last = times.last;
        const std::size_t pairs = last.items * (last.items - 1) / 2;
        table.row({name, grouped(pairs), grouped(last.pairCount),
                   bench::milliseconds(bare.median()), nanoseconds(bare.median(), pairs, 1),
                   bench::fixed(times.pairs.median() / bare.median(), 2),
                   bench::fixed(times.search() / bare.median(), 2),
                   nanoseconds(times.search(), last.itemSets, 0)});
    }
}

void printMemory(const std::vector<CaseResult>& results) {
    using bench::megabytes;
    const Table table("Mining: memory, MB", {"case", "index", "sets", "result", "search peak",
                                             "/ index", "peak", "/ (index + result)"});
    const auto ratio = [](std::size_t a, std::size_t b) {
        return bench::fixed(static_cast<double>(a) / static_cast<double>(b), 2);
    };
    for (const auto& [name, times, bare] : results) {
        const bench::Phases& last = times.last;
        table.row({name, megabytes(last.indexBytes), megabytes(last.setBytes),
                   megabytes(last.resultBytes), megabytes(last.searchPeak),
                   ratio(last.searchPeak, last.indexBytes), megabytes(last.totalPeak),
                   ratio(last.totalPeak, last.indexBytes + last.resultBytes)});
    }
}

void printPlain(const std::string& folder, std::size_t runs) {
    const Table table(
        "Mining beside the plain miner: the same result, processor time",
        {"case", "histories", "item sets", "rules", "plain, ms", "here, ms", "ratio"});
    for (const auto& [run, items] : plainCases()) {
        const std::filesystem::path path = std::filesystem::path(folder) / run.file;
        if (!std::filesystem::exists(path))
            continue;
        TransactionSet txns = histories(path);
        if (items != 0)
            keepMostFrequent(txns, items);
        const PhaseTimes times = bench::repeatedPhases(runs, run.config(), txns);
        const bench::WholeRun plain = bench::minedPlainly(run.config(), txns);
        bench::check(plain.digest == times.last.digest, "not what the plain miner finds");
        checkCounts(run, times.last);
        const double here = times.total.cpu.median();
        table.row({run.name() + (items == 0 ? "" : ", " + std::to_string(items) + " items"),
                   bench::grouped(txns.size()), bench::grouped(times.last.itemSets),
                   bench::grouped(times.last.ruleCount), bench::milliseconds(plain.time.cpu),
                   bench::milliseconds(here), bench::fixed(plain.time.cpu / here, 0)});
    }
}

std::vector<CaseResult> measureKnown(const std::string& folder, std::size_t runs) {
    std::vector<CaseResult> results;
    for (const Case& known : knownCases()) {
        const std::filesystem::path path = std::filesystem::path(folder) / known.file;
        if (std::filesystem::exists(path))
            results.push_back(measured(known, histories(path), runs, true));
    }
    return results;
}

void run(const Arguments& arguments) {
    const bool known = arguments.file.empty();
    const Case own{
        arguments.file, arguments.minCount, arguments.windowSize, arguments.maxOrder, 0, 0};
    const std::vector<CaseResult> results =
        known ? measureKnown(arguments.data, arguments.runs)
              : std::vector{measured(own, histories(own.file), arguments.runs, false)};
    printTimes(results, arguments.runs);
    printCosts(results);
    printBare(results);
    printMemory(results);
    if (known)
        printPlain(arguments.data, arguments.runs);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
