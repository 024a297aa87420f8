#include "tool_run.hpp"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "timed_command.hpp"

namespace bench {

ToolRun runTool(const std::string& tool, const std::vector<std::string>& options,
                const std::string& input, const Outputs& files) {
    for (const std::string& file : {files.rules, files.itemSets})
        std::filesystem::remove(file);

    std::vector<std::string> arguments{tool};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {input, files.rules, files.itemSets});
    const TimedCommand command = timeCommand(arguments);

    std::ofstream messages(files.messages, std::ios::binary);
    messages << command.messages;
    if (!messages.flush())
        throw std::runtime_error("cannot write " + files.messages);

    const double indexed = command.momentOf(" frequent item sets of size 1. ");
    const double searched = command.momentOf(" ... preparing rules for reporting.");
    return {command.cpu, command.peakMemory, indexed, searched - indexed, command.wall - searched};
}

}  // namespace bench
