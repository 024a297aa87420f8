#include "program.hpp"

#include <cstdio>
#include <exception>

#include <moxtel/cmdline.hpp>

#include "environment.hpp"

namespace bench {

namespace {

using moxtel::cmdline::CmdLine;
using moxtel::cmdline::Domain;

void addOptions(CmdLine& cmdline) {
    cmdline.add('d', "data", Domain::STRING, "Folder of transaction files.", 1, false);
    cmdline.add('r', "runs", Domain::UINT, "Runs of everything.", 1, false);
    cmdline.add('n', "rows", Domain::UINT, "Rows of generated data.", 1, false);
    cmdline.add('m', "megabytes", Domain::UINT, "Greatest generated file.", 1, false);
    cmdline.add('c', "count", Domain::UINT, "Minimum count.", 1, false);
    cmdline.add('w', "window", Domain::UINT, "Window size.", 1, false);
    cmdline.add('o', "order", Domain::UINT, "Maximum order.", 1, false);
}

void apply(const CmdLine::Binding& binding, Arguments& arguments) {
    const CmdLine::Value& value = binding.values[0];
    switch (binding.source->shortKey()) {
        case 'd':
            arguments.data = value.raw;
            break;
        case 'r':
            arguments.runs = value.data.ui;
            break;
        case 'n':
            arguments.rows = value.data.ui;
            break;
        case 'm':
            arguments.megabytes = value.data.ui;
            break;
        case 'c':
            arguments.minCount = value.data.ui;
            break;
        case 'w':
            arguments.windowSize = value.data.ui;
            break;
        case 'o':
            arguments.maxOrder = value.data.ui;
            break;
        default:
            break;
    }
}

bool parse(int argc, char** argv, Arguments& arguments) {
    CmdLine cmdline;
    addOptions(cmdline);
    const CmdLine::Result result = cmdline.parse(argc, argv);
    for (const CmdLine::Binding& binding : result.bindings)
        apply(binding, arguments);
    if (result.excess.size() > 0)
        arguments.file = result.excess[0];
    return result && result.excess.size() <= 1 && arguments.runs > 0 && arguments.rows > 0;
}

}  // namespace

int runProgram(int argc, char** argv, void (*body)(const Arguments&)) {
    Arguments arguments;
    if (!parse(argc, argv, arguments)) {
        std::fprintf(stderr, "usage: %s [-d folder] [-r runs] [-n rows] [-m megabytes]\n", argv[0]);
        return 1;
    }
    printEnvironment();
    try {
        body(arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}

}  // namespace bench
