#pragma once

#include <cstdint>
#include <string>

#include "oracle/table.hpp"

namespace oracle {

/// The layout of a table in its file. It does not change what is read.
struct FileForm {
    bool shuffled = false;   ///< Rows in random order; otherwise by entity and time.
    bool split = false;      ///< Transactions over several rows; otherwise one row each.
    std::uint64_t seed = 0;  ///< The same seed gives the same bytes.
};

/// Writes a table as a transaction file: a header, and rows of an entity, a time and items. Names
/// with a tab are quoted. Throws `std::invalid_argument` for a name that no file can hold: an empty
/// one, one that contains a line feed, a carriage return or the byte 0xFF, one that begins with a
/// double quote, and one with both a tab and a double quote.
std::string textOf(const Table& table, const FileForm& form = {});

}  // namespace oracle
