#pragma once

#include <cstdarg>
#include <string>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// @{
/// `fmt` formatted with `args` by the printf rules, up to the first NUL in the result. The text is
/// formatted twice, first to learn its length. `args` is consumed. `fmt` is not null. The compiler
/// checks the format of the second form. Any thread may call it.
///
/// Throws `std::invalid_argument` with the message "vstrprintf: a value cannot be encoded" when the
/// platform reports an error: an encoding error, or a result of more than `INT_MAX` characters.
std::string vstrprintf(const std::string& fmt, std::va_list args);
[[gnu::format(printf, 1, 0)]] std::string vstrprintf(const char* fmt, std::va_list args);
/// @}

}  // namespace moxtel::string

#pragma GCC visibility pop
