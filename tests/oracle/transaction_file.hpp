#pragma once

#include <cstdint>
#include <string>

#include "oracle/table.hpp"

namespace oracle {

/// How a table stands in its file. None of it changes what is read.
struct FileForm {
    bool shuffled = false;   ///< Rows in any order; else by entity and time.
    bool split = false;      ///< Transactions over several rows; else a row each.
    std::uint64_t seed = 0;  ///< The same seed gives the same bytes.
};

/// The transaction file that holds the table: a header, and rows of an entity, a time and items.
/// Names with a tab are quoted. Throws `std::invalid_argument` for a name that no file can hold:
/// the empty one, one with a line feed, a carriage return, the byte 0xFF or a double quote at its
/// beginning, and one with both a tab and a double quote.
std::string textOf(const Table& table, const FileForm& form = {});

}  // namespace oracle
