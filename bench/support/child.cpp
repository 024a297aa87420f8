#include "child.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>

namespace bench {

namespace {

/// The child's part. It must not run the exit handlers of the parent.
[[noreturn]] void report(const std::function<void()>& body, int pipe, const void* result,
                         std::size_t size) {
    try {
        body();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        _exit(1);
    }
    _exit(write(pipe, result, size) == static_cast<ssize_t>(size) ? 0 : 1);
}

}  // namespace

void runInChild(const std::function<void()>& body, void* result, std::size_t size) {
    std::fflush(stdout);
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == -1)
        throw std::runtime_error("no process");
    if (child == 0)
        report(body, ends[1], result, size);
    close(ends[1]);
    const ssize_t got = read(ends[0], result, size);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0 || got != static_cast<ssize_t>(size))
        throw std::runtime_error("a run failed");
}

}  // namespace bench
