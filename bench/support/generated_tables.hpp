#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace bench {

/// A kind of generated transaction file.
struct GeneratedTable {
    std::string kind;
    std::string unit;       ///< What its size is a number of.
    std::size_t usualSize;  ///< That of the measurements.
    void (*write)(std::ostream& os, std::size_t size);
};

/// All kinds. A kind and a size always give the same bytes.
const std::vector<GeneratedTable>& generatedTables();

/// Throws `std::runtime_error`, with the kinds that there are, for any other.
const GeneratedTable& generatedTable(const std::string& kind);

/// Writes a table of the kind, of its usual size where `size` is 0, to a file. Throws
/// `std::runtime_error` when there is no room for it.
void generate(const std::string& kind, std::size_t size, const std::string& path);

}  // namespace bench
