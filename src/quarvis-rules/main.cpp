#include "config.hpp"
#include "driver.hpp"
#include "options.hpp"

int main(int argc, char** argv) {
    // A handler makes the stack unwind before an exception ends the process, so files are closed
    // with what was written to them.
    try {
        Configuration config = configure(argc, argv);
        mine(config);
        return 0;
    } catch (...) {
        throw;
    }
}
