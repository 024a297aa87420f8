#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Runs the built program and compares all of its output, byte by byte. No shell is involved, so
/// arguments reach the program unchanged.
namespace tool {

/// The files of a directory: contents by relative path. A path that ends in '/' is a directory and
/// has no content.
using Files = std::map<std::string, std::string>;

struct Call {
    /// The arguments after the program's name.
    std::vector<std::string> args = {};
    /// The bytes on standard input.
    std::string input = {};
    /// The files in the working directory before the run.
    Files files = {};
    /// The name by which the program is called. The program is always the same.
    std::string name = "quarvis-rules";
    /// The limit of the program's data in bytes, if any.
    std::optional<std::uint64_t> memory = {};
    /// The limit of the size of a file in bytes, if any.
    std::optional<std::uint64_t> fileSize = {};
    /// The files that replace descriptors of the program, opened for reading and writing.
    std::map<int, std::string> opened = {};
    /// The descriptors that are closed.
    std::set<int> closed = {};
    /// The descriptors that write to a pipe without a reader. SIGPIPE is ignored.
    std::set<int> broken = {};
    /// Variables added to the environment, as "NAME=value".
    std::vector<std::string> environment = {};
};

struct Outcome {
    /// The bytes on standard output and on standard error.
    std::string out = {};
    std::string err = {};
    /// The exit status; after a signal, its negated number.
    int status = 0;
    /// The files in the working directory after the run, including those from before it.
    Files files = {};
};

/// Runs the program in a new working directory, which is removed afterwards. A program that has not
/// ended after a minute is killed (status -SIGALRM). Throws `std::system_error` when the run cannot
/// be set up.
Outcome run(const Call& call);

/// Runs the program. Fails the current test, at the caller's line, for each part of the outcome
/// that differs from the expected one.
void expectRun(const Call& call, const Outcome& expected, const char* file = __builtin_FILE(),
               int line = __builtin_LINE());

}  // namespace tool
