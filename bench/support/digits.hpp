#pragma once

#include <cstddef>
#include <string>

namespace bench {

/// Appends `prefix` and the number in decimal, with zeros in front, `width` characters in all. A
/// number with more digits than fit loses the first ones.
void appendDigits(std::string& text, char prefix, std::size_t number, std::size_t width);

}  // namespace bench
