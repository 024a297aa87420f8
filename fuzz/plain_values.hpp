#pragma once

#include <cstddef>
#include <string>

namespace fuzz {

template <class T>
struct Parsed {
    T value;
    std::size_t used;  ///< Characters.
};

/// What `moxtel::string::parse<T>` must give for a text without a NUL, in the plainest form. For
/// the integers, `float`, `double` and `bool`.
template <class T>
Parsed<T> plainParse(const std::string& text);

}  // namespace fuzz
