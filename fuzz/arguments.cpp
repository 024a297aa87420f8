#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <moxtel/cmdline.hpp>

#include "arguments_model.hpp"
#include "captured_stream.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::cmdline::CmdLine;
using moxtel::cmdline::Domain;

class Registry : public CmdLine {
  public:
    Registry() {
        for (const OptionRow& row : OPTIONS)
            addRanged(row.shortKey, row.longKey, static_cast<Domain::Value>(row.domain), "",
                      row.least, row.most, false);
    }
};

/// Splits the bytes into arguments, each ended by a NUL.
std::vector<std::string> argumentsOf(Bytes bytes) {
    std::vector<std::string> arguments;
    std::string argument;
    for (const std::uint8_t byte : bytes) {
        if (byte == 0) {
            arguments.push_back(argument);
            argument.clear();
        } else {
            argument += static_cast<char>(byte);
        }
    }
    if (!argument.empty())
        arguments.push_back(argument);
    return arguments;
}

std::string describe(const CmdLine::Value& value, Domain domain) {
    switch (domain) {
        case Domain::BOOL:
            return describeValue(value.raw, value.data.b);
        case Domain::SINT:
            return describeValue(value.raw, value.data.si);
        case Domain::FLOAT:
            return describeValue(value.raw, value.data.fl);
        default:
            return describeValue(value.raw, value.data.ui);
    }
}

Outcome outcomeOf(const CmdLine::Result& result) {
    Outcome outcome;
    outcome.success = result.success;
    for (const CmdLine::Binding& binding : result.bindings) {
        outcome.bindings.push_back(describeBinding(binding.pos, binding.source->serial()));
        for (const CmdLine::Value& value : binding.values)
            outcome.bindings.push_back(describe(value, binding.source->domain));
    }
    for (const std::string& text : result.excess)
        outcome.excess.push_back(text);
    return outcome;
}

Outcome parsed(const std::vector<std::string>& arguments) {
    static const Registry REGISTRY;
    std::vector<const char*> argv = {"program"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());

    CapturedStream out(stdout);
    CapturedStream err(stderr);
    Outcome outcome = outcomeOf(REGISTRY.parse(static_cast<int>(argv.size()), argv.data()));
    outcome.out = out.text();
    outcome.err = err.text();
    return outcome;
}

}  // namespace

void fuzzArguments(Bytes bytes) {
    const std::vector<std::string> arguments = argumentsOf(bytes);
    const Outcome expected = modelled(arguments);
    const Outcome outcome = parsed(arguments);
    if (outcome != expected)
        throw Failure("the arguments give\n" + describe(outcome) + "instead of\n" +
                      describe(expected));
}

}  // namespace fuzz
