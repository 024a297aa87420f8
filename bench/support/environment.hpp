#pragma once

namespace bench {

/// Prints what the figures after it depend on: the machine and its load, the compiler and its
/// flags, and the version. Warns when the build is not optimised and when others use the machine.
void printEnvironment();

}  // namespace bench
