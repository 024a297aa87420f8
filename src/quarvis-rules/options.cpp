#include "options.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <moxtel/cmdline.hpp>
#include <moxtel/file_stream.hpp>

using moxtel::cmdline::CmdLine;
using moxtel::cmdline::Domain;

namespace {

void addOptions(CmdLine& cmdline) {
    cmdline.add('?', "help", Domain::ALIAS, "Display this message.", 0, false);
    cmdline.add('c', "count", Domain::UINT, "Set the minimum count necessary for inclusion.", 1,
                false);
    cmdline.add('C', "confidence", Domain::FLOAT,
                "Set the minimum confidence necessary for inclusion.", 1, false);
    cmdline.add('l', "lift", Domain::FLOAT, "Set the minimum lift necessary for inclusion.", 1,
                false);
    cmdline.add('o', "order", Domain::UINT, "Set the maximum rule order to mine.", 1, false);
    cmdline.add('s', "support", Domain::FLOAT, "Set the minimum support necessary for inclusion.",
                1, false);
    cmdline.add('V', "conviction", Domain::FLOAT,
                "Set the maximum conviction necessary for inclusion.", 1, false);
    cmdline.add('v', "verbose", Domain::ALIAS, "Print additional information.", 0, false);
    cmdline.add('w', "window", Domain::UINT, "Set the window size", 1, false);
}

/// Stores the value of one option occurrence; true when the option asks for help.
bool apply(const CmdLine::Binding& binding, Configuration& config) {
    const auto whole = [&binding] { return binding.values[0].data.ui; };
    const auto real = [&binding] { return static_cast<double>(binding.values[0].data.fl); };
    switch (binding.source->shortKey()) {
        case '?':
            return true;
        case 'c':
            config.minCount = whole();
            break;
        case 'C':
            config.minConfidence = real();
            break;
        case 'l':
            config.minLift = real();
            break;
        case 'o':
            config.maxOrder = whole();
            break;
        case 's':
            config.minSupport = real();
            break;
        case 'V':
            config.maxConviction = real();
            break;
        case 'v':
            config.verbose = false;
            break;
        case 'w':
            config.windowSize = whole();
            break;
        default:
            break;
    }
    return false;
}

/// Throws when a message to `stream` was lost. The caller sets `errno` to 0 before it prints.
void refuseLoss(std::FILE* stream, const char* name) {
    if (std::fflush(stream) != 0 || std::ferror(stream) != 0)
        throw moxtel::io::FileError("write", name, errno != 0 ? errno : EIO);
}

}  // namespace

Configuration configure(int argc, char** argv) {
    Configuration config;
    config.inputFile = '-';
    config.outputFile = '-';

    CmdLine cmdline;
    addOptions(cmdline);
    const CmdLine::Result result = cmdline.parse(argc, argv);

    bool help = false;
    for (const CmdLine::Binding& binding : result.bindings)
        help = apply(binding, config) || help;
    if (help || !result)
        usage(result ? EXIT_SUCCESS : EXIT_FAILURE, argc, argv);

    std::string* const files[] = {&config.inputFile, &config.outputFile, &config.itemSetFile};
    std::size_t position = 0;
    for (std::string* file : files)
        if (position < result.excess.size())
            *file = result.excess[position++];

    if (config.maxConviction < 0.0)
        config.maxConviction = std::numeric_limits<double>::infinity();
    return config;
}

void usage(int status, int argc, char** argv) {
    errno = 0;
    std::fprintf(stderr,
                 "usage: %s [input] [output] [item-sets]\n"
                 "\n"
                 "OPTIONS:\n"
                 "  -?, --help\t\tDisplay this message.\n"
                 "  -c, --count=i\t\tSet the minimum count necessary for inclusion (default: 5).\n"
                 "  -C, --confidence=f\tSet the minimum confidence necessary for inclusion "
                 "(default: 0).\n"
                 "  -l, --lift=f\t\tSet the minimum lift necessary for inclusion (default: 0).\n"
                 "  -o, --order=i\t\tSet the maximum rule order to mine (default: 0).\n"
                 "  -s, --support=f\tSet the minimum support necessary for inclusion (default: "
                 "0).\n"
                 "  -V, --conviction=f\tSet the maximum conviction neccessary for inclusion "
                 "(default: infinity).\n"
                 "  -v, --verbose\t\tPrint additional information.\n"
                 "  -w, --window\t\tSet the size of the window (default: 0)\n"
                 "\n",
                 argc > 0 ? argv[0] : "quarvis-rules");
    refuseLoss(stderr, "standard error");
    refuseLoss(stdout, "standard output");
    std::exit(status);
}
