#pragma once

#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <moxtel/file_stream.hpp>
#include <moxtel/table.hpp>

#include <quarvis/history.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// Reads the rows of a transaction file one by one.
///
/// The first line is a header and is discarded. The first cell of a row is the entity, the second
/// is the time, and all others are items. Cells are separated by the delimiter and are not
/// trimmed; empty item cells are skipped. A row that lacks the entity or the time takes the missing
/// cell from the row after it.
class TransactionReader {
  public:
    /// Reads the header; `in` must outlive the reader.
    TransactionReader(std::istream& in, char delim);

    /// Advances to the next row; false when there is none. Exceptions of the stream propagate. One
    /// that is thrown among the items of a row is deferred to the next call, so that the items
    /// before it are not lost.
    bool next();

    /// @{
    /// The entity and the time of the current row. The view is valid until the next call of `next`.
    std::string_view entity() const { return m_entity; }
    History::Time time() const { return m_time; }
    /// @}

    /// The items of the current row in the order of its cells, duplicates included. Valid as above.
    std::span<const std::string_view> items() const { return m_items; }

  private:
    void m_readCells();

    moxtel::io::DelimitedRowParser m_parser;
    std::string_view m_entity;
    History::Time m_time = 0;
    std::vector<std::string_view> m_items;

    std::vector<std::string_view> m_cells;  // of a row that lies whole in the stream's buffer
    std::string m_key;                      // the entity of any other row
    std::vector<std::string> m_texts;       // the items of any other row
    std::exception_ptr m_error;
};

/// A transaction file opened for reading. A file that cannot be opened, or is a directory, reads
/// as empty. A read that fails throws `moxtel::io::FileError`.
class TransactionFile {
  public:
    /// Opens the file `path`.
    explicit TransactionFile(const std::string& path) : m_stream(path) {}

    /// The content of the file. The reference is valid as long as this object.
    std::istream& stream() { return m_stream; }

  private:
    moxtel::io::InputFile m_stream;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
