#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// What the programs are told on their command lines. Each heeds what concerns it.
struct Arguments {
    std::string data;                ///< -d: a folder of transaction files; empty for none.
    std::uint32_t runs = 5;          ///< -r: runs of everything, of which the medians are printed.
    std::uint32_t rows = 1'000'000;  ///< -n: rows, records or values of generated data.
    std::uint32_t megabytes = 64;    ///< -m: the size up to which reading is followed.

    std::string file;              ///< A transaction file to be mined alone, at these settings:
    std::uint32_t minCount = 5;    ///< -c
    std::uint32_t windowSize = 0;  ///< -w
    std::uint32_t maxOrder = 0;    ///< -o
};

/// The `main` of a performance program: reads the arguments, prints the environment and runs
/// `body`. Returns 1, with a message on standard error, for arguments that it cannot read and when
/// `body` throws.
int runProgram(int argc, char** argv, void (*body)(const Arguments&));

}  // namespace bench
