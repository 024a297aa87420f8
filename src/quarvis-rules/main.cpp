#include <csignal>

#include "config.hpp"
#include "driver.hpp"
#include "options.hpp"
#include "standard_streams.hpp"

int main(int argc, char** argv) {
    // With a handler the stack unwinds before an exception ends the process. So files are closed
    // and keep what was written to them.
    try {
        openStandardDescriptors();
        // A write beyond the limit of the file size then fails instead of ending the process.
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
