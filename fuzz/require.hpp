#pragma once

#include <sstream>
#include <string>

#include "targets.hpp"

namespace fuzz {

/// Throws a `Failure` with both values unless they are equal.
template <class Got, class Expected>
void requireEqual(const char* what, const Got& got, const Expected& expected) {
    if (got == expected)
        return;
    std::ostringstream message;
    message << what << ": " << got << " instead of " << expected;
    throw Failure(message.str());
}

}  // namespace fuzz
