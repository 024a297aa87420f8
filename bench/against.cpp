/// Compares the tool with an earlier state of it: time, memory and phases of whole runs with equal
/// outputs. `bench/against` builds both and calls
///
///     bench-against <old tool> <new tool> <scratch folder> <rounds> <pattern> [<data folder>]

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/child.hpp"
#include "support/environment.hpp"
#include "support/generated_tables.hpp"
#include "support/same_files.hpp"
#include "support/samples.hpp"
#include "support/table.hpp"
#include "support/tool_run.hpp"

namespace {

namespace fs = std::filesystem;

using bench::Outputs;
using bench::Samples;
using bench::Table;
using bench::ToolRun;

constexpr double LEAST_TIME = 5e-5;  // seconds; below this the clock and the pipe tell nothing

enum class Origin { GIVEN, GENERATED };

/// A transaction file, from the user's folder or generated, and the options of a run.
struct Case {
    Origin origin;
    std::string table;  // the name of the file without ".tsv", or a kind of generated table
    std::string options;
    bool slow = false;  // whether it gets half the rounds

    std::string name() const { return table + ' ' + options; }
};

/// Windows are in the units of the files: a month in seconds and in days, ten days in seconds, and
/// five words.
const std::vector<Case> CASES{
    {Origin::GIVEN, "online_retail", "-c 100"},
    {Origin::GIVEN, "online_retail", "-c 70"},
    {Origin::GIVEN, "online_retail", "-c 100 -w 2592000"},
    {Origin::GIVEN, "online_retail_lines", "-c 100"},
    {Origin::GIVEN, "online_retail_lines", "-c 100 -w 30"},
    {Origin::GIVEN, "online_retail_lines", "-c 100000"},
    {Origin::GIVEN, "completejourney_types", "-c 100"},
    {Origin::GIVEN, "log_traffic_fines", "-c 20"},
    {Origin::GIVEN, "synthea27", "-c 14 -o 2"},
    {Origin::GENERATED, "event_log", "-c 64", true},
    {Origin::GENERATED, "event_log", "-c 64 -w 864000", true},
    {Origin::GENERATED, "words", "-c 200"},
    {Origin::GENERATED, "words", "-c 200 -w 5"},
    {Origin::GENERATED, "steep_words", "-c 200"},
    {Origin::GENERATED, "steep_words", "-c 200 -w 5"},
    {Origin::GENERATED, "sparse", "-c 40"},
    {Origin::GENERATED, "sparse", "-c 20"},
    {Origin::GENERATED, "quest", "-c 20"},
};

struct Settings {
    std::string oldTool;
    std::string newTool;
    fs::path scratch;
    std::size_t rounds;
    std::regex pattern;
    fs::path data;  // empty for none
};

/// The measurements of one tool in one case.
struct Measured {
    Samples cpu;
    Samples peakMemory;
    std::array<Samples, 3> phases;  // reading, searching, writing

    void add(const ToolRun& run) {
        cpu.add(run.cpu);
        peakMemory.add(static_cast<double>(run.peakMemory));
        phases[0].add(run.reading);
        phases[1].add(run.searching);
        phases[2].add(run.writing);
    }
};

struct Comparison {
    std::string name;
    std::size_t rounds;
    Measured old;
    Measured present;
};

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}

/// The transaction file of the case. A missing one is generated in a process of its own, because
/// the memory of this process would count for the tools.
std::string inputOf(const Case& which, const Settings& settings) {
    if (which.origin == Origin::GIVEN)
        return settings.data / (which.table + ".tsv");
    std::string path = settings.scratch / (which.table + ".tsv");
    if (!fs::exists(path))
        bench::inChild([&] {
            bench::generate(which.table, 0, path);
            return true;
        });
    return path;
}

/// Runs the tools in turns. Every outcome is compared with the first one, which is the old tool's.
/// All runs use the same file names, because messages contain them.
Comparison compared(const Case& which, const Settings& settings) {
    const std::string input = inputOf(which, settings);
    const auto outputs = [&](const char* prefix) {
        const auto path = [&](const char* name) {
            return (settings.scratch / (std::string(prefix) + name)).string();
        };
        return Outputs{path("rules.tsv"), path("item-sets.tsv"), path("messages")};
    };
    const Outputs outcome = outputs("");
    const Outputs expected = outputs("old-");

    const std::size_t rounds = which.slow ? (settings.rounds + 1) / 2 : settings.rounds;
    Comparison comparison{which.name(), rounds, {}, {}};
    for (std::size_t round = 0; round < rounds; ++round)
        for (const bool old : {true, false}) {
            const ToolRun run = bench::runTool(old ? settings.oldTool : settings.newTool,
                                               words(which.options), input, outcome);
            for (const auto file : {&Outputs::rules, &Outputs::itemSets, &Outputs::messages})
                if (round == 0 && old)
                    fs::rename(outcome.*file, expected.*file);
                else
                    bench::checkSameFiles(expected.*file, outcome.*file);
            (old ? comparison.old : comparison.present).add(run);
        }
    return comparison;
}

std::string median(const Samples& seconds) {
    return bench::milliseconds(seconds.median());
}

/// The ratio as text; empty if the time is too short to tell.
std::string ratio(const Samples& old, const Samples& present) {
    if (std::min(old.median(), present.median()) < LEAST_TIME)
        return "";
    return bench::fixed(old.median() / present.median(), 2);
}

std::string peak(const Measured& measured) {
    return bench::megabytes(static_cast<std::size_t>(measured.peakMemory.greatest()));
}

void printRow(const Table& table, const Comparison& comparison) {
    const auto& [name, rounds, old, present] = comparison;
    table.row({name, std::to_string(rounds), median(old.cpu), bench::millisecondRange(old.cpu),
               median(present.cpu), bench::millisecondRange(present.cpu),
               ratio(old.cpu, present.cpu), peak(old), peak(present)});
}

void printPhases(const std::vector<Comparison>& comparisons) {
    const Table table("Phases: wall clock, ms, medians",
                      {"case", "reading + index, old", "new", "old/new", "search + rules, old",
                       "new", "old/new", "output, old", "new", "old/new"});
    for (const Comparison& comparison : comparisons) {
        const Measured& old = comparison.old;
        const Measured& present = comparison.present;
        std::vector<std::string> cells{comparison.name};
        for (std::size_t i = 0; i < old.phases.size(); ++i) {
            cells.push_back(median(old.phases[i]));
            cells.push_back(median(present.phases[i]));
            cells.push_back(ratio(old.phases[i], present.phases[i]));
        }
        table.row(cells);
    }
}

std::vector<Case> chosen(const Settings& settings) {
    std::vector<Case> cases;
    for (const Case& each : CASES)
        if (std::regex_search(each.name(), settings.pattern) &&
            (each.origin == Origin::GENERATED ||
             (!settings.data.empty() && fs::exists(inputOf(each, settings)))))
            cases.push_back(each);
    if (cases.empty())
        throw std::runtime_error("no case has such a name and its file");
    return cases;
}

void run(const Settings& settings) {
    const std::vector<Case> cases = chosen(settings);
    bench::printEnvironment();
    const Table table("Whole runs: processor time, ms, medians; peak of memory, MB",
                      {"case", "rounds", "old", "least..greatest", "new", "least..greatest",
                       "old/new", "old, MB", "new, MB"});
    std::vector<Comparison> comparisons;
    for (const Case& each : cases) {
        comparisons.push_back(compared(each, settings));
        printRow(table, comparisons.back());
    }
    printPhases(comparisons);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (arguments.size() != 5 && arguments.size() != 6) {
            std::fprintf(stderr, "to be called by bench/against\n");
            return 1;
        }
        run({arguments[0], arguments[1], arguments[2], std::stoul(arguments[3]),
             std::regex(arguments[4]), arguments.size() == 6 ? arguments[5] : ""});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}
