#include <ios>

#include "config.hpp"
#include "driver.hpp"
#include "options.hpp"

int main(int argc, char** argv) {
    // A handler makes the stack unwind before an exception ends the process, so files are closed
    // with what was written to them.
    try {
        // Of each standard stream one side alone is used, so they need not keep in step; standard
        // input is then read in blocks.
        std::ios::sync_with_stdio(false);
        Configuration config = configure(argc, argv);
        mine(config);
        return 0;
    } catch (...) {
        throw;
    }
}
