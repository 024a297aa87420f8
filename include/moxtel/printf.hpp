#pragma once

#include <cstdarg>
#include <string>

namespace moxtel::string {

/// `fmt` formatted with `args` by the printf rules, whole, whatever its length. `args` is consumed.
/// Throws `std::invalid_argument` when the platform reports an encoding error.
std::string vstrprintf(const std::string& fmt, std::va_list args);

}  // namespace moxtel::string
