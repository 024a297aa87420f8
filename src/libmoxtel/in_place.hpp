#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include <moxtel/device.hpp>
#include <moxtel/row_parser.hpp>
#include <moxtel/text.hpp>

/// \file
/// Reading of text where it stands in the buffer of a stream, for the libraries of this project.
/// The header is not installed.
namespace moxtel::io {

/// What readers and parsers do for speed and do not offer to everyone.
class InPlace {
  public:
    /// See `Device::m_input`.
    static std::istream* input(Device& device) { return device.m_input(); }

    /// See `TextReader::m_readUntil`.
    static std::string readUntil(TextReader& reader, char stop, int& end) {
        return reader.m_readUntil(stop, end);
    }

    /// See `TextReader::m_atHand`.
    static std::string_view atHand(const TextReader& reader) { return reader.m_atHand(); }

    /// See `TextReader::m_skip`.
    static void skip(TextReader& reader, std::size_t n) { reader.m_skip(n); }

    /// Takes the next row as a whole, after `hasRow`, where its cells stand in the buffer of a
    /// stream just as `hasCell` and `nextCell` would give them. `cells` shows them there until
    /// anything is done with the parser or its input.
    ///
    /// Returns false, consumes nothing and leaves `cells` unspecified for a row of fewer than
    /// `least` cells and for a row that does not stand there: one with quotes or carriage returns,
    /// one of many kilobytes, one across the end of the buffer, the last one, and any row in a
    /// format of another kind. Such a row is to be read cell by cell.
    static bool takeRow(DelimitedRowParser& parser, std::vector<std::string_view>& cells,
                        std::size_t least) {
        return parser.m_takeRow(cells, least);
    }
};

}  // namespace moxtel::io
