#pragma once

#include <cstddef>
#include <string>

namespace moxtel::string {

/// Scans the printf specifier whose `%` stands at `i` in `src`: the position of its conversion
/// character, or `i` when no specifier that the scanner knows follows. It knows `*` and the length
/// modifiers, but no flag, width in digits or precision. The character after the `%` has to stand
/// before `len`; those after it are not held against that bound.
std::size_t consumePrintfSpecifier(const std::string& src, std::size_t i, std::size_t len);

}  // namespace moxtel::string
