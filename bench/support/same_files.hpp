#pragma once

#include <string>

namespace bench {

/// Throws `std::runtime_error`, with the line of the first difference, unless both files can be
/// read and hold the same bytes. Reads them in blocks.
void checkSameFiles(const std::string& left, const std::string& right);

}  // namespace bench
