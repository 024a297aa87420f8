#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace bench {

/// A generated transaction file. A row depends only on the shape and the row's number, so a file
/// and its shuffled form have the same content.
struct RowTable {
    std::size_t rows = 0;
    std::size_t rowsOfEntity = 4;
    std::size_t itemsOfRow = 8;
    std::size_t items = 10'000;  ///< The number of items to draw from; at most 10 million.
    bool shuffled = false;       ///< Otherwise keys ascend, and the times of each key.

    /// The bytes of a row.
    std::size_t rowSize() const;

    /// Writes the file.
    void write(std::ostream& os) const;
};

}  // namespace bench
