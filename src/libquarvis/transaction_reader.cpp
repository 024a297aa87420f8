#include <quarvis/transaction_reader.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

#include <moxtel/parse.hpp>

#include "libmoxtel/in_place.hpp"

namespace quarvis::rule {

using moxtel::io::DelimitedRowParser;
using moxtel::io::InPlace;
using moxtel::string::parse;

namespace {

DelimitedRowParser parserBehindHeader(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    return DelimitedRowParser::createRFC4180(in, delim, nullptr);
}

History::Time timeOf(std::string_view cell) {
    // A number of this many digits never overflows.
    constexpr std::size_t digits = 9;
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (cell.empty() || cell.size() > digits || !std::all_of(cell.begin(), cell.end(), isDigit))
        return parse<History::Time>(std::string(cell));
    History::Time time = 0;
    for (const char digit : cell)
        time = 10 * time + static_cast<History::Time>(digit - '0');
    return time;
}

}  // namespace

TransactionReader::TransactionReader(std::istream& in, char delim)
    : m_parser(parserBehindHeader(in, delim)) {}

bool TransactionReader::next() {
    if (m_error)
        std::rethrow_exception(std::exchange(m_error, nullptr));
    if (!m_parser.hasRow())
        return false;
    m_items.clear();
    if (!InPlace::takeRow(m_parser, m_cells, 2)) {
        m_readCells();
        return true;
    }
    m_entity = m_cells[0];
    m_time = timeOf(m_cells[1]);
    std::copy_if(m_cells.begin() + 2, m_cells.end(), std::back_inserter(m_items),
                 [](std::string_view cell) { return !cell.empty(); });
    return true;
}

void TransactionReader::m_readCells() {
    // A missing cell is not an error: the cell after the line end is read in its place.
    m_parser.hasCell();
    m_key = m_parser.nextCell();
    m_parser.hasCell();
    m_time = timeOf(m_parser.nextCell());
    m_entity = m_key;
    m_texts.clear();
    try {
        while (m_parser.hasCell())
            if (std::string item = m_parser.nextCell(); !item.empty())
                m_texts.push_back(std::move(item));
    } catch (...) {
        m_error = std::current_exception();
    }
    m_items.assign(m_texts.begin(), m_texts.end());
}

}  // namespace quarvis::rule
