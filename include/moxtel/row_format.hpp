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
/// `TextReader::peek` gives them: signed chars as `int`, -1 at the end.
///
/// No malformed text is reported. The destructors are not virtual: a format is held in a
/// `mem::Pointer<DelimitedRowFormat>`, which runs only the destructor of this class, so a derived
/// class must not add members that need destroying.
class DelimitedRowFormat {
  public:
    /// The double quote alone.
    static const char* const DEFAULT_QUOTES;

    /// `quotes` are the characters that may open a quoted cell; null stands for `DEFAULT_QUOTES`.
    explicit DelimitedRowFormat(const char* quotes);

    /// Whether `c` separates two cells.
    virtual bool isDelim(int c) const = 0;

    /// Whether `c` begins a comment: never.
    virtual bool isComment(int c) const;

    /// @{
    /// Whether `writeCell` is to quote the text, and if not, whether it is to escape it: always
    /// the former.
    virtual bool shouldQuote(const std::string& text) const;
    virtual bool shouldEscape(const std::string& text) const;
    /// @}

    /// The text that `escape` made `text` of.
    virtual std::string unescape(const std::string& text) const = 0;

    /// What stands between the first and the last character of `text`, doubled quotes and all, when
    /// the last is `quoteSymbol`; otherwise `text`. The first character is not looked at, except
    /// that 0 for the symbol means the first character, if it is a quote at all.
    virtual std::string unquote(char quoteSymbol, const std::string& text) const;

    /// Whether a line feed is next. A CR is not: of a CR LF pair the CR is seen first, so that an
    /// unquoted cell takes in the whole line end and goes on in the next line.
    virtual bool endRow(TextReader& in) const;

    /// The cell from here on; the delimiter or line end after it stays unread.
    ///
    /// A cell that begins with a quote is read up to the next such quote or the end of the data.
    /// Delimiters and line ends are content, a CR LF as its CR and an LF CR as its LF. When
    /// anything else than the end of the cell follows the closing quote, the cell is what it was
    /// read as so far, up to the end of the cell, quotes included.
    ///
    /// Of a doubled quote the second half is looked at once more: it closes the cell, unless it is
    /// followed by a further quote. So `"a""b"` comes back as it stands, all six characters, and
    /// `"a"""` as `a""`: only cells without quotes inside come back as their plain content.
    virtual std::string readCell(TextReader& in) const;

    /// @{
    /// `text` between quotes, each quote in it doubled; `text` when there is no quote to use. The
    /// symbol 0 stands for the default quote.
    virtual std::string quote(char quoteSymbol, const std::string& text) const;
    std::string quote(const std::string& text) const { return quote(0, text); }
    /// @}

    /// `text` with its special characters protected, in the way of the format.
    virtual std::string escape(const std::string& text) const = 0;

    /// @{
    /// Write the escaped text, the delimiter, or a cell (as it is when `raw`, otherwise quoted or
    /// escaped as the predicates say, and nothing when neither holds). The number of characters
    /// written.
    virtual std::size_t escape(TextWriter& out, const std::string& text);
    virtual std::size_t writeDelim(TextWriter& out) const = 0;
    virtual std::size_t writeCell(TextWriter& out, const std::string& text, bool raw);
    /// @}

    /// Whether `c` may open a quoted cell. Only its low 8 bits count.
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

/// A format that can protect text by an escape character, for those who split cells themselves:
/// `writeCell` does not escape, and in reading, an escaped delimiter ends a cell like any other.
class EscapedDelimitedRowFormat : public CharDelimitedRowFormat {
  public:
    using CharDelimitedRowFormat::escape;

    /// 0 stands for no escape character, which leaves text as it is, and for no comment character.
    EscapedDelimitedRowFormat(char delim, const char* quotes, char escape, char comment);

    /// Puts the escape character before each delimiter, quote, comment and escape character, and
    /// turns a line feed into the escape character and `n`, a carriage return into it and `r`. A
    /// format in which `n` is one of its own characters takes the nearest one below it that is not,
    /// and for `r` the nearest one above it, counting round through all bytes.
    ///
    /// So the text stays on one line, as long as that nearest character is no line end itself; a
    /// format has to have nearly a hundred characters of its own for that.
    std::string escape(const std::string& text) const override;

    /// Undoes `escape`, for every text, as long as the letters that it takes for the two line ends
    /// differ and are none of the format's own. An escape character before anything else is left as
    /// it is.
    std::string unescape(const std::string& text) const override;

  private:
    bool m_isSpecial(char c) const;
    char m_letterFor(char lineEnd) const;

    char m_escape;
    char m_comment;
};

}  // namespace moxtel::io

#pragma GCC visibility pop
