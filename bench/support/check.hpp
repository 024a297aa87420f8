#pragma once

#include <cstddef>
#include <string>

/// A wrong result has no time: every program checks its results before it prints how long they
/// took, and a failed check ends it.
namespace bench {

/// Throws `std::runtime_error` unless `holds`.
void check(bool holds, const std::string& what);

/// Throws the same unless `what` was found in the expected number.
void checkCount(const std::string& what, std::size_t found, std::size_t expected);

}  // namespace bench
