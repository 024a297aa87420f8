#include <csignal>

#include "config.hpp"
#include "driver.hpp"
#include "options.hpp"
#include "standard_streams.hpp"

int main(int argc, char** argv) {
    // A handler makes the stack unwind before an exception ends the process, so files are closed
    // with what was written to them.
    try {
        openStandardDescriptors();
        // A file that may not grow further is then an error of the write, and no sudden end.
        std::signal(SIGXFSZ, SIG_IGN);
        StandardStreams streams;
        Configuration config = configure(argc, argv);
        mine(config);
        streams.close();
        return 0;
    } catch (...) {
        throw;
    }
}
