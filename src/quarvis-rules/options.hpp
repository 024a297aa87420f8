#pragma once

#include "config.hpp"

/// Parses the command line into settings. When it asks for help or does not parse, prints the usage
/// text and ends the process, with status 0 if it parsed and 1 if not. Throws
/// `moxtel::io::FileError` instead when the text, or a message before it, cannot be written.
Configuration configure(int argc, char** argv);

/// Prints the usage text to standard error and ends the process with `status`. Throws
/// `moxtel::io::FileError` instead when the text, or a message before it, cannot be written.
[[noreturn]] void usage(int status, int argc, char** argv);
