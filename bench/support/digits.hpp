#pragma once

#include <cstddef>
#include <string>

namespace bench {

/// Appends `prefix` and the number in decimal, padded with zeros to `width` characters in all. A
/// number that does not fit loses its first digits.
void appendDigits(std::string& text, char prefix, std::size_t number, std::size_t width);

}  // namespace bench
