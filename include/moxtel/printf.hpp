#pragma once

#include <cstdarg>
#include <string>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// `fmt` formatted with `args` by the printf rules, up to the first NUL in the result; formatted
/// twice, to know the length before. `args` is consumed. Throws `std::invalid_argument` with the
/// message "vstrprintf: a value cannot be encoded" when the platform reports an error: an encoding
/// error, or a result of more than `INT_MAX` characters.
std::string vstrprintf(const std::string& fmt, std::va_list args);

}  // namespace moxtel::string

#pragma GCC visibility pop
