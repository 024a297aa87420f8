// Registers three options and prints their values from a command line.
#include <iostream>
#include <iterator>

#include <moxtel/cmdline.hpp>

using moxtel::cmdline::CmdLine;
using moxtel::cmdline::Domain;

int main() {
    CmdLine options;
    const unsigned depth = options.add('d', "depth", Domain::UINT, "levels to visit", 1, false);
    const unsigned quiet = options.add('q', "quiet", Domain::ALIAS, "print no names", 0, false);
    options.addRanged('n', "names", Domain::STRING, "one or two names", 1, 2, false);

    const char* const arguments[] = {"program", "--depth=5", "-q", "-n", "ann", "bob", "in.txt"};
    const CmdLine::Result result = options.parse(std::size(arguments), arguments);
    if (!result)
        return 1;  // The parser has printed the reason.

    for (const CmdLine::Binding& binding : result.bindings) {
        std::cout << "argument " << binding.pos << ": ";
        if (binding.source->serial() == depth)
            std::cout << binding.values[0].data.ui << " levels\n";
        else if (binding.source->serial() == quiet)
            std::cout << binding.source->description << '\n';
        else
            std::cout << binding.values.size() << " names, first " << binding.values[0].raw << '\n';
    }
    for (const std::string& file : result.excess)
        std::cout << "file " << file << '\n';
}
