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

/// Reads the rows of a transaction file one by one. Every rule of reading such files is here.
///
/// The first line is a header and discarded. Of each row the first cell is the entity, the second
/// one the time and all others are items; cells are separated by the delimiter and taken as they
/// stand, empty item cells are skipped. A row that lacks a cell takes it from the row after it.
class TransactionReader {
  public:
    /// Reads the header; `in` must outlive the reader.
    TransactionReader(std::istream& in, char delim);

    /// Goes on to the next row; false when there is none. What the stream throws is passed on, but
    /// in the midst of the items of a row only by the next call, so that no item is lost.
    bool next();

    /// @{
    /// The row at hand. Valid until the next call of `next`.
    std::string_view entity() const { return m_entity; }
    History::Time time() const { return m_time; }
    /// @}

    /// The items of the row, in its order; an item may come twice.
    std::span<const std::string_view> items() const { return m_items; }

  private:
    void m_readCells();

    moxtel::io::DelimitedRowParser m_parser;
    std::string_view m_entity;
    History::Time m_time = 0;
    std::vector<std::string_view> m_items;

    std::vector<std::string_view> m_cells;  // of a row that stands in the buffer of the stream
    std::string m_key;                      // the entity of any other
    std::vector<std::string> m_texts;       // and its items
    std::exception_ptr m_error;
};

/// A transaction file that is opened for reading. One that cannot be opened, or is a directory,
/// reads as empty; a read that fails throws `moxtel::io::FileError`.
class TransactionFile {
  public:
    /// Opens the file `path`.
    explicit TransactionFile(const std::string& path) : m_stream(path) {}

    /// What the file holds. Valid as long as the file.
    std::istream& stream() { return m_stream; }

  private:
    moxtel::io::InputFile m_stream;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
