/// Measures how fast the tool reads a file of very many rows, and with how much memory.
/// `bench/against` builds the tool and calls
///
///     bench-many <tool> <scratch folder> <rounds> <rows>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/check.hpp"
#include "support/child.hpp"
#include "support/environment.hpp"
#include "support/many_rows.hpp"
#include "support/samples.hpp"
#include "support/table.hpp"
#include "support/temp_file.hpp"
#include "support/tool_run.hpp"

namespace {

namespace fs = std::filesystem;

using bench::ManyRows;
using bench::Outputs;
using bench::Samples;
using bench::Table;
using bench::ToolRun;

constexpr const char* LEAST_COUNT = "1000000";  // of the usual four million histories

/// Writes the file in a process of its own, so that its memory does not count for the tool. Returns
/// the number of entities.
std::size_t written(const ManyRows& shape, const std::string& path) {
    return bench::inChild([&] {
        std::ofstream out(path, std::ios::binary);
        const std::size_t entities = shape.write(out);
        bench::check(static_cast<bool>(out.flush()), "no room for " + path);
        return entities;
    });
}

void run(const std::string& tool, const fs::path& scratch, std::size_t rounds, std::size_t rows) {
    bench::printEnvironment();
    ManyRows shape;
    shape.rows = rows;
    const std::string input = scratch / "many_rows.tsv";
    const std::size_t entities = written(shape, input);
    const std::string read = "Read " + input + " with " + std::to_string(rows) +
                             " transaction(s) over " + std::to_string(entities) +
                             " history record(s).\n";
    const Outputs outputs{scratch / "rules.tsv", scratch / "item-sets.tsv", scratch / "messages"};

    Samples reading;
    Samples cpu;
    Samples peak;
    for (std::size_t round = 0; round < rounds; ++round) {
        const ToolRun run = bench::runTool(tool, {"-c", LEAST_COUNT}, input, outputs);
        bench::check(bench::contentOf(outputs.messages).starts_with(read),
                     "another number of rows");
        reading.add(run.reading);
        cpu.add(run.cpu);
        peak.add(static_cast<double>(run.peakMemory));
    }

    const auto bytes = static_cast<double>(fs::file_size(input));
    const Table table("Many rows, -c " + std::string(LEAST_COUNT) + ": reading and index",
                      {"rows", "MB", "wall clock, ms", "least..greatest", "MB/s", "ns/row",
                       "whole run, CPU ms", "peak, MB", "peak/file"});
    table.row({bench::grouped(rows), bench::fixed(bytes / 1e6, 1),
               bench::milliseconds(reading.median()), bench::millisecondRange(reading),
               bench::fixed(bytes / 1e6 / reading.median(), 1),
               bench::fixed(reading.median() * 1e9 / static_cast<double>(rows), 1),
               bench::milliseconds(cpu.median()), bench::fixed(peak.greatest() / 1e6, 1),
               bench::fixed(peak.greatest() / bytes, 2)});
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 5) {
            std::fprintf(stderr, "to be called by bench/against\n");
            return 1;
        }
        run(argv[1], argv[2], std::stoul(argv[3]), std::stoul(argv[4]));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}
