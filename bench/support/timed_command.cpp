#include "timed_command.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>

#include "stopwatch.hpp"

namespace bench {

namespace {

/// The child's part.
[[noreturn]] void execute(const std::vector<std::string>& arguments, int standardError) {
    std::vector<char*> words;
    words.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(standardError, STDERR_FILENO);
    execv(words[0], words.data());
    _exit(127);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Reads standard error to the end of the pipe.
void readMessages(int pipe, const Stopwatch& watch, TimedCommand& result) {
    std::array<char, 65536> block;
    for (std::size_t start = 0;;) {
        const ssize_t got = read(pipe, block.data(), block.size());
        if (got == -1 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        const double now = watch.elapsed().wall;
        std::string& text = result.messages;
        text.append(block.data(), static_cast<std::size_t>(got));
        for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
            result.lines.push_back({now, text.substr(start, end - start)});
    }
}

}  // namespace

double TimedCommand::momentOf(std::string_view ending) const {
    for (const Line& line : lines)
        if (std::string_view(line.text).ends_with(ending))
            return line.end;
    throw std::runtime_error("no message that ends with \"" + std::string(ending) + '"');
}

TimedCommand timeCommand(const std::vector<std::string>& arguments) {
    std::fflush(stdout);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const Stopwatch watch;
    const pid_t child = fork();
    if (child == -1)
        throw std::runtime_error("no process");
    if (child == 0)
        execute(arguments, ends[1]);
    close(ends[1]);

    TimedCommand result;
    readMessages(ends[0], watch, result);
    close(ends[0]);
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) == -1)
        if (errno != EINTR)
            throw std::runtime_error("cannot wait for " + arguments[0]);
    result.wall = watch.elapsed().wall;
    result.cpu = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    result.peakMemory = static_cast<std::size_t>(usage.ru_maxrss) * 1024;
    if (status != 0)
        throw std::runtime_error(arguments[0] + " failed:\n" + result.messages);
    return result;
}

}  // namespace bench
