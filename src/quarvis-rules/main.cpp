#include "config.hpp"
#include "driver.hpp"
#include "memory_limit.hpp"
#include "options.hpp"

int main(int argc, char** argv) {
    // A handler makes the stack unwind before an exception ends the process, so files are closed
    // with what was written to them.
    try {
        limitMemory();
        Configuration config = configure(argc, argv);
        mine(config);
        return 0;
    } catch (...) {
        throw;
    }
}
