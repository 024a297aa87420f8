#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace bench {

/// A kind of generated transaction file.
struct GeneratedTable {
    std::string kind;
    std::string unit;       ///< What its size counts.
    std::size_t usualSize;  ///< The size in the measurements.
    void (*write)(std::ostream& os, std::size_t size);
};

/// All kinds. A kind and a size always give the same bytes.
const std::vector<GeneratedTable>& generatedTables();

/// The kind of a name. Throws `std::runtime_error`, which lists the kinds, for any other name.
const GeneratedTable& generatedTable(const std::string& kind);

/// Writes a table of the kind to a file; a `size` of 0 stands for the usual size. Throws
/// `std::runtime_error` when there is no room for it.
void generate(const std::string& kind, std::size_t size, const std::string& path);

}  // namespace bench
