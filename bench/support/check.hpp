#pragma once

#include <cstddef>
#include <string>

/// What is wrong has no time: every program checks its results before it prints how long they took,
/// and a check that fails ends it.
namespace bench {

/// Throws `std::runtime_error` unless `holds`.
void check(bool holds, const std::string& what);

/// The same unless the number of `what` found is the one expected.
void checkCount(const std::string& what, std::size_t found, std::size_t expected);

}  // namespace bench
