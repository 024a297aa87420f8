/// Measures the reading of transaction files into the index of the engine, beside flat containers
/// filled by `std::getline` and `find`; and into the rule model, beside sets and strings filled the
/// same way. All is measured in one run, and all must have the same content.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "engine/content.hpp"
#include "engine/input.hpp"
#include "engine/plain_reading.hpp"
#include "support/check.hpp"
#include "support/child.hpp"
#include "support/memory.hpp"
#include "support/program.hpp"
#include "support/row_table.hpp"
#include "support/samples.hpp"
#include "support/table.hpp"
#include "support/temp_file.hpp"

namespace {

using bench::Arguments;
using bench::Content;
using bench::RowTable;
using bench::Seconds;
using bench::Table;
using bench::TempFile;
using bench::Times;

struct Reading {
    Seconds time;
    Content content;
    std::size_t heap;
    std::size_t peak;
};

/// The cost of `read()`, which returns histories, in a process of its own that starts with `mapped`
/// bytes of memory.
template <class Read>
Reading measured(std::size_t mapped, Read read) {
    return bench::inChild([&] {
        const bench::MemoryPeak peak;
        bench::mapHeap(mapped);
        const std::size_t heap = bench::heapInUse();
        const bench::Stopwatch watch;
        const auto histories = read();
        const Seconds time = watch.elapsed();
        const std::size_t risen = peak.rise();
        return Reading{time, bench::digested(histories), bench::heapInUse() - heap, risen};
    });
}

bench::IndexedHistories readIndexed(const std::string& path) {
    bench::IndexedHistories histories{bench::rowsOf(path), {}};
    histories.index = histories.builder.freeze(1);
    return histories;
}

/// The ways to read a file: by the engine, into flat containers, into the rule model, and into sets
/// and strings without and with hints.
enum Way : std::size_t { ENGINE, FLAT, MODEL, PLAIN, HINTED };

Reading readBy(Way way, const std::string& path, std::size_t mapped) {
    switch (way) {
        case ENGINE:
            return measured(mapped, [&] { return readIndexed(path); });
        case FLAT:
            return measured(mapped, [&] { return bench::readFlat(path); });
        case MODEL:
            return measured(mapped, [&] { return bench::transactionsOf(path); });
        case PLAIN:
            return measured(mapped, [&] { return bench::readPlainly(path); });
        case HINTED:
            break;
    }
    return measured(mapped, [&] { return bench::readWithHints(path); });
}

/// The cost of one way: the times of all runs, and the last run.
struct Measured {
    Times times;
    Reading last;

    double seconds() const { return times.cpu.median(); }
    double bytesAnOccurrence() const {
        return static_cast<double>(last.heap) / static_cast<double>(last.content.occurrences);
    }
};

/// Reads the file in each of the ways, in processes that start with `mapped` bytes of memory.
/// Throws when the ways disagree.
std::vector<Measured> compare(const std::string& path, std::size_t runs,
                              const std::vector<Way>& ways, std::size_t mapped) {
    std::vector<Reading> readings(ways.size());
    std::vector<std::function<Seconds()>> contestants;
    for (std::size_t i = 0; i < ways.size(); ++i)
        contestants.push_back([&, i] {
            readings[i] = readBy(ways[i], path, mapped);
            return readings[i].time;
        });
    std::vector<Times> times = bench::inTurns(runs, contestants);
    std::vector<Measured> all;
    for (std::size_t i = 0; i < ways.size(); ++i) {
        bench::check(readings[i].content.digest == readings[0].content.digest,
                     "not the content of " + path);
        all.push_back({std::move(times[i]), readings[i]});
    }
    return all;
}

struct FileResult {
    std::string name;
    double bytes;
    std::vector<Measured> ways;

    const Measured& by(Way way) const { return ways[way]; }
    std::string speed(double seconds) const { return bench::fixed(bytes / 1e6 / seconds, 1); }
    std::string speed(Way way) const { return speed(by(way).seconds()); }
    std::string range(Way way) const {
        const bench::Samples& cpu = by(way).times.cpu;
        return speed(cpu.greatest()) + ".." + speed(cpu.least());
    }
    std::string ratio(Way way, Way baseline) const {
        return bench::fixed(by(way).seconds() / by(baseline).seconds(), 2);
    }
};

FileResult measuredFile(const std::string& name, const std::string& path, std::size_t runs) {
    return {name, static_cast<double>(std::filesystem::file_size(path)),
            compare(path, runs, {ENGINE, FLAT, MODEL, PLAIN, HINTED}, 0)};
}

std::vector<std::filesystem::path> givenFiles(const std::string& folder) {
    std::vector<std::filesystem::path> files;
    if (!folder.empty())
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".tsv")
                files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<FileResult> measureFiles(const Arguments& arguments) {
    std::vector<FileResult> results;
    for (const std::filesystem::path& path : givenFiles(arguments.data))
        results.push_back(measuredFile(path.filename().string(), path.string(), arguments.runs));
    const std::size_t rows = arguments.rows;
    const std::vector<std::pair<std::string, RowTable>> generated = {
        {"rows of 10,000 items", {rows / 10'000 + 1, 1, 10'000, 1'000'000, false}},
        {"short rows", {rows, 100, 1, 10'000, false}},
        {"short rows, one entity", {rows, rows, 1, 10'000, false}},
        {"short rows, an entity each", {rows, 1, 1, 10'000, false}},
        {"rows of 8 items, keys in order", {rows / 8 + 1, 4, 8, 10'000, false}},
        {"rows of 8 items, keys shuffled", {rows / 8 + 1, 4, 8, 10'000, true}},
    };
    for (const auto& [name, table] : generated) {
        const TempFile file([&shape = table](std::ostream& os) { shape.write(os); });
        results.push_back(measuredFile(name, file.path(), arguments.runs));
    }
    return results;
}

void printIndexed(const std::vector<FileResult>& results, std::size_t runs) {
    const Table table("Reading and indexing: MB/s of processor time, medians of " +
                          std::to_string(runs) + " runs",
                      {"file", "MB", "occurrences", "index", "least..greatest", "flat containers",
                       "index/flat, time", "rule model", "index/model, time"});
    for (const FileResult& file : results)
        table.row({file.name, bench::fixed(file.bytes / 1e6, 1),
                   bench::grouped(file.by(ENGINE).last.content.occurrences), file.speed(ENGINE),
                   file.range(ENGINE), file.speed(FLAT), file.ratio(ENGINE, FLAT),
                   file.speed(MODEL), file.ratio(ENGINE, MODEL)});
}

void printModel(const std::vector<FileResult>& results, std::size_t runs) {
    const Table table("Reading into the rule model: MB/s of processor time, medians of " +
                          std::to_string(runs) + " runs",
                      {"file", "rule model", "least..greatest", "getline", "model/getline, time",
                       "with hints", "model/hints, time"});
    for (const FileResult& file : results)
        table.row({file.name, file.speed(MODEL), file.range(MODEL), file.speed(PLAIN),
                   file.ratio(MODEL, PLAIN), file.speed(HINTED), file.ratio(MODEL, HINTED)});
}

void printMemory(const std::vector<FileResult>& results) {
    const Table table("Memory of reading: heap bytes an occurrence afterwards, and the peak in MB",
                      {"file", "index", "peak", "flat containers", "peak", "rule model", "peak"});
    for (const FileResult& file : results) {
        std::vector<std::string> row = {file.name};
        for (const Way way : {ENGINE, FLAT, MODEL}) {
            row.push_back(bench::fixed(file.by(way).bytesAnOccurrence(), 1));
            row.push_back(bench::megabytes(file.by(way).last.peak));
        }
        table.row(row);
    }
}

/// Reads files of rows of 8 items, from 1 MB up to `most` in steps of 4, in one way and its
/// baseline. The system's price for memory varies, so the same is measured in processes that have
/// the memory before.
void follow(const Table& table, Way way, Way baseline, std::size_t most, bool shuffled,
            std::size_t runs) {
    std::vector<double> first;
    for (std::size_t megabytes = 1; megabytes <= most; megabytes *= 4) {
        RowTable rows;
        rows.rows = megabytes * 1'000'000 / rows.rowSize();
        rows.shuffled = shuffled;
        const TempFile file([&](std::ostream& os) { rows.write(os); });
        const auto bytes = static_cast<double>(std::filesystem::file_size(file.path()));
        const auto perByte = [bytes](const Measured& each) { return each.seconds() / bytes * 1e9; };

        const std::vector<Measured> asking = compare(file.path(), runs, {way, baseline}, 0);
        const std::size_t peak = std::max(asking[0].last.peak, asking[1].last.peak);
        const std::vector<Measured> given =
            compare(file.path(), runs, {way, baseline}, peak + peak / 8);
        if (first.empty())
            first = {perByte(given[0]), perByte(given[1])};

        std::vector<std::string> row = {std::to_string(megabytes) + " MB",
                                        shuffled ? "shuffled" : "in order"};
        for (const Measured& each : asking)
            row.push_back(bench::fixed(perByte(each), 2));
        row.push_back(bench::fixed(asking[0].seconds() / asking[1].seconds(), 2));
        for (std::size_t i = 0; i < given.size(); ++i) {
            row.push_back(bench::fixed(perByte(given[i]), 2));
            row.push_back(bench::fixed(perByte(given[i]) / first[i], 2));
        }
        row.push_back(bench::fixed(given[0].seconds() / given[1].seconds(), 2));
        row.push_back(bench::megabytes(asking[0].last.peak));
        table.row(row);
    }
}

void follow(const std::string& what, const std::string& baselineName, Way way, Way baseline,
            const Arguments& arguments) {
    const Table table(
        "Growth of reading into the " + what + ": nanoseconds of processor time per byte",
        {"file", "keys", "here", baselineName, "ratio", "given memory: here", "to 1 MB",
         baselineName, "to 1 MB", "ratio", "peak, MB"});
    for (const bool shuffled : {false, true})
        follow(table, way, baseline, arguments.megabytes, shuffled, arguments.runs);
}

void run(const Arguments& arguments) {
    const std::vector<FileResult> results = measureFiles(arguments);
    printIndexed(results, arguments.runs);
    printModel(results, arguments.runs);
    printMemory(results);
    follow("index", "flat", ENGINE, FLAT, arguments);
    follow("rule model", "getline", MODEL, PLAIN, arguments);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
