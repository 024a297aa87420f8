#pragma once

#include <bitset>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include <moxtel/device.hpp>
#include <moxtel/pointer.hpp>
#include <moxtel/row_format.hpp>
#include <moxtel/text.hpp>

#pragma GCC visibility push(default)

namespace moxtel::io {

/// Walks a delimited table row by row and cell by cell:
///
///     while (parser.hasRow())
///         while (parser.hasCell())
///             use(parser.nextCell());
///
/// The format takes every syntactic decision; the parser consumes what stands between the cells. A
/// row that begins with a delimiter therefore loses its empty first cell, a delimiter at the end of
/// a row is followed by an empty cell, an empty line is a row without cells, and a CR LF does not
/// end a row (see `DelimitedRowFormat::endRow`). Comments are not recognised, and malformed text is
/// not reported.
///
/// A parser may be opened again at any time and keeps its format. Copies share the input and the
/// format; only one of them may go on reading. A parser and its copies belong to one thread.
class DelimitedRowParser {
  public:
    /// A parser to be opened. It takes a share of the format. Without a format (null), `hasCell`
    /// and `nextCell` throw `AccessException` where they need one.
    explicit DelimitedRowParser(const DelimitedRowFormat* format);

    /// @{
    /// A parser over a device, for derived classes. It keeps the description of a format but makes
    /// none, so `hasCell` and `nextCell` throw as above. For `delim`, 0 stands for the comma; for
    /// `quote`, null stands for the default quotes. The text of `quote` must outlive the parser and
    /// its copies. The device is shared as by `TextReader`.
    DelimitedRowParser(Device* in, char delim, const char* quote, char escape);
    DelimitedRowParser(Device& in, char delim, const char* quote, char escape);
    /// @}

    DelimitedRowParser(const DelimitedRowParser&) = default;
    DelimitedRowParser& operator=(const DelimitedRowParser&) = default;
    virtual ~DelimitedRowParser() = default;

    /// @{
    /// A parser to be opened, with a new format of its own; the last form opens it over `in`, which
    /// must outlive the parser and its copies. Null stands for the default quotes. When there is no
    /// memory for the format, a pointer to a new `AllocationException` is thrown, which the handler
    /// deletes.
    static DelimitedRowParser createRFC4180(char delim, const char* quotes);
    static DelimitedRowParser createEscaped(char delim, const char* quote, char escape,
                                            char comment);
    static DelimitedRowParser createRFC4180(std::istream& in, char delim, const char* quotes);
    /// @}

    /// @{
    /// Goes over to another input, with all kinds of line end accepted, and gives up the share of
    /// the previous one. A stream must outlive the parser and its copies. A device is shared as by
    /// `TextReader`. A reader is copied, with its position and its look-ahead.
    void open(std::istream& in);
    void open(TextReader& src);
    void open(Device* in);
    void open(Device& in);
    /// @}

    /// @{
    /// The same for a file, which is opened with `openFlags` and `OPEN_READ` (see
    /// `Device::fromFile`), and for a copy of `text`.
    void open(const std::string& path, int openFlags);
    void openFromString(const std::string& text);
    /// @}

    /// Whether there is more data.
    bool hasRow();

    /// Whether the row has another cell. Consumes the delimiter before that cell, or the line end
    /// when there is no cell; call it once for each cell.
    bool hasCell();

    /// Reads the cell from here on. At a line end, at a delimiter that no `hasCell` has consumed,
    /// and at the end of the data, gives an empty cell and consumes nothing.
    std::string nextCell();

  protected:
    /// The parser's share of its format; null where it keeps only a description.
    const mem::Pointer<DelimitedRowFormat>& format() const { return m_format; }

    TextReader m_src;  ///< The input.

    /// @{
    /// The description of a format that the constructor was given; only derived classes use it.
    char m_delim = ',';
    const char* m_quote = DelimitedRowFormat::DEFAULT_QUOTES;
    char m_escape = '\0';
    char m_comment = '\0';
    /// @}

  private:
    friend class InPlace;

    bool m_takeRow(std::vector<std::string_view>& cells, std::size_t least);

    /// The format's `endRow`, where `c` was peeked at. After a -1 the format peeks anew, which goes
    /// past a byte 0xFF.
    bool m_endsRow(int c) { return m_plain && c != -1 ? c == '\n' : m_asked().endRow(m_src); }
    bool m_isDelim(int c) const {
        return m_plain ? c == static_cast<signed char>(m_plainDelim) : m_asked().isDelim(c);
    }
    bool m_isPlainQuote(char c) const { return m_plainQuotes[static_cast<unsigned char>(c)]; }

    /// The format; throws `AccessException` where there is none.
    const DelimitedRowFormat& m_asked() const;

    mem::Pointer<DelimitedRowFormat> m_format;

    /// Whether the format is one of this library's kinds. Their decisions are known without asking:
    /// a cell ends at `m_plainDelim` or at the end of the row.
    bool m_plain = false;
    char m_plainDelim = '\0';
    std::bitset<256> m_plainQuotes;  ///< For each byte, the format's `isQuote`.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
