/// Reading transaction files: beside the same containers filled by `std::getline` and `find`,
/// plainly and with hints, in the same run and checked to have the same content.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <quarvis/rule.hpp>

#include "support/check.hpp"
#include "support/child.hpp"
#include "support/digest.hpp"
#include "support/memory.hpp"
#include "support/program.hpp"
#include "support/row_table.hpp"
#include "support/samples.hpp"
#include "support/table.hpp"
#include "support/temp_file.hpp"

namespace {

using bench::Arguments;
using bench::RowTable;
using bench::Seconds;
using bench::Table;
using bench::TempFile;
using bench::Times;
using quarvis::rule::TransactionSet;

using PlainHistories = std::map<std::string, std::map<unsigned int, std::set<std::string>>>;

/// Where the rows of a file go in the baseline: simply to their places.
class Placed {
  public:
    std::set<std::string>& at(std::string&& key, unsigned int time) {
        return histories[std::move(key)][time];
    }
    static void add(std::set<std::string>& items, std::string&& item) {
        items.insert(std::move(item));
    }

    PlainHistories histories;
};

/// The same with two shortcuts of the library that are none of the reading of text: rows of one
/// entity often follow each other, items often come in order.
class PlacedByHints {
  public:
    std::set<std::string>& at(std::string&& key, unsigned int time) {
        if (m_entity == histories.end() || m_entity->first != key)
            m_entity = histories.try_emplace(std::move(key)).first;
        return m_entity->second[time];
    }
    static void add(std::set<std::string>& items, std::string&& item) {
        items.insert(items.end(), std::move(item));
    }

    PlainHistories histories;

  private:
    PlainHistories::iterator m_entity = histories.end();
};

template <class Places>
PlainHistories readPlainly(const std::string& path) {
    Places places;
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::size_t tab = line.find('\t');
        std::string key = line.substr(0, tab);
        const auto time =
            static_cast<unsigned int>(std::strtoul(line.c_str() + tab + 1, nullptr, 10));
        std::set<std::string>& items = places.at(std::move(key), time);
        tab = line.find('\t', tab + 1);
        while (tab != std::string::npos) {
            const std::size_t begin = tab + 1;
            tab = line.find('\t', begin);
            if (const std::size_t end = std::min(tab, line.size()); end != begin)
                Places::add(items, line.substr(begin, end - begin));
        }
    }
    return std::move(places.histories);
}

struct Content {
    std::uint64_t digest;
    std::size_t cells;  // items of transactions
};

template <class Histories>
Content contentOf(const Histories& histories) {
    bench::Digest digest;
    std::size_t cells = 0;
    for (const auto& [key, history] : histories) {
        digest.add(key);
        digest.add(std::uint64_t{history.size()});
        for (const auto& [time, items] : history) {
            digest.add(std::uint64_t{time});
            digest.add(std::uint64_t{items.size()});
            for (const auto& item : items)
                digest.add(item);
            cells += items.size();
        }
    }
    return {digest.value(), cells};
}

struct Reading {
    Seconds time;
    Content content;
    std::size_t heap;
    std::size_t peak;
};

/// What `read()`, which gives the histories, takes in a process of its own that has `mapped` bytes
/// of memory before.
template <class Read>
Reading measured(std::size_t mapped, Read read) {
    return bench::inChild([&] {
        const bench::MemoryPeak peak;
        bench::mapHeap(mapped);
        const std::size_t heap = bench::heapInUse();
        const bench::Stopwatch watch;
        const auto histories = read();
        const Seconds time = watch.elapsed();
        return Reading{time, contentOf(histories), bench::heapInUse() - heap, peak.rise()};
    });
}

/// The ways to read a file.
enum Way : std::size_t { LIBRARY, PLAIN, HINTED };

struct Comparison {
    std::vector<Times> times;  // of each way
    Reading last;              // of the library
    double bytes;

    double seconds(Way way) const { return times[way].cpu.median(); }
    double ratio(Way baseline) const { return seconds(LIBRARY) / seconds(baseline); }
    double nanosecondsPerByte(Way way) const { return seconds(way) / bytes * 1e9; }
};

/// Reads the file in each way up to `lastWay`, in processes that have `mapped` bytes of memory
/// before. Throws when they disagree.
Comparison compare(const std::string& path, std::size_t runs, Way lastWay, std::size_t mapped) {
    const auto readByLibrary = [&] {
        TransactionSet txns;
        txns.readInto(path, '\t');
        return txns;
    };
    std::vector<Reading> readings(lastWay + 1);
    std::vector<std::function<Seconds()>> ways = {
        [&] {
            readings[LIBRARY] = measured(mapped, readByLibrary);
            return readings[LIBRARY].time;
        },
        [&] {
            readings[PLAIN] = measured(mapped, [&] { return readPlainly<Placed>(path); });
            return readings[PLAIN].time;
        },
        [&] {
            readings[HINTED] = measured(mapped, [&] { return readPlainly<PlacedByHints>(path); });
            return readings[HINTED].time;
        }};
    ways.resize(lastWay + 1);
    std::vector<Times> times = bench::inTurns(runs, ways);
    for (const Reading& reading : readings)
        bench::check(reading.content.digest == readings[LIBRARY].content.digest,
                     "not the content of " + path);
    return {std::move(times), readings[LIBRARY],
            static_cast<double>(std::filesystem::file_size(path))};
}

/// A row a file: speeds by processor time, and memory.
class FileTable {
  public:
    explicit FileTable(std::size_t runs)
        : m_table(
              "Reading files: MB/s of processor time, medians of " + std::to_string(runs) + " runs",
              {"file", "MB", "item cells", "here", "least..greatest", "getline", "time ratio",
               "with hints", "time ratio", "bytes/cell", "peak, MB"}),
          m_runs(runs) {}

    void measure(const std::string& name, const std::string& path) {
        const Comparison both = compare(path, m_runs, HINTED, 0);
        const Reading& last = both.last;
        const double perCell =
            static_cast<double>(last.heap) / static_cast<double>(last.content.cells);
        m_table.row({name, bench::fixed(both.bytes / 1e6, 1), bench::grouped(last.content.cells),
                     m_speed(both, both.seconds(LIBRARY)), m_range(both),
                     m_speed(both, both.seconds(PLAIN)), bench::fixed(both.ratio(PLAIN), 2),
                     m_speed(both, both.seconds(HINTED)), bench::fixed(both.ratio(HINTED), 2),
                     bench::fixed(perCell, 1), bench::megabytes(last.peak)});
    }

    void measure(const std::string& name, const RowTable& rows) {
        const TempFile file([&](std::ostream& os) { rows.write(os); });
        measure(name, file.path());
    }

  private:
    static std::string m_speed(const Comparison& both, double seconds) {
        return bench::fixed(both.bytes / 1e6 / seconds, 1);
    }
    static std::string m_range(const Comparison& both) {
        const auto& cpu = both.times[LIBRARY].cpu;
        return m_speed(both, cpu.greatest()) + ".." + m_speed(both, cpu.least());
    }

    Table m_table;
    std::size_t m_runs;
};

void compareFiles(const Arguments& arguments) {
    FileTable table(arguments.runs);
    std::vector<std::filesystem::path> given;
    if (!arguments.data.empty())
        for (const auto& entry : std::filesystem::directory_iterator(arguments.data))
            if (entry.path().extension() == ".tsv")
                given.push_back(entry.path());
    std::sort(given.begin(), given.end());
    for (const std::filesystem::path& path : given)
        table.measure(path.filename().string(), path.string());

    const std::size_t rows = arguments.rows;
    table.measure("rows of 10,000 items", RowTable{rows / 10'000 + 1, 1, 10'000, 1'000'000, false});
    table.measure("short rows", RowTable{rows, 100, 1, 10'000, false});
    table.measure("short rows, one entity", RowTable{rows, rows, 1, 10'000, false});
    table.measure("short rows, an entity each", RowTable{rows, 1, 1, 10'000, false});
    table.measure("rows of 8 items, keys in order", RowTable{rows / 8 + 1, 4, 8, 10'000, false});
    table.measure("rows of 8 items, keys shuffled", RowTable{rows / 8 + 1, 4, 8, 10'000, true});
}

/// Rows of 8 items, from 1 MB up to `most`, in steps of 4. The memory for them is the system's to
/// give, at a price of its own; so the same is measured with that memory given before.
void follow(const Table& table, std::size_t most, bool shuffled, std::size_t runs) {
    std::vector<Comparison> given;
    for (std::size_t megabytes = 1; megabytes <= most; megabytes *= 4) {
        RowTable rows;
        rows.rows = megabytes * 1'000'000 / rows.rowSize();
        rows.shuffled = shuffled;
        const TempFile file([&](std::ostream& os) { rows.write(os); });
        const Comparison asking = compare(file.path(), runs, PLAIN, 0);
        const std::size_t heap = asking.last.heap;
        given.push_back(compare(file.path(), runs, PLAIN, heap + heap / 8));
        std::vector<std::string> row = {std::to_string(megabytes) + " MB",
                                        shuffled ? "shuffled" : "in order"};
        for (const Way way : {LIBRARY, PLAIN})
            row.push_back(bench::fixed(asking.nanosecondsPerByte(way), 2));
        row.push_back(bench::fixed(asking.ratio(PLAIN), 2));
        for (const Way way : {LIBRARY, PLAIN}) {
            const double cost = given.back().nanosecondsPerByte(way);
            row.push_back(bench::fixed(cost, 2));
            row.push_back(bench::fixed(cost / given.front().nanosecondsPerByte(way), 2));
        }
        row.push_back(bench::fixed(given.back().ratio(PLAIN), 2));
        row.push_back(bench::megabytes(heap));
        table.row(row);
    }
}

void follow(const Arguments& arguments) {
    const Table table("Growth of reading: nanoseconds of processor time per byte",
                      {"file", "keys", "here", "getline", "ratio", "given memory: here", "to 1 MB",
                       "getline", "to 1 MB", "ratio", "heap, MB"});
    for (const bool shuffled : {false, true})
        follow(table, arguments.megabytes, shuffled, arguments.runs);
}

void run(const Arguments& arguments) {
    compareFiles(arguments);
    follow(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
