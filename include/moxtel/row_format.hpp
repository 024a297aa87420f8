#pragma once

#include <cstddef>
#include <string>

#include <moxtel/alphabet.hpp>
#include <moxtel/text.hpp>

#pragma GCC visibility push(default)

/// \file
/// Formats of delimited tables: how text splits into cells and rows, and how a cell is read and
/// written. Cells are separated by a delimiter and rows by a line feed; a caller ends a row with
/// `TextWriter::writeLine`.
namespace moxtel::io {

/// The decisions that a row parser asks for, character by character. Characters are as
/// `TextReader::peek` gives them: signed chars as `int`, -1 at the end. Malformed text is not
/// reported. A format that several parsers share belongs to one thread with them.
///
/// The destructors are not virtual. A format is held in a `mem::Pointer<DelimitedRowFormat>`, which
/// runs only the destructor of this class, so a derived class must not add members that need
/// destroying.
class DelimitedRowFormat {
  public:
    /// The double quote alone.
    static const char* const DEFAULT_QUOTES;

    /// `quotes` has the characters that may open a quoted cell, and is copied. Null stands for
    /// `DEFAULT_QUOTES`.
    explicit DelimitedRowFormat(const char* quotes);

    /// Whether `c` separates two cells.
    virtual bool isDelim(int c) const = 0;

    /// Whether `c` begins a comment. By default, no character does.
    virtual bool isComment(int c) const;

    /// @{
    /// Whether `writeCell` quotes the text, and if not, whether it escapes it. By default, it
    /// quotes every text.
    virtual bool shouldQuote(const std::string& text) const;
    virtual bool shouldEscape(const std::string& text) const;
    /// @}

    /// The text from which `escape` made `text`.
    virtual std::string unescape(const std::string& text) const = 0;

    /// The characters between the first and the last of `text`, doubled quotes and all, when the
    /// last is `quoteSymbol`; otherwise `text`. The first character is not looked at. The symbol 0
    /// stands for the first character, if that is a quote.
    virtual std::string unquote(char quoteSymbol, const std::string& text) const;

    /// Whether a line feed is next. A CR does not end a row: of a CR LF pair the CR is seen first,
    /// so an unquoted cell takes in the whole line end and goes on in the next line.
    virtual bool endRow(TextReader& in) const;

    /// Reads the cell from here on. The delimiter or line end after it stays unread.
    ///
    /// A cell that begins with a quote is read up to the next such quote or the end of the data.
    /// Delimiters and line ends are content: a CR LF gives its CR, an LF CR gives its LF. When
    /// anything but the end of the cell follows the closing quote, the result is all that was read,
    /// quotes included, and the rest of the cell.
    ///
    /// The second half of a doubled quote is looked at once more: it closes the cell, unless
    /// another quote follows. Thus `"a""b"` gives all its six characters, and `"a"""` gives `a""`.
    /// Only cells without quotes inside give their plain content.
    virtual std::string readCell(TextReader& in) const;

    /// @{
    /// `text` between quotes, with each quote in it doubled; `text` as it is when there is no quote
    /// to use. The symbol 0 stands for the default quote.
    virtual std::string quote(char quoteSymbol, const std::string& text) const;
    std::string quote(const std::string& text) const { return quote(0, text); }
    /// @}

    /// `text` with its special characters protected as the format does it.
    virtual std::string escape(const std::string& text) const = 0;

    /// @{
    /// Write the escaped text, the delimiter, or a cell, and return the number of characters
    /// written. A `raw` cell is written as it is. Any other cell is quoted or escaped, as
    /// `shouldQuote` and `shouldEscape` say; where neither holds, nothing is written.
    virtual std::size_t escape(TextWriter& out, const std::string& text);
    virtual std::size_t writeDelim(TextWriter& out) const = 0;
    virtual std::size_t writeCell(TextWriter& out, const std::string& text, bool raw);
    /// @}

    /// Whether `c` may open a quoted cell. Only the low 8 bits of `c` count.
    bool isQuote(int c) const { return m_quotes.match(static_cast<char>(c)); }

    /// The least of the quotes by signed char value; 0 when there is none.
    char defaultQuote() const { return m_quotes.empty() ? '\0' : m_quotes[0]; }

    /// `quote`, or the default quote for 0.
    char ensureQuote(char quote) const { return quote != '\0' ? quote : defaultQuote(); }

    /// Whether the end of the data, a delimiter or the end of the row is next.
    bool endCell(TextReader& in) const;

  private:
    static std::string s_consumeQuoted(const DelimitedRowFormat& fmt, TextReader& in);
    static std::string s_consumeUnquoted(const DelimitedRowFormat& fmt, TextReader& in);

    string::Alphabet m_quotes;
};

/// Cells separated by one character.
class CharDelimitedRowFormat : public DelimitedRowFormat {
  public:
    /// `quotes` as for `DelimitedRowFormat`.
    CharDelimitedRowFormat(char delim, const char* quotes);

    /// The character that separates cells.
    char delim() const { return m_delim; }

    bool isDelim(int c) const override;
    std::size_t writeDelim(TextWriter& out) const override;

  private:
    char m_delim;
};

/// Nothing is escaped; quotes alone protect the text of a cell.
class RFC4180DelimitedRowFormat : public CharDelimitedRowFormat {
  public:
    using CharDelimitedRowFormat::CharDelimitedRowFormat;
    using CharDelimitedRowFormat::escape;

    /// @{
    /// `text` as it is.
    std::string unescape(const std::string& text) const override;
    std::string escape(const std::string& text) const override;
    /// @}
};

/// A format that can protect text by an escape character, for callers that split cells themselves:
/// `writeCell` does not escape, and on reading, an escaped delimiter ends a cell like any other.
class EscapedDelimitedRowFormat : public CharDelimitedRowFormat {
  public:
    using CharDelimitedRowFormat::escape;

    /// `quotes` as for `DelimitedRowFormat`. 0 stands for no escape character, which leaves text as
    /// it is, and for no comment character.
    EscapedDelimitedRowFormat(char delim, const char* quotes, char escape, char comment);

    /// Puts the escape character before each delimiter, quote, comment and escape character. Turns
    /// a line feed into the escape character and `n`, and a carriage return into the escape
    /// character and `r`. Where `n` is one of the format's own characters, the nearest character
    /// below it that is not takes its place; for `r` it is the nearest one above. The count goes
    /// round through all bytes.
    ///
    /// The text thus stays on one line, unless the nearest character is a line end itself, for
    /// which a format needs nearly a hundred characters of its own.
    std::string escape(const std::string& text) const override;

    /// Undoes `escape` for every text, as long as the letters for the two line ends differ and are
    /// none of the format's own characters. An escape character before anything else stays.
    std::string unescape(const std::string& text) const override;

  private:
    bool m_isSpecial(char c) const;
    char m_letterFor(char lineEnd) const;

    char m_escape;
    char m_comment;
};

}  // namespace moxtel::io

#pragma GCC visibility pop
