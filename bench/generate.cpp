/// Writes a generated transaction file.
///
///     bench-generate <kind> <file> [<size>]

#include <cstdio>
#include <exception>
#include <string>

#include "support/generated_tables.hpp"

namespace {

int usage(const char* program) {
    std::fprintf(stderr, "usage: %s <kind> <file> [<size>]\n", program);
    for (const bench::GeneratedTable& table : bench::generatedTables())
        std::fprintf(stderr, "  %-10s %zu %s\n", table.kind.c_str(), table.usualSize,
                     table.unit.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4)
        return usage(argv[0]);
    try {
        bench::generate(argv[1], argc == 4 ? std::stoul(argv[3]) : 0, argv[2]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}
