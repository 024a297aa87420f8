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
/// The format takes every syntactic decision; the parser consumes what stands between the cells.
/// Some consequences: a row that begins with a delimiter loses its empty first cell, a delimiter at
/// the end of a row is followed by an empty cell, an empty line is a row without cells, and a CR LF
/// is not a row end (see `DelimitedRowFormat::endRow`). Comments are not recognised and nothing is
/// reported as malformed.
///
/// A parser may be opened again at any time and keeps its format. Copies share the input and the
/// format; only one of them is to go on reading.
class DelimitedRowParser {
  public:
    /// A parser to be opened; it takes a share of the format. Without one (null) `hasCell` and
    /// `nextCell` throw `AccessException` where they need it.
    explicit DelimitedRowParser(const DelimitedRowFormat* format);

    /// @{
    /// A parser over a device that keeps the description of a format, but creates none: it is for
    /// derived classes, and `hasCell` and `nextCell` of it throw as above. 0 for `delim` stands
    /// for the comma, null for `quote` for the default quotes; what `quote` points to must outlive
    /// the parser. The device is shared as by `TextReader`.
    DelimitedRowParser(Device* in, char delim, const char* quote, char escape);
    DelimitedRowParser(Device& in, char delim, const char* quote, char escape);
    /// @}

    DelimitedRowParser(const DelimitedRowParser&) = default;
    DelimitedRowParser& operator=(const DelimitedRowParser&) = default;
    virtual ~DelimitedRowParser() = default;

    /// @{
    /// Parsers with a new format of their own, to be opened, the last one over `in` already. Null
    /// quotes stand for the default quotes. Throw a pointer to a new `AllocationException` when
    /// there is no memory for the format.
    static DelimitedRowParser createRFC4180(char delim, const char* quotes);
    static DelimitedRowParser createEscaped(char delim, const char* quote, char escape,
                                            char comment);
    static DelimitedRowParser createRFC4180(std::istream& in, char delim, const char* quotes);
    /// @}

    /// @{
    /// Reads on from another input, of which all kinds of line end are accepted; the share of the
    /// previous one is given up. A stream must outlive the parser and its copies, devices are
    /// shared as by `TextReader`, and a reader is copied with its position and look-ahead.
    void open(std::istream& in);
    void open(TextReader& src);
    void open(Device* in);
    void open(Device& in);
    /// @}

    /// @{
    /// The same for a file, opened with `openFlags` and `OPEN_READ` (see `Device::fromFile`), and
    /// for a copy of `text`.
    void open(const std::string& path, int openFlags);
    void openFromString(const std::string& text);
    /// @}

    /// Whether there is more data.
    bool hasRow();

    /// Whether the row has another cell. Consumes the delimiter before that cell, or the line end
    /// when there is none; so it is to be called once for each cell.
    bool hasCell();

    /// The cell from here on. The empty cell, with nothing consumed, at a line end, at a delimiter
    /// that no `hasCell` has consumed, and at the end of the data.
    std::string nextCell();

  protected:
    /// The parser's share of its format; null where it keeps but a description of one.
    const mem::Pointer<DelimitedRowFormat>& format() const { return m_format; }

    TextReader m_src;  ///< The input.

    /// @{
    /// The description of a format that the constructor was given, for derived classes alone.
    char m_delim = ',';
    const char* m_quote = DelimitedRowFormat::DEFAULT_QUOTES;
    char m_escape = '\0';
    char m_comment = '\0';
    /// @}

  private:
    friend class InPlace;

    bool m_takeRow(std::vector<std::string_view>& cells, std::size_t least);

    /// What `endRow` of the format says after `c` was peeked at. After a -1 it peeks anew, which
    /// goes past a byte 0xFF.
    bool m_endsRow(int c) { return m_plain && c != -1 ? c == '\n' : m_asked().endRow(m_src); }
    bool m_isDelim(int c) const {
        return m_plain ? c == static_cast<signed char>(m_plainDelim) : m_asked().isDelim(c);
    }
    bool m_isPlainQuote(char c) const { return m_plainQuotes[static_cast<unsigned char>(c)]; }

    /// The format, of which there has to be one.
    const DelimitedRowFormat& m_asked() const;

    mem::Pointer<DelimitedRowFormat> m_format;

    /// Whether the format is one of this library's kinds, whose decisions need no asking: a cell
    /// ends at `m_plainDelim` or at the end of the row.
    bool m_plain = false;
    char m_plainDelim = '\0';
    std::bitset<256> m_plainQuotes;  ///< What `isQuote` of the format says of each byte.
};

}  // namespace moxtel::io

#pragma GCC visibility pop
