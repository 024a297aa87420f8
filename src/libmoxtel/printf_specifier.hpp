#pragma once

#include <cstddef>
#include <string>

namespace moxtel::string {

/// Scans the printf specifier whose `%` stands at `i` in `src`. Returns the position of its
/// conversion character, or `i` when the scanner does not know the specifier. It knows `*` and the
/// length modifiers, but no flag, no width in digits and no precision. The character after the `%`
/// must stand before `len`; the later characters are not checked against `len`.
std::size_t consumePrintfSpecifier(const std::string& src, std::size_t i, std::size_t len);

}  // namespace moxtel::string
