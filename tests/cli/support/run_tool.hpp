#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Runs the built program and compares everything that it leaves behind, byte by byte. No shell is
/// involved: arguments reach the program as they are given.
namespace tool {

/// What a directory holds: contents by path, relative to it. A path that ends in '/' is a
/// directory and has no content of its own.
using Files = std::map<std::string, std::string>;

struct Call {
    /// The arguments after the program's name.
    std::vector<std::string> args = {};
    /// The bytes on standard input.
    std::string input = {};
    /// What the working directory, otherwise empty, holds beforehand.
    Files files = {};
    /// The name under which the program is called; the program run is always the same.
    std::string name = "quarvis-rules";
    /// How many bytes of data the program may have, if that is limited.
    std::optional<std::uint64_t> memory = {};
    /// How many bytes a file may have, if that is limited.
    std::optional<std::uint64_t> fileSize = {};
    /// The files that descriptors of the program are opened on for reading and writing, instead of
    /// what they have otherwise.
    std::map<int, std::string> opened = {};
    /// The descriptors that are closed.
    std::set<int> closed = {};
    /// The descriptors that lead into a pipe which nobody reads, with SIGPIPE ignored.
    std::set<int> broken = {};
    /// Variables that are put into the environment, as "NAME=value".
    std::vector<std::string> environment = {};
};

struct Outcome {
    /// The bytes on standard output and on standard error.
    std::string out = {};
    std::string err = {};
    /// The exit status; after a signal, its number with a minus sign.
    int status = 0;
    /// What the working directory holds afterwards, what was there beforehand included.
    Files files = {};
};

/// Runs the program in a fresh working directory, which is removed afterwards. A program that has
/// not ended after a minute is killed (status -SIGALRM). Throws `std::system_error` when the run
/// cannot be set up.
Outcome run(const Call& call);

/// Runs the program and fails the current test, at the caller's line, for every part of the outcome
/// that differs from what is expected.
void expectRun(const Call& call, const Outcome& expected, const char* file = __builtin_FILE(),
               int line = __builtin_LINE());

}  // namespace tool
