#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// The command line of the programs. Each program uses what concerns it.
struct Arguments {
    std::string data;                ///< -d: a folder of transaction files; empty for none.
    std::uint32_t runs = 5;          ///< -r: runs of everything; medians are printed.
    std::uint32_t rows = 1'000'000;  ///< -n: rows, records or values of generated data.
    std::uint32_t megabytes = 64;    ///< -m: the greatest size of files in the tables of growth.

    std::string file;              ///< A transaction file to mine alone, with these settings:
    std::uint32_t minCount = 5;    ///< -c
    std::uint32_t windowSize = 0;  ///< -w
    std::uint32_t maxOrder = 0;    ///< -o
};

/// The `main` of a performance program: reads the arguments, prints the environment and runs
/// `body`. Returns 1, with a message on standard error, when the arguments are wrong or `body`
/// throws.
int runProgram(int argc, char** argv, void (*body)(const Arguments&));

}  // namespace bench
