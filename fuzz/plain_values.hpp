#pragma once

#include <cstddef>
#include <string>

namespace fuzz {

template <class T>
struct Parsed {
    T value;
    std::size_t used;  ///< The number of characters used.
};

/// A plain version of `moxtel::string::parse<T>`, for texts without a NUL. T may be an integer
/// type, `float`, `double` or `bool`.
template <class T>
Parsed<T> plainParse(const std::string& text);

}  // namespace fuzz
